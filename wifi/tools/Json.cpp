#include "wifi/tools/Documents.h"
#include "wifi/tools/Wording.h"

namespace quorvel::model {
namespace {

// Definitions hold printable characters only.
std::string text(std::string_view value) {
    std::string quoted = "\"";
    for (const char each : value) {
        if (each == '"' || each == '\\') quoted += '\\';
        quoted += each;
    }
    return quoted + '"';
}

std::string truth(bool value) {
    return value ? "true" : "false";
}

std::string textOrNull(std::string_view value) {
    return value.empty() ? "null" : text(value);
}

std::string capacityOf(const Type& type) {
    return type.kind == Kind::kString ? std::to_string(type.capacity) : "null";
}

// [low, high] of a number or of a text's length; a text of any length has its capacity as the bound.
std::string bounds(const Parameter& parameter, Accepted::Rule rule) {
    if (parameter.accepted.rule != rule) return "null";
    return "[" + std::to_string(parameter.accepted.low) + ", " + std::to_string(parameter.accepted.high) + "]";
}

std::string objectLine(const Object& object) {
    return "{\"path\": " + text("Device." + std::string(object.path) + ".") +
           ", \"functions\": " + text(object.prefix) +
           ", \"parameters\": " + std::to_string(parametersOf(object.index).size()) +
           ", \"contextSize\": " + std::to_string(kContextSizes[object.index]) + "}";
}

std::string parameterLine(const Object& object, const Parameter& parameter) {
    std::string line = "{\"path\": " + text("Device." + std::string(object.path) + "." + std::string(parameter.name));
    const auto add = [&line](std::string_view name, const std::string& value) {
        line += ", \"" + std::string(name) + "\": " + value;
    };
    add("name", text(parameter.name));
    add("node", std::to_string(parameter.node));
    add("type", text(typeName(parameter.type)));
    add("capacity", capacityOf(parameter.type));
    add("access", text(accessText(parameter.access)));
    add("readable", truth(readable(parameter)));
    add("writable", truth(writable(parameter)));
    add("range", bounds(parameter, Accepted::Rule::kRange));
    add("lengths", bounds(parameter, Accepted::Rule::kLengths));
    add("accepts", textOrNull(rangeText(parameter)));
    add("unit", textOrNull(parameter.unit));
    add("read", text(readName(parameter.read)));
    add("conversion", text(parameter.source));
    add("variable", textOrNull(parameter.variable));
    add("source", text(sourceText(parameter)));
    add("remark", textOrNull(parameter.remark));
    add("getter", textOrNull(readable(parameter) ? parameter.getter : ""));
    add("setter", textOrNull(writable(parameter) ? parameter.setter : ""));
    return line + "}";
}

}  // namespace

std::string json() {
    std::string objectLines;
    std::string parameterLines;
    for (const Object& object : kObjects) {
        objectLines += (objectLines.empty() ? "" : ",\n") + objectLine(object);
        for (const Parameter& parameter : parametersOf(object.index))
            parameterLines += (parameterLines.empty() ? "" : ",\n") + parameterLine(object, parameter);
    }
    return "{\"objects\": [\n" + objectLines + "\n], \"parameters\": [\n" + parameterLines + "\n]}\n";
}

}  // namespace quorvel::model
