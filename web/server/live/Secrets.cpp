#include "web/server/live/Secrets.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <nlohmann/json.hpp>

namespace quorvel::web {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 8> kWords{"passphrase", "password", "presharedkey", "psk",
                                                 "wepkey",     "secret",   "token",        "pin"};

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

bool speaksOfSecret(std::string_view name) {
    const std::string small = lower(name.substr(name.rfind('.') + 1));
    if (small.starts_with("wlkey") || small.ends_with("_key")) return true;
    return std::any_of(kWords.begin(), kWords.end(),
                       [&small](std::string_view word) { return small.find(word) != std::string::npos; });
}

bool namesSecret(const Json& object) {
    return std::any_of(object.items().begin(), object.items().end(), [](const auto& member) {
        const bool naming = member.key() == "param" || member.key() == "path" || member.key() == "name";
        return naming && member.value().is_string() && speaksOfSecret(member.value().template get<std::string>());
    });
}

}  // namespace

Json withoutSecretMembers(const Json& json) {
    if (json.is_array()) {
        Json result = Json::array();
        for (const Json& element : json)
            result.push_back(withoutSecretMembers(element));
        return result;
    }
    if (!json.is_object()) return json;
    const bool valueIsSecret = namesSecret(json);
    Json result = Json::object();
    for (const auto& [name, value] : json.items()) {
        const bool secret = value.is_primitive() && (speaksOfSecret(name) || (valueIsSecret && name == "value"));
        result[name] = secret ? Json(kMask) : withoutSecretMembers(value);
    }
    return result;
}

std::string withoutSecrets(std::string_view text) {
    static constexpr std::string_view kPinExchange = "client-pin";
    if (const std::size_t pin = text.find(kPinExchange); pin != std::string_view::npos)
        return std::string(text.substr(0, pin + kPinExchange.size()));
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return std::string(text);
    const std::size_t blank = text.substr(0, equals).rfind(' ');
    const std::string_view name = text.substr(blank + 1, equals - blank - 1);
    if (!speaksOfSecret(name)) return std::string(text);
    return std::string(text.substr(0, equals + 1)) + kMask;
}

}  // namespace quorvel::web
