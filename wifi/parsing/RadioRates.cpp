#include "wifi/parsing/RadioRates.h"

#include <cstddef>
#include <cstring>

namespace quorvel {
namespace {

constexpr size_t kKeywords = 4;

struct RateLists {
    const char* ofdm[kKeywords];
    const char* plain[kKeywords];
};

constexpr const char* kKeywordTexts[kKeywords] = {"default", "all", "wifi2", "12"};

constexpr RateLists kLists = {{"54", "1,2,5.5,6,9,11,12,18,24,36,48,54", "6,12,24", "6,12"},
                              {"11", "1,2,5.5,6,9,11", "1,2,5.5,6,11,12,24", "1,2"}};

// Quirk: "all" of the plain list reads as a list that a write does not accept.
constexpr size_t kAll = 1;
constexpr char kAllPlainRead[] = "1,2,5.5,11";

}  // namespace

const char* basicRatesToRead(bool ofdm, const char* keyword) {
    const auto& lists = ofdm ? kLists.ofdm : kLists.plain;
    for (size_t n = 0; n < kKeywords; ++n) {
        if (strcmp(keyword, kKeywordTexts[n]) == 0) return !ofdm && n == kAll ? kAllPlainRead : lists[n];
    }
    return nullptr;
}

const char* basicRatesKeyword(bool ofdm, const char* rates) {
    const auto& lists = ofdm ? kLists.ofdm : kLists.plain;
    for (size_t n = 0; n < kKeywords; ++n) {
        if (strcmp(rates, lists[n]) == 0) return kKeywordTexts[n];
    }
    return nullptr;
}

}  // namespace quorvel
