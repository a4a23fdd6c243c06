#include "gateway/description/Readers.h"

#include <algorithm>
#include <array>

namespace quorvel::description {
namespace {

constexpr std::array kSecurityModes = {"None",           "WEP-64",          "WEP-128",
                                       "WPA-Personal",   "WPA2-Personal",   "WPA-WPA2-Personal",
                                       "WPA-Enterprise", "WPA2-Enterprise", "WPA-WPA2-Enterprise"};

}  // namespace

bool isSecurityMode(const std::string& text) {
    return std::find(kSecurityModes.begin(), kSecurityModes.end(), text) != kSecurityModes.end();
}

std::string readSecurity(const JsonCursor& cursor) {
    if (cursor.value().is_string() && isSecurityMode(cursor.value().get_ref<const std::string&>()))
        return cursor.value().get<std::string>();
    cursor.fail("a security mode such as \"None\", \"WEP-64\", \"WPA2-Personal\" or \"WPA2-Enterprise\"");
}

}  // namespace quorvel::description
