#include "gateway/hostd/protocol/Lines.h"

#include <array>
#include <utility>

#include "common/JsonDepth.h"
#include "gateway/hostd/protocol/Codec.h"

namespace quorvel::hostd::protocol {
namespace {

// Reads a request of one kind from its JSON form, without id and verb.
using Reader = std::string (*)(const Json&, Request&);

template <typename Kind>
std::string readAs(const Json& json, Request& request) {
    return decode(json, request.emplace<Kind>(), Unknown::kRefuse);
}

struct Verb {
    std::string_view name;
    Reader read;
};

template <std::size_t... Index>
constexpr auto listVerbs(std::index_sequence<Index...>) {
    return std::array{
        Verb{std::variant_alternative_t<Index, Request>::kVerb, readAs<std::variant_alternative_t<Index, Request>>}...};
}

constexpr auto kVerbs = listVerbs(std::make_index_sequence<std::variant_size_v<Request>>());

template <Record Type>
std::string lineOf(Id id, const char* verb, const Type& record) {
    std::string line = std::string("{\"") + kIdMember + "\":" + std::to_string(id);
    if (verb != nullptr) {
        line.append(",\"").append(kVerbMember).append("\":\"").append(verb) += '"';
    }
    (void)appendMembers(line, record, false);  // the id is in front of them
    line += "}\n";
    return line;
}

bool readId(const Json& json, Id& id) {
    const auto found = json.find(kIdMember);
    return found != json.end() && decodeValue(*found, id, Unknown::kRefuse, kIdMember).empty();
}

}  // namespace

const char* verbOf(const Request& request) {
    return std::visit([](const auto& each) { return each.kVerb; }, request);
}

std::string requestLine(Id id, const Request& request) {
    return std::visit([id](const auto& each) { return lineOf(id, each.kVerb, each); }, request);
}

std::string partLine(Id id, const Part& part) {
    return lineOf(id, nullptr, part);
}

ParsedRequest parseRequest(std::string_view line) {
    ParsedRequest parsed;
    Json json = common::parseShallow(line);
    if (!json.is_object()) {
        parsed.wrong = "no JSON object of at most " + std::to_string(common::kMaxJsonLevels) + " levels";
        return parsed;
    }
    if (!readId(json, parsed.id)) {
        parsed.wrong = std::string("\"") + kIdMember + "\" must be a whole number that the answer's lines repeat";
        return parsed;
    }
    json.erase(kIdMember);
    const auto found = json.find(kVerbMember);
    if (found == json.end() || !found->is_string()) {
        parsed.wrong = std::string("\"") + kVerbMember + "\" must be the text of a verb, such as \"get\"";
        return parsed;
    }
    const std::string name = found->get<std::string>();
    json.erase(kVerbMember);
    for (const Verb& verb : kVerbs) {
        if (verb.name != name) continue;
        parsed.wrong = verb.read(json, parsed.request);
        return parsed;
    }
    parsed.wrong = "the host process knows no request \"" + name + "\"";
    return parsed;
}

ParsedPart parsePart(std::string_view line) {
    ParsedPart parsed;
    const Json json = common::parseShallow(line);
    if (!json.is_object()) return parsed;
    parsed.valid = readId(json, parsed.id) && decode(json, parsed.part).empty();
    return parsed;
}

std::string reportLine(const BootReport& report) {
    return encode(report) + "\n";
}

std::optional<BootReport> parseReport(std::string_view line) {
    BootReport report;
    if (!decode(common::parseShallow(line), report).empty()) return std::nullopt;
    return report;
}

}  // namespace quorvel::hostd::protocol
