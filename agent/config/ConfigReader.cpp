#include "agent/config/ConfigReader.h"

#include <algorithm>

namespace quorvel::agent {

ConfigReader::ConfigReader(const Json& object, std::string place, std::initializer_list<std::string_view> known)
    : object_(object), place_(std::move(place)) {
    if (!object_.is_object()) throw ConfigError("\"" + place_ + "\" must be an object");
    for (const auto& [name, value] : object_.items()) {
        if (std::find(known.begin(), known.end(), name) != known.end()) continue;
        std::string list;
        for (const std::string_view each : known)
            list += (list.empty() ? "" : ", ") + std::string(each);
        throw ConfigError("\"" + placeOf(name) + "\" is unknown; use one of " + list);
    }
}

void ConfigReader::refuse(const std::string& name, const std::string& rule) const {
    throw ConfigError("\"" + placeOf(name) + "\" is " + object_.at(name).dump() + ", but must be " + rule);
}

std::string ConfigReader::text(const char* name, const std::string& otherwise) const {
    if (!has(name)) return otherwise;
    if (!object_.at(name).is_string()) refuse(name, "a text");
    return object_.at(name).get<std::string>();
}

bool ConfigReader::flag(const char* name, bool otherwise) const {
    if (!has(name)) return otherwise;
    if (!object_.at(name).is_boolean()) refuse(name, "true or false");
    return object_.at(name).get<bool>();
}

std::uint32_t ConfigReader::number(const char* name, std::uint32_t otherwise, std::uint32_t most) const {
    if (!has(name)) return otherwise;
    const Json& value = object_.at(name);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most) {
        refuse(name, "a whole number from 0 to " + std::to_string(most));
    }
    return value.get<std::uint32_t>();
}

const ConfigReader::Json& ConfigReader::list(const char* name) const {
    static const Json kEmpty = Json::array();
    if (!has(name)) return kEmpty;
    if (!object_.at(name).is_array()) refuse(name, "an array");
    return object_.at(name);
}

const ConfigReader::Json& ConfigReader::object(const char* name) const {
    static const Json kEmpty = Json::object();
    return has(name) ? object_.at(name) : kEmpty;
}

}  // namespace quorvel::agent
