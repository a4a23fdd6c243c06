#include "selftest/Expectation.h"

#include <quorvel.h>

#include <algorithm>

namespace quorvel::selftest {
namespace {

using definitions::Kind;

constexpr std::uint32_t kNodeLimits[] = {
#define OBJECT(index, path, parameters, contextSize, nodeLimit) nodeLimit,
#include "wifi/QuorvelWiFiDataModel.def"
};

std::size_t typeCode(Kind kind) {
    switch (kind) {
        case Kind::string:
            return 0;
        case Kind::boolean:
            return 2;
        case Kind::unsignedInt:
            return 3;
        case Kind::integer:
            return 4;
    }
    return 0;
}

// The setters of depth 2 follow no rule: where the host reads them is kept word by word.
std::size_t deepSetterWord(const Parameter& parameter) {
    if (parameter.text()) return 55;
    if (parameter.row->type.kind == Kind::boolean) return 59;
    return parameter.object->path.ends_with(".AC.{i}") ? 65 : 61;
}

// Fields stand behind the host's header in node order, each aligned to its size.
std::size_t place(const definitions::Parameter& row, std::size_t& end) {
    std::size_t size = row.type.capacity;
    if (row.type.kind == Kind::boolean) size = 1;
    if (row.type.kind == Kind::unsignedInt || row.type.kind == Kind::integer) {
        size = 4;
        end = (end + 3) / 4 * 4;
    }
    const std::size_t offset = end;
    end += size;
    return offset;
}

std::vector<Parameter> makeParameters() {
    std::vector<Parameter> all;
    for (const definitions::Object& object : definitions::objects()) {
        std::size_t end = QUORVEL_CONTEXT_HEADER_SIZE;
        for (const definitions::Parameter& row : definitions::parametersOf(object))
            all.push_back({&object, &row, depthOf(object), place(row, end)});
    }
    // Radio's BandUtilization, node 58, stands before nodes 56 and 57.
    const auto found =
        std::find_if(all.begin(), all.end(), [](const Parameter& each) { return each.row->name == "BandUtilization"; });
    std::rotate(found - 2, found, found + 1);
    return all;
}

}  // namespace

unsigned depthOf(const definitions::Object& object) {
    unsigned depth = 0;
    for (const char each : object.path)
        depth += each == '{' ? 1 : 0;
    return depth;
}

std::uint32_t nodeLimitOf(const definitions::Object& object) {
    return kNodeLimits[object.number - 1];
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
    words[5] = std::to_string(object->contextSize);
    if (depth < 2) words[36] = function("InitContext");
    words[depth < 2 ? 37 + depth : 54] = function("ApplyContext");
    words[depth < 2 ? 39 + 2 * type + depth : deepSetterWord(*this)] = setter();
    return words;
}

}  // namespace quorvel::selftest
