#include "gateway/description/Readers.h"

namespace quorvel::description {
namespace {

std::string passphrase(const JsonCursor& cursor) {
    std::string text = cursor.boundedText(64);
    if (!text.empty() && text.size() < 8) cursor.fail("a passphrase of 8 to 64 characters");
    return text;
}

}  // namespace

Bss readBss(const JsonCursor& cursor) {
    cursor.allow({"index", "ssid", "bssid", "enabled", "hidden", "isolated", "wps", "security", "passphrase", "wepKey",
                  "encryption", "filter", "filterList", "maxStations"});
    Bss bss;
    bss.index = cursor.at("index").count(0, kBssPerRadio - 1);
    bss.ssid = cursor.at("ssid").boundedText(32);
    bss.bssid = cursor.at("bssid").mac();
    bss.enabled = !cursor.has("enabled") || cursor.at("enabled").boolean();
    if (cursor.has("hidden")) bss.hidden = cursor.at("hidden").boolean();
    if (cursor.has("isolated")) bss.isolated = cursor.at("isolated").boolean();
    if (cursor.has("wps")) bss.wps = cursor.at("wps").boolean();
    if (cursor.has("security")) bss.security = readSecurity(cursor.at("security"));
    if (cursor.has("passphrase")) bss.passphrase = passphrase(cursor.at("passphrase"));
    if (cursor.has("wepKey")) {
        bss.wepKey = cursor.at("wepKey").boundedText(13);
        if (bss.wepKey.size() != 5 && bss.wepKey.size() != 13) cursor.at("wepKey").fail("a key of 5 or 13 characters");
    }
    if (cursor.has("encryption")) bss.encryption = cursor.at("encryption").oneOf({"tkip", "aes", "tkip+aes"});
    if (cursor.has("filter")) bss.filter = cursor.at("filter").oneOf({"disabled", "allow", "deny"});
    if (cursor.has("filterList")) {
        cursor.at("filterList").each([&](const JsonCursor& entry) { bss.filterList.push_back(entry.mac()); }, 32);
    }
    if (cursor.has("maxStations")) bss.maxStations = cursor.at("maxStations").count(0, 1024);
    const bool personal = bss.security.ends_with("Personal");
    if (personal && bss.passphrase.empty())
        cursor.fail("a key \"passphrase\" beside \"security\": \"" + bss.security + "\"");
    if (bss.security.starts_with("WEP") && bss.wepKey.size() != (bss.security == "WEP-64" ? 5U : 13U)) {
        cursor.fail("a key \"wepKey\" of 5 (WEP-64) or 13 (WEP-128) characters");
    }
    return bss;
}

}  // namespace quorvel::description
