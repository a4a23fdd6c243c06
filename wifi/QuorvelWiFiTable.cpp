#include "wifi/QuorvelWiFiTable.h"

#include <array>
#include <string_view>

#include "wifi/QuorvelWiFiContexts.h"

namespace quorvel {
namespace {

enum EntryWord : size_t {
    kPath = 0,
    kName = kNameWord,
    kType = 2,
    kAccess = 3,
    kContextSize = 5,
    kInitContext = 36,
    kApplyDepth0 = 37,
    kApplyDepth1 = 38,
    kSetter = 39,
    kApplyDepth2 = 54,
};

struct Row {
    const char* path;
    const char* name;
    ObjectIndex object;
    TypeCode type;
    uint32_t depth;
    uint32_t contextSize;
    bool writable;
    TableWord getter;
    TableWord setter;
    TableWord init;
    TableWord apply;
};

// The setters of depth-2 entries stand in words that follow no single rule: the host reads them there.
constexpr size_t setterWordDepth2(ObjectIndex object, TypeCode type) {
    if (type == kTypeString) return 55;
    if (type == kTypeBoolean) return 59;
    return object == kWiFiAccessPointACObject ? 65 : 61;
}

constexpr TableEntry makeEntry(const Row& row) {
    TableEntry entry{};
    auto& words = entry.words;
    words[kPath] = row.path;
    words[kName] = row.name;
    words[kType] = Word{row.type};
    words[kAccess] = Word{row.writable ? kWritable : kReadOnly};
    // A writable text of depth 2 has its setter where its getter would be, and no getter: meant.
    const size_t type = row.type;
    const bool setterTakesGettersWord = row.depth == 2 && row.writable && row.type == kTypeString;
    if (!setterTakesGettersWord) {
        words[getterWord(type, row.depth)] = row.getter;
    }
    if (!row.writable) return entry;
    words[kContextSize] = Word{row.contextSize};
    if (row.depth == 2) {
        words[setterWordDepth2(row.object, row.type)] = row.setter;
        words[kApplyDepth2] = row.apply;
        return entry;
    }
    words[kInitContext] = row.init;
    words[row.depth == 0 ? kApplyDepth0 : kApplyDepth1] = row.apply;
    words[kSetter + 2 * type + row.depth] = row.setter;
    return entry;
}

#define TYPE_boolean kTypeBoolean
#define TYPE_unsignedInt kTypeUnsignedInt
#define TYPE_int kTypeInt
#define TYPE_string(capacity) kTypeString
#define GETTER_MAPPED(name) TableWord(&FUNCTION(name, Get))
#define GETTER_BYPASSED(name) TableWord(&FUNCTION(name, Get))
#define GETTER_OWN(name) TableWord(&FUNCTION(name, Get))
#define GETTER_INERT(name) TableWord(&FUNCTION(name, Get))
#define GETTER_STATION(name) TableWord(&FUNCTION(name, Get))
#define GETTER_COUNTER(name) TableWord(&FUNCTION(name, Get))
#define GETTER_RESULT(name) TableWord(&FUNCTION(name, Get))
#define GETTER_STATION_TEXT(name) TableWord(&FUNCTION(name, Get))
#define GETTER_STATION_NUMBER(name) TableWord(&FUNCTION(name, Get))
#define GETTER_NONE(name) TableWord()
#define WRITABLE_RO(name) false, TableWord()
#define WRITABLE_RW(name) true, TableWord(&FUNCTION(name, Set))
#define WRITABLE_WO(name) true, TableWord(&FUNCTION(name, Set))
#define WRITABLE_RW_NOW(name) true, TableWord(&FUNCTION(name, Set))

constexpr Row makeRow(const char* path, const char* name, ObjectIndex object, TypeCode type, uint32_t depth,
                      size_t contextSize, TableWord getter, bool writable, TableWord setter, TableWord init,
                      TableWord apply) {
    return {path, name, object, type, depth, static_cast<uint32_t>(contextSize), writable, getter, setter, init, apply};
}

// Paths by object, so that a row can name its own.
#define OBJECT(index, path, ...) constexpr char QUORVEL_CAT3(k, THIS_OBJECT, Path)[] = path;
#include "wifi/QuorvelWiFiDataModel.def"

constexpr Row kRows[] = {
#define PARAMETER(node, name, access, type, accepted, read, ...)                                                      \
    makeRow(QUORVEL_CAT3(k, THIS_OBJECT, Path), #name, QUORVEL_CAT3(k, THIS_OBJECT, Object), TYPE_##type, THIS_DEPTH, \
            sizeof(OBJECT_CONTEXT), GETTER_##read(name), WRITABLE_##access(name),                                     \
            TableWord(&OBJECT_FUNCTION(InitContext)), TableWord(&OBJECT_FUNCTION(ApplyContext))),
#include "wifi/QuorvelWiFiDataModel.def"
};

#define OBJECT(...) +1
static_assert(0
#include "wifi/QuorvelWiFiDataModel.def"
              == kObjectsInTable);
static_assert(std::size(kRows) == kParametersInTable);
// Each object announces how many rows it has.
#define OBJECT(index, path, parameters, ...) +(parameters)
static_assert(0
#include "wifi/QuorvelWiFiDataModel.def"
              == kParametersInTable);

constexpr Table makeTable() {
    Table table{};
    size_t n = 0;
    for (const Row& row : kRows)
        table.entries[entryOfRow(n++)] = makeEntry(row);
    return table;
}

constexpr bool standsAt(size_t entry, std::string_view name) {
    for (size_t n = 0; n < kParametersInTable; ++n) {
        if (entryOfRow(n) == entry) return kRows[n].name == name;
    }
    return false;
}
static_assert(standsAt(10 + 55, "BandUtilization"));
static_assert(standsAt(10 + 56, "Restart") && standsAt(10 + 57, "ResetToFactory"));

}  // namespace
}  // namespace quorvel

constinit const quorvel::Table gQuorvelWiFiDataModelTable = quorvel::makeTable();
constinit const uint32_t gQuorvelWiFiDataModelTableInfo[4] = {0, 0, 0, quorvel::kParametersInTable};
