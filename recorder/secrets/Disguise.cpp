#include "recorder/secrets/Disguise.h"

#include <cstring>

namespace quorvel::recorder {

namespace {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}
constexpr bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
constexpr int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// A WEP key or a pre-shared key in hexadecimal.
bool isHexKey(const char* bytes, uint32_t size) {
    if (size != 10 && size != 26 && size != 64) return false;
    for (uint32_t i = 0; i < size; ++i) {
        if (hexValue(bytes[i]) < 0) return false;
    }
    return true;
}

char replaced(char c, uint64_t hash, uint32_t letters) {
    if (isDigit(c)) return static_cast<char>('0' + hash % 10);
    if (isLower(c)) return static_cast<char>('a' + hash % letters);
    if (isUpper(c)) return static_cast<char>('A' + hash % letters);
    // Outside of ASCII: another byte from there.
    if ((static_cast<uint8_t>(c) & 0x80) != 0) return static_cast<char>(0x80 | (hash & 0x7F));
    return c;
}

// Reads six pairs of digits at `text`, at least 17 characters. Returns false when there is no address.
bool parseMac(const char* text, uint8_t (&octets)[6]) {
    const char separator = text[2];
    if (separator != ':' && separator != '-') return false;
    for (uint32_t i = 0; i < 6; ++i) {
        const int high = hexValue(text[3 * i]);
        const int low = hexValue(text[3 * i + 1]);
        if (high < 0 || low < 0 || (i < 5 && text[3 * i + 2] != separator)) return false;
        octets[i] = static_cast<uint8_t>(high << 4 | low);
    }
    return true;
}

}  // namespace

void Disguise::text(char* bytes, uint32_t size) const {
    const uint32_t letters = isHexKey(bytes, size) ? 6 : 26;
    uint64_t state = 0;
    for (uint32_t i = 0; i < size; ++i) {
        uint8_t input[9];
        memcpy(input, &state, sizeof state);
        input[8] = static_cast<uint8_t>(bytes[i]);
        state = siphash(key_, input, sizeof input);
        bytes[i] = replaced(bytes[i], state, letters);
    }
}

void Disguise::mac(uint8_t (&octets)[6]) const {
    constexpr uint8_t kZero[6] = {};
    // Broadcast and group addresses name no device.
    if ((octets[0] & 1) != 0 || memcmp(octets, kZero, sizeof octets) == 0) return;
    uint64_t hash = siphash(key_, octets, sizeof octets);
    octets[0] = 0x02;
    for (uint32_t i = 1; i < 6; ++i) {
        octets[i] = static_cast<uint8_t>(hash % 10 << 4 | hash / 10 % 10);
        hash /= 100;
    }
}

void Disguise::macsIn(char* bytes, uint32_t size) const {
    constexpr uint32_t kLength = 17;
    for (uint32_t i = 0; i + kLength <= size; ++i) {
        uint8_t octets[6];
        if (!parseMac(bytes + i, octets)) continue;
        const uint8_t before = octets[0];
        mac(octets);
        if (octets[0] != before || before == 0x02) {
            for (uint32_t k = 0; k < 6; ++k) {
                bytes[i + 3 * k] = static_cast<char>('0' + (octets[k] >> 4));
                bytes[i + 3 * k + 1] = static_cast<char>('0' + (octets[k] & 15));
            }
        }
        i += kLength - 1;
    }
}

}  // namespace quorvel::recorder
