#include "wifi/parsing/DecimalText.h"

#include <climits>

namespace quorvel {
namespace {

struct Scanned {
    unsigned long magnitude;  // ULONG_MAX when it does not fit
    const char* end;          // null without a digit
    bool negative;
    bool overflow;
};

// A number up to this takes any digit behind it.
constexpr unsigned long kRoomForDigit = (ULONG_MAX - 9) / 10;

inline Scanned scan(const char* text) {
    while (isBlank(*text))
        ++text;
    const bool negative = *text == '-';
    if (negative || *text == '+') ++text;
    const char* const digits = text;
    unsigned long magnitude = 0;
    bool overflow = false;
    for (;; ++text) {
        const unsigned long digit = static_cast<unsigned char>(*text) - static_cast<unsigned long>('0');
        if (digit > 9) break;
        if (magnitude > kRoomForDigit) {
            overflow |= __builtin_mul_overflow(magnitude, 10UL, &magnitude);
            overflow |= __builtin_add_overflow(magnitude, digit, &magnitude);
            // Stays where the next digit does not fit either.
            if (overflow) magnitude = ULONG_MAX;
            continue;
        }
        magnitude = magnitude * 10 + digit;
    }
    return {magnitude, text == digits ? nullptr : text, negative, overflow};
}

}  // namespace

long decimalNumber(const char* text) {
    // Mostly a few digits and nothing else.
    constexpr uint32_t kRoomForOneMore = 99999999;
    const char* at = text;
    uint32_t digit = static_cast<unsigned char>(*at) - uint32_t{'0'};
    if (digit <= 9) {
        uint32_t small = 0;
        do {
            small = small * 10 + digit;
            digit = static_cast<unsigned char>(*++at) - uint32_t{'0'};
            if (digit > 9) return static_cast<long>(small);
        } while (small <= kRoomForOneMore);
    }
    const Scanned scanned = scan(text);
    const unsigned long limit = static_cast<unsigned long>(LONG_MAX) + (scanned.negative ? 1 : 0);
    const unsigned long magnitude = scanned.overflow || scanned.magnitude > limit ? limit : scanned.magnitude;
    return static_cast<long>(scanned.negative ? 0 - magnitude : magnitude);
}

const char* nextCounter(const char* text, uint32_t& value) {
    const Scanned scanned = scan(text);
    if (scanned.end == nullptr) return nullptr;
    // A number that does not fit is the largest one, whatever its sign.
    const unsigned long number = scanned.negative ? 0 - scanned.magnitude : scanned.magnitude;
    value = static_cast<uint32_t>(scanned.overflow ? ULONG_MAX : number);
    return scanned.end;
}

bool beginsWithCounters(const char* text, uint32_t count) {
    for (; count != 0; --count) {
        text = skipCounter(text);
        if (text == nullptr) return false;
    }
    return true;
}

char* appendDecimal(char* to, uint32_t value) {
    char digits[10];
    unsigned count = 0;
    do {
        // By multiplication, since the target has no division.
        const uint32_t rest = static_cast<uint32_t>(value * uint64_t{0xCCCCCCCD} >> 35);
        digits[count++] = static_cast<char>('0' + (value - rest * 10));
        value = rest;
    } while (value != 0);
    while (count != 0)
        *to++ = digits[--count];
    *to = '\0';
    return to;
}

char* appendDecimal(char* to, int32_t value) {
    auto magnitude = static_cast<uint32_t>(value);
    if (value < 0) {
        *to++ = '-';
        magnitude = 0 - magnitude;
    }
    return appendDecimal(to, magnitude);
}

char* append(char* to, const char* text) {
    while ((*to = *text++) != '\0')
        ++to;
    return to;
}

}  // namespace quorvel
