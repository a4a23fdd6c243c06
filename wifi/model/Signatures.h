// The parameter lists of the functions that follow from the rows, by the words of the rows.
#pragma once

// Pasted after expansion, e.g. QUORVEL_CAT(k, WiFiRadioObject).
#define LEADING(...) __VA_ARGS__ __VA_OPT__(, )
#define TRAILING(...) __VA_OPT__(, ) __VA_ARGS__

// Instance numbers by depth, declared and passed on. A function may ignore them: a setter's context has its instance.
#define INSTANCES_0
#define INSTANCES_1 [[maybe_unused]] uint32_t i
#define INSTANCES_2 [[maybe_unused]] uint32_t i, [[maybe_unused]] uint32_t j
#define PASS_INSTANCES_0
#define PASS_INSTANCES_1 i
#define PASS_INSTANCES_2 i, j

// The output of a getter, by type, declared and passed on.
#define OUTPUT_boolean [[maybe_unused]] uint8_t* out
#define OUTPUT_unsignedInt [[maybe_unused]] uint32_t* out
#define OUTPUT_int [[maybe_unused]] int32_t* out
#define OUTPUT_stationInt [[maybe_unused]] const char *mac, [[maybe_unused]] int32_t *out
#define OUTPUT_string(capacity) [[maybe_unused]] char *buf, [[maybe_unused]] uint32_t len
#define PASS_OUTPUT_boolean out
#define PASS_OUTPUT_unsignedInt out
#define PASS_OUTPUT_int out
#define PASS_OUTPUT_stationInt mac, out
#define PASS_OUTPUT_string(capacity) buf, len

// The input of a setter, by type, declared and passed on.
#define INPUT_boolean uint32_t value
#define INPUT_unsignedInt uint32_t value
#define INPUT_int int32_t value
#define INPUT_string(capacity) const char *src, uint32_t len
#define PASS_INPUT_boolean value
#define PASS_INPUT_unsignedInt value
#define PASS_INPUT_int value
#define PASS_INPUT_string(capacity) src, len

// Keep their text for rows with a getter, with a setter, and with a setter that takes a value, by access.
#define WITH_GETTER_RO(...) __VA_ARGS__
#define WITH_GETTER_RW(...) __VA_ARGS__
#define WITH_GETTER_WO(...)
#define WITH_GETTER_RW_NOW(...) __VA_ARGS__
#define WITH_GETTER_RW_COMMAND(...) __VA_ARGS__
#define WITH_SETTER_RO(...)
#define WITH_SETTER_RW(...) __VA_ARGS__
#define WITH_SETTER_WO(...) __VA_ARGS__
#define WITH_SETTER_RW_NOW(...) __VA_ARGS__
#define WITH_SETTER_RW_COMMAND(...) __VA_ARGS__
#define WITH_VALUE_SETTER_RO(...)
#define WITH_VALUE_SETTER_RW(...) __VA_ARGS__
#define WITH_VALUE_SETTER_WO(...) __VA_ARGS__
#define WITH_VALUE_SETTER_RW_NOW(...) __VA_ARGS__
#define WITH_VALUE_SETTER_RW_COMMAND(...)
