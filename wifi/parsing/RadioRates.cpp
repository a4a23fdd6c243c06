#include "wifi/parsing/RadioRates.h"

#include <cstddef>
#include <cstring>

#include "wifi/model/PackedTexts.h"

namespace quorvel {
namespace {

constexpr size_t kKeywords = 4;

// The keywords, and behind them the lists of each kind of radio in the order of the keywords.
enum : size_t { kOfdm = kKeywords, kPlain = 2 * kKeywords, kTexts = 3 * kKeywords };
constexpr model::Texts<kTexts> kRateTexts = {
    "default",
    "all",
    "wifi2",
    "12",  //
    "54",
    "1,2,5.5,6,9,11,12,18,24,36,48,54",
    "6,12,24",
    "6,12",  //
    "11",
    "1,2,5.5,6,9,11",
    "1,2,5.5,6,11,12,24",
    "1,2",
};
constexpr model::PackedTexts<kTexts, model::packedSize(kRateTexts)> kRates(kRateTexts);

// Quirk: "all" of the plain list reads as a list that a write does not accept.
constexpr size_t kAll = 1;
constexpr char kAllPlainRead[] = "1,2,5.5,11";

}  // namespace

const char* basicRatesToRead(bool ofdm, const char* keyword) {
    const size_t lists = ofdm ? kOfdm : kPlain;
    for (size_t n = 0; n < kKeywords; ++n) {
        if (strcmp(keyword, kRates[n]) == 0) return !ofdm && n == kAll ? kAllPlainRead : kRates[lists + n];
    }
    return nullptr;
}

const char* basicRatesKeyword(bool ofdm, const char* rates) {
    const size_t lists = ofdm ? kOfdm : kPlain;
    for (size_t n = 0; n < kKeywords; ++n) {
        if (strcmp(rates, kRates[lists + n]) == 0) return kRates[n];
    }
    return nullptr;
}

}  // namespace quorvel
