#include "tests/console/docs/Schema.h"

#include <algorithm>
#include <fstream>

namespace quorvel::console_test {
namespace {

using Json = nlohmann::json;
using Complaints = std::vector<std::string>;

bool isOfType(const Json& document, const std::string& type) {
    if (type == "object") return document.is_object();
    if (type == "array") return document.is_array();
    if (type == "string") return document.is_string();
    if (type == "boolean") return document.is_boolean();
    if (type == "integer") return document.is_number_integer();
    if (type == "number") return document.is_number();
    return type == "null" && document.is_null();
}

void check(const Json& schema, const Json& document, const std::string& at, Complaints& complaints);

void checkFile(const std::string& file, const Json& document, const std::string& at, Complaints& complaints) {
    std::ifstream in(std::string(QUORVEL_DOCUMENTS) + "/schemas/" + file);
    const Json schema = Json::parse(in, nullptr, false);
    if (!schema.is_object()) {
        complaints.push_back("the schema " + file + " cannot be read");
        return;
    }
    check(schema, document, at, complaints);
}

void checkType(const Json& type, const Json& document, const std::string& at, Complaints& complaints) {
    const Json types = type.is_array() ? type : Json::array({type});
    const bool fits = std::any_of(types.begin(), types.end(), [&](const Json& one) { return isOfType(document, one); });
    if (!fits) complaints.push_back(at + " is " + document.dump() + ", not of type " + type.dump());
}

void checkMembers(const Json& schema, const Json& document, const std::string& at, Complaints& complaints) {
    for (const Json& name : schema.value("required", Json::array())) {
        if (!document.contains(name.get<std::string>())) complaints.push_back(at + " has no " + name.dump());
    }
    const Json properties = schema.value("properties", Json::object());
    const Json others = schema.value("additionalProperties", Json(true));
    for (const auto& [name, value] : document.items()) {
        const std::string below = at + "/" + name;
        if (properties.contains(name)) {
            check(properties.at(name), value, below, complaints);
        } else if (others.is_object()) {
            check(others, value, below, complaints);
        } else if (others == Json(false)) {
            complaints.push_back(below + " is not in the schema");
        }
    }
}

void check(const Json& schema, const Json& document, const std::string& at, Complaints& complaints) {
    static const Complaints kKnown{"$schema", "title",    "description", "type",  "enum",
                                   "$ref",    "required", "properties",  "items", "additionalProperties"};
    for (const auto& [keyword, value] : schema.items()) {
        if (std::find(kKnown.begin(), kKnown.end(), keyword) == kKnown.end()) {
            complaints.push_back("nobody checks the keyword " + keyword);
        }
    }
    if (schema.contains("$ref")) checkFile(schema.at("$ref"), document, at, complaints);
    if (schema.contains("type")) checkType(schema.at("type"), document, at, complaints);
    if (schema.contains("enum")) {
        const Json& allowed = schema.at("enum");
        if (std::find(allowed.begin(), allowed.end(), document) == allowed.end()) {
            complaints.push_back(at + " is " + document.dump() + ", none of " + allowed.dump());
        }
    }
    if (document.is_object()) checkMembers(schema, document, at, complaints);
    if (!document.is_array() || !schema.contains("items")) return;
    for (std::size_t i = 0; i < document.size(); ++i)
        check(schema.at("items"), document.at(i), at + "/" + std::to_string(i), complaints);
}

}  // namespace

std::vector<std::string> violations(const std::string& name, const Json& document) {
    Complaints complaints;
    checkFile(name + ".json", document, "", complaints);
    return complaints;
}

}  // namespace quorvel::console_test
