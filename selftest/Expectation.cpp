#include "selftest/Expectation.h"

#include <quorvel.h>

#include <algorithm>

namespace quorvel::selftest {
namespace {

using model::Kind;

std::size_t typeCode(Kind kind) {
    switch (kind) {
        case Kind::kString:
            return 0;
        case Kind::kBoolean:
            return 2;
        case Kind::kUnsignedInt:
            return 3;
        case Kind::kInt:
            return 4;
    }
    return 0;
}

// The setters of depth 2 follow no rule: where the host reads them is kept word by word.
std::size_t deepSetterWord(const Parameter& parameter) {
    if (parameter.text()) return 55;
    if (parameter.row->type.kind == Kind::kBoolean) return 59;
    return parameter.object->path.ends_with(".AC.{i}") ? 65 : 61;
}

// Fields follow the host's header in node order, each aligned to its size.
std::size_t place(const model::Parameter& row, std::size_t& end) {
    std::size_t size = row.type.capacity;
    if (row.type.kind == Kind::kBoolean) size = 1;
    if (row.type.kind == Kind::kUnsignedInt || row.type.kind == Kind::kInt) {
        size = 4;
        end = (end + 3) / 4 * 4;
    }
    const std::size_t offset = end;
    end += size;
    return offset;
}

std::vector<Parameter> makeParameters() {
    std::vector<Parameter> all;
    for (const model::Object& object : model::kObjects) {
        std::size_t end = QUORVEL_CONTEXT_HEADER_SIZE;
        for (const model::Parameter& row : model::parametersOf(object.index))
            all.push_back({&object, &row, depthOf(object), place(row, end)});
    }
    // Radio's BandUtilization, node 58, precedes nodes 56 and 57.
    const auto found =
        std::find_if(all.begin(), all.end(), [](const Parameter& each) { return each.row->name == "BandUtilization"; });
    std::rotate(found - 2, found, found + 1);
    return all;
}

}  // namespace

unsigned depthOf(const model::Object& object) {
    return model::instancesIn(object.path);
}

std::uint32_t nodeLimitOf(const model::Object& object) {
    return model::nodeLimitOf(object.index);
}

std::uint32_t contextSizeOf(const model::Object& object) {
    return kContextSizes[object.index];
}

const std::vector<Parameter>& parameters() {
    static const std::vector<Parameter> all = makeParameters();
    return all;
}

std::array<std::string, kWordsPerEntry> Parameter::words() const {
    std::array<std::string, kWordsPerEntry> words;
    const std::size_t type = typeCode(row->type.kind);
    if (type != 0) words[2] = std::to_string(type);
    words[3] = writable() ? "256" : "1";
    const bool setterTakesGettersWord = depth == 2 && writable() && text();
    if (readable() && !setterTakesGettersWord) words[depth == 2 ? 55 + type : 6 + 2 * type + depth] = getter();
    if (!writable()) return words;
    words[5] = std::to_string(contextSizeOf(*object));
    if (depth < 2) words[36] = function("InitContext");
    words[depth < 2 ? 37 + depth : 54] = function("ApplyContext");
    words[depth < 2 ? 39 + 2 * type + depth : deepSetterWord(*this)] = setter();
    return words;
}

}  // namespace quorvel::selftest
