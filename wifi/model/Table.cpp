#include "wifi/model/Table.h"

#include <iterator>

#include "wifi/model/Contexts.h"

namespace quorvel {
namespace {

enum EntryWord : size_t {
    kPathWord = 0,
    kNameWord = 1,
    kTypeWord = 2,
    kAccessWord = 3,
    kContextSizeWord = 5,
    kInitContextWord = 36,
    kApplyDepth0Word = 37,
    kApplyDepth1Word = 38,
    kSetterWord = 39,
    kApplyDepth2Word = 54,
    kSetterDepth2Word = 55,
};

// The functions of a row; words of 0 for those that it does not have.
struct Functions {
    TableWord getter;
    TableWord setter;
    TableWord init;
    TableWord apply;
};

// By row of the definitions.
constexpr Functions kFunctions[] = {
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, ...)                                     \
    {TableWord(WITH_GETTER_##access(&prefix##stem##Get)), TableWord(WITH_SETTER_##access(&prefix##stem##Set)), \
     TableWord(&prefix##InitContext), TableWord(&prefix##ApplyContext)},
#include "wifi/model/DataModel.def"
};

constexpr size_t setterWord(const model::Parameter& parameter, uint32_t depth) {
    for (const model::SetterWord& deviation : model::kSetterWords) {
        if (deviation.object == parameter.object && deviation.kind == parameter.type.kind) return deviation.word;
    }
    const size_t type = typeCodeOf(parameter.type.kind);
    return depth == 2 ? kSetterDepth2Word + 2 * type : kSetterWord + 2 * type + depth;
}

constexpr TableEntry makeEntry(const model::Parameter& parameter, const Functions& functions) {
    const model::Object& object = model::objectOf(parameter.object);
    const TypeCode type = typeCodeOf(parameter.type.kind);
    const bool writable = model::writable(parameter);
    TableEntry entry{};
    auto& words = entry.words;
    words[kPathWord] = object.path.data();
    words[kNameWord] = parameter.name.data();
    words[kTypeWord] = Word{type};
    words[kAccessWord] = Word{writable ? kWritable : kReadOnly};
    // Quirk: a writable text of depth 2 has its setter in the getter's word, and no getter.
    const bool setterTakesGettersWord = object.depth == 2 && writable && type == kTypeString;
    if (!setterTakesGettersWord) words[getterWord(type, object.depth)] = functions.getter;
    if (!writable) return entry;
    words[kContextSizeWord] = Word{kContextSizes[parameter.object]};
    words[setterWord(parameter, object.depth)] = functions.setter;
    if (object.depth == 2) {
        words[kApplyDepth2Word] = functions.apply;
        return entry;
    }
    words[kInitContextWord] = functions.init;
    words[object.depth == 0 ? kApplyDepth0Word : kApplyDepth1Word] = functions.apply;
    return entry;
}

constexpr Table makeTable() {
    Table table{};
    for (size_t entry = 0; entry < kParametersInTable; ++entry) {
        const size_t row = model::rowOfEntry(entry);
        table.entries[entry] = makeEntry(model::kParameters[row], kFunctions[row]);
    }
    return table;
}

}  // namespace
}  // namespace quorvel

constinit const quorvel::Table gQuorvelWiFiDataModelTable = quorvel::makeTable();
constinit const uint32_t gQuorvelWiFiDataModelTableInfo[4] = {0, 0, 0, quorvel::kParametersInTable};
