// The exported parameter table: what the host framework reads after loading the library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/QuorvelWiFiExports.h"

namespace quorvel {

/// Unsigned integer of pointer size: 32 bits on the target.
using Word = std::uintptr_t;

inline constexpr size_t kObjectsInTable = 0
#define OBJECT_ROW(...) +1
#include "wifi/model/DataModel.def"
    ;
inline constexpr size_t kParametersInTable = 0
#define PARAMETER_ROW(...) +1
#include "wifi/model/DataModel.def"
    ;
inline constexpr size_t kWordsPerEntry = 72;

enum TypeCode : Word { kTypeString = 0, kTypeBoolean = 2, kTypeUnsignedInt = 3, kTypeInt = 4 };
enum AccessCode : Word { kReadOnly = 1, kWritable = 256 };

/// One word of an entry: a number, a text, or a function of one of the signatures in use.
union TableWord {
    Word value;
    const char* text;
    uint32_t (*command)();
    uint32_t (*init)(void*);
    uint32_t (*apply1)(void*, uint32_t);
    uint32_t (*apply2)(void*, uint32_t, uint32_t);
    uint32_t (*apply3)(void*, uint32_t, uint32_t, uint32_t);
    uint32_t (*booleanGet0)(uint8_t*);
    uint32_t (*booleanGet1)(uint32_t, uint8_t*);
    uint32_t (*booleanGet2)(uint32_t, uint32_t, uint8_t*);
    uint32_t (*unsignedGet0)(uint32_t*);
    uint32_t (*unsignedGet1)(uint32_t, uint32_t*);
    uint32_t (*unsignedGet2)(uint32_t, uint32_t, uint32_t*);
    uint32_t (*intGet0)(int32_t*);
    uint32_t (*intGet1)(uint32_t, int32_t*);
    uint32_t (*intGet2)(uint32_t, uint32_t, int32_t*);
    uint32_t (*textGet0)(char*, uint32_t);
    uint32_t (*textGet1)(uint32_t, char*, uint32_t);
    uint32_t (*textGet2)(uint32_t, uint32_t, char*, uint32_t);
    uint32_t (*stationGet)(uint32_t, const char*, int32_t*);
    uint32_t (*intSet1)(void*, uint32_t, int32_t);
    uint32_t (*textSet0)(void*, const char*, uint32_t);
    uint32_t (*textSet1)(void*, uint32_t, const char*, uint32_t);
    uint32_t (*textSet2)(void*, uint32_t, uint32_t, const char*, uint32_t);

    constexpr TableWord() : value(0) {}
    constexpr TableWord(Word word) : value(word) {}
    constexpr TableWord(const char* words) : text(words) {}
    constexpr TableWord(uint32_t (*f)()) : command(f) {}
    constexpr TableWord(uint32_t (*f)(void*)) : init(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t)) : apply1(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t, uint32_t)) : apply2(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t, uint32_t, uint32_t)) : apply3(f) {}
    constexpr TableWord(uint32_t (*f)(uint8_t*)) : booleanGet0(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint8_t*)) : booleanGet1(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint32_t, uint8_t*)) : booleanGet2(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t*)) : unsignedGet0(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint32_t*)) : unsignedGet1(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint32_t, uint32_t*)) : unsignedGet2(f) {}
    constexpr TableWord(uint32_t (*f)(int32_t*)) : intGet0(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, int32_t*)) : intGet1(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint32_t, int32_t*)) : intGet2(f) {}
    constexpr TableWord(uint32_t (*f)(char*, uint32_t)) : textGet0(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, char*, uint32_t)) : textGet1(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, uint32_t, char*, uint32_t)) : textGet2(f) {}
    constexpr TableWord(uint32_t (*f)(uint32_t, const char*, int32_t*)) : stationGet(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t, int32_t)) : intSet1(f) {}
    constexpr TableWord(uint32_t (*f)(void*, const char*, uint32_t)) : textSet0(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t, const char*, uint32_t)) : textSet1(f) {}
    constexpr TableWord(uint32_t (*f)(void*, uint32_t, uint32_t, const char*, uint32_t)) : textSet2(f) {}
};
static_assert(sizeof(TableWord) == sizeof(Word));

/// Returns the word of an entry that holds the getter.
constexpr size_t getterWord(size_t type, size_t depth) {
    return depth == 2 ? 55 + type : 6 + 2 * type + depth;
}

struct TableEntry {
    TableWord words[kWordsPerEntry];
};
static_assert(sizeof(TableEntry) == kWordsPerEntry * sizeof(Word));

struct Table {
    TableEntry entries[kParametersInTable];
};
static_assert(sizeof(Table) == kParametersInTable * sizeof(TableEntry));

}  // namespace quorvel

QUORVEL_EXPORT const quorvel::Table gQuorvelWiFiDataModelTable;
QUORVEL_EXPORT const uint32_t gQuorvelWiFiDataModelTableInfo[4];
