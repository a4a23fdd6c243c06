#pragma once

// Reads JSON members with messages for people.

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "agent/config/Url.h"

namespace quorvel::agent {

/// An object of a configuration together with its place.
class ConfigReader {
  public:
    using Json = nlohmann::ordered_json;

    /// `place` names the object in messages, `known` are its members; others are refused. Throws ConfigError.
    ConfigReader(const Json& object, std::string place, std::initializer_list<std::string_view> known);

    [[nodiscard]] bool has(const char* name) const {
        return object_.contains(name);
    }
    /// Returns a member, or `otherwise` when there is none. Throws ConfigError for another type.
    [[nodiscard]] std::string text(const char* name, const std::string& otherwise) const;
    [[nodiscard]] bool flag(const char* name, bool otherwise) const;
    [[nodiscard]] std::uint32_t number(const char* name, std::uint32_t otherwise, std::uint32_t most) const;
    /// Returns an array member; none is an empty one.
    [[nodiscard]] const Json& list(const char* name) const;
    [[nodiscard]] const Json& object(const char* name) const;
    /// Returns the name of a member for messages.
    [[nodiscard]] std::string placeOf(const std::string& name) const {
        return place_.empty() ? name : place_ + "." + name;
    }
    [[noreturn]] void refuse(const std::string& name, const std::string& rule) const;

  private:
    const Json& object_;
    std::string place_;
};

}  // namespace quorvel::agent
