#include "wifi/tools/Wording.h"

#include <cctype>

namespace quorvel::model {
namespace {

constexpr std::string_view kMember = "FIELD(";
constexpr std::string_view kContention = "WMM(";
constexpr std::string_view kColumn = "COLUMN(";

std::string quoted(std::string_view name) {
    return "`" + std::string(name) + "`";
}

// FIELD(snr) and WMM(2) carry their argument in parentheses.
std::string_view argumentOf(std::string_view source, std::string_view call) {
    return source.substr(call.size(), source.size() - call.size() - 1);
}

std::string_view conversionText(std::string_view conversion) {
    if (conversion == "BOOLEAN") return "0 or 1";
    if (conversion == "RBOOLEAN") return "0 or 1, reversed";
    if (conversion == "UINT32") return "decimal";
    if (conversion == "INT32") return "signed decimal";
    return "text";
}

std::string variableText(const Parameter& parameter) {
    return quoted(parameter.variable) + ", " + std::string(conversionText(parameter.source));
}

std::string ownText(const Parameter& parameter) {
    if (!parameter.variable.empty()) return quoted(parameter.variable) + ", by a function of its own";
    return "a function of its own";
}

std::string contentionText(const Parameter& parameter) {
    return "number " + std::string(argumentOf(parameter.source, kContention)) +
           " (from 0) of the category's non-volatile contention parameters";
}

std::string inertText(const Parameter& parameter) {
    if (parameter.variable.empty()) return "none: a read leaves the value";
    return "none: a read leaves the value; writes go to " + variableText(parameter);
}

// A counter has a keyword in what `wl` prints, or a column of the kernel's table.
std::string counterText(const Parameter& parameter) {
    if (!parameter.source.starts_with(kColumn)) {
        return "the number after " + quoted(parameter.variable) + " in the output of `wl`";
    }
    const std::string_view column = argumentOf(parameter.source, kColumn);
    std::string name(column.substr(2));
    name.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(name.front())));
    return "the interface's line in `/proc/net/dev`: " + quoted(name) +
           (column.starts_with("tx") ? ", transmitted" : ", received");
}

std::string memberText(const Parameter& parameter, std::string_view record) {
    return quoted(argumentOf(parameter.source, kMember)) + " of " + std::string(record);
}

}  // namespace

std::string_view typeName(const Type& type) {
    switch (type.kind) {
        case Kind::kBoolean:
            return "boolean";
        case Kind::kUnsignedInt:
            return "unsignedInt";
        case Kind::kInt:
            return "int";
        case Kind::kString:
            return "string";
    }
    return "";
}

std::string typeText(const Type& type) {
    std::string name(typeName(type));
    if (type.kind != Kind::kString) return name;
    return name + "(" + std::to_string(type.capacity) + ")";
}

std::string_view accessText(Access access) {
    switch (access) {
        case Access::kReadOnly:
            return "read";
        case Access::kStaged:
            return "read, write";
        case Access::kStagedOnly:
            return "write";
        case Access::kAtOnce:
        case Access::kCommand:
            return "read, write at once";
    }
    return "";
}

std::string rangeText(const Parameter& parameter) {
    const std::string low = std::to_string(parameter.accepted.low);
    const std::string high = std::to_string(parameter.accepted.high);
    switch (parameter.accepted.rule) {
        case Accepted::Rule::kNone:
            return "";
        case Accepted::Rule::kRange:
            return low + " to " + high;
        case Accepted::Rule::kLengths:
            return (low == high ? low : low + " or " + high) + " characters";
        case Accepted::Rule::kAny:
            break;
    }
    if (parameter.type.kind == Kind::kBoolean) return "0 or 1";
    if (parameter.type.kind == Kind::kString) return "up to " + std::to_string(parameter.type.capacity) + " characters";
    return "any";
}

std::string sourceText(const Parameter& parameter) {
    switch (parameter.read) {
        case Read::kMapped:
            return variableText(parameter);
        case Read::kBypassed:
        case Read::kOwn:
            return ownText(parameter);
        case Read::kInert:
            return inertText(parameter);
        case Read::kStation:
            return "the manager's information on one station";
        case Read::kNone:
            return "none: not readable";
        case Read::kCounter:
            return counterText(parameter);
        case Read::kContention:
            return contentionText(parameter);
        case Read::kResult:
            return memberText(parameter, "the stored scan result");
        case Read::kStationText:
        case Read::kStationNumber:
            return memberText(parameter, "the manager's station record");
    }
    return "";
}

std::string_view readName(Read read) {
    switch (read) {
        case Read::kMapped:
            return "MAPPED";
        case Read::kBypassed:
            return "BYPASSED";
        case Read::kOwn:
            return "OWN";
        case Read::kInert:
            return "INERT";
        case Read::kStation:
            return "STATION";
        case Read::kNone:
            return "NONE";
        case Read::kCounter:
            return "COUNTER";
        case Read::kContention:
            return "CONTENTION";
        case Read::kResult:
            return "RESULT";
        case Read::kStationText:
            return "STATION_TEXT";
        case Read::kStationNumber:
            return "STATION_NUMBER";
    }
    return "";
}

}  // namespace quorvel::model
