// What the expansions of the definitions are made of.
#pragma once

#define QUORVEL_CAT_(a, b) a##b
#define QUORVEL_CAT(a, b) QUORVEL_CAT_(a, b)
#define QUORVEL_CAT3_(a, b, c) a##b##c
#define QUORVEL_CAT3(a, b, c) QUORVEL_CAT3_(a, b, c)
#define QUORVEL_TEXT_(...) #__VA_ARGS__
#define QUORVEL_TEXT(...) QUORVEL_TEXT_(__VA_ARGS__)

// The names of an object's functions, e.g. FUNCTION(Channel, Get) is WiFiRadioChannelGet.
#define FUNCTION(name, suffix) QUORVEL_CAT3(THIS_OBJECT, name, suffix)
#define OBJECT_FUNCTION(suffix) QUORVEL_CAT(THIS_OBJECT, suffix)
#define OBJECT_CONTEXT QUORVEL_CAT(THIS_OBJECT, Context)

// Instance numbers by depth: with names and a trailing comma, unnamed, and as arguments.
#define INSTANCES_0
#define INSTANCES_1 uint32_t i,
#define INSTANCES_2 uint32_t i, uint32_t j,
#define INSTANCES QUORVEL_CAT(INSTANCES_, THIS_DEPTH)
#define UNUSED_INSTANCES_0
#define UNUSED_INSTANCES_1 uint32_t,
#define UNUSED_INSTANCES_2 uint32_t, uint32_t,
#define UNUSED_INSTANCES QUORVEL_CAT(UNUSED_INSTANCES_, THIS_DEPTH)
#define PASS_INSTANCES_0
#define PASS_INSTANCES_1 i,
#define PASS_INSTANCES_2 i, j,
#define PASS_INSTANCES QUORVEL_CAT(PASS_INSTANCES_, THIS_DEPTH)
#define LAST_INSTANCES_0
#define LAST_INSTANCES_1 , uint32_t i
#define LAST_INSTANCES_2 , uint32_t i, uint32_t j
#define LAST_INSTANCES QUORVEL_CAT(LAST_INSTANCES_, THIS_DEPTH)
#define UNUSED_LAST_INSTANCES_0
#define UNUSED_LAST_INSTANCES_1 , uint32_t
#define UNUSED_LAST_INSTANCES_2 , uint32_t, uint32_t
#define UNUSED_LAST_INSTANCES QUORVEL_CAT(UNUSED_LAST_INSTANCES_, THIS_DEPTH)
#define PASS_LAST_INSTANCES_0
#define PASS_LAST_INSTANCES_1 , i
#define PASS_LAST_INSTANCES_2 , i, j
#define PASS_LAST_INSTANCES QUORVEL_CAT(PASS_LAST_INSTANCES_, THIS_DEPTH)

// The instance of a mapped object; the top-level object's variables are the first radio's.
#define MAPPED_INSTANCE_0 1
#define MAPPED_INSTANCE_1 i
#define MAPPED_INSTANCE QUORVEL_CAT(MAPPED_INSTANCE_, THIS_DEPTH)

// What a getter writes to, by type: declared, unnamed, and as arguments.
#define OUTPUT_boolean uint8_t* out
#define OUTPUT_unsignedInt uint32_t* out
#define OUTPUT_int int32_t* out
#define OUTPUT_string(capacity) char *buf, uint32_t len
#define UNUSED_OUTPUT_boolean uint8_t*
#define UNUSED_OUTPUT_unsignedInt uint32_t*
#define UNUSED_OUTPUT_int int32_t*
#define UNUSED_OUTPUT_string(capacity) char*, uint32_t
#define PASS_OUTPUT_boolean out
#define PASS_OUTPUT_unsignedInt out
#define PASS_OUTPUT_int out
#define PASS_OUTPUT_string(capacity) buf, len

// What a setter takes, by type.
#define INPUT_boolean uint32_t value
#define INPUT_unsignedInt uint32_t value
#define INPUT_int int32_t value
#define INPUT_string(capacity) const char *src, uint32_t len

// The bytes of a text's field; 0 for the other types.
#define CAPACITY_boolean 0
#define CAPACITY_unsignedInt 0
#define CAPACITY_int 0
#define CAPACITY_string(capacity) capacity
