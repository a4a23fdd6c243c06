#include "recorder/secrets/Disguise.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvel::recorder_test {
namespace {

using recorder::Disguise;
using recorder::siphash;
using recorder::SipKey;

constexpr SipKey kKey{0x0706050403020100, 0x0f0e0d0c0b0a0908};
constexpr Disguise kDisguise(kKey);

std::string disguised(std::string text) {
    kDisguise.text(text.data(), static_cast<uint32_t>(text.size()));
    return text;
}

std::string withoutMacs(std::string text) {
    kDisguise.macsIn(text.data(), static_cast<uint32_t>(text.size()));
    return text;
}

TEST(Siphash, GivesTheValuesOfItsAuthors) {
    // The reference vectors: inputs 00, 00 01, ... under the key 00 01 ... 0f.
    uint8_t input[16];
    for (uint8_t i = 0; i < 16; ++i)
        input[i] = i;
    EXPECT_EQ(siphash(kKey, input, 0), 0x726fdb47dd0e0e31U);
    EXPECT_EQ(siphash(kKey, input, 1), 0x74f839c593dc67fdU);
    EXPECT_EQ(siphash(kKey, input, 8), 0x93f5f5799a932462U);
    EXPECT_EQ(siphash(kKey, input, 15), 0xa129ca6149be45e5U);
}

TEST(DisguisedText, KeepsLengthAndClassOfEachCharacter) {
    const std::string text = disguised("Pass word-12_!");
    ASSERT_EQ(text.size(), 14U);
    EXPECT_NE(text, "Pass word-12_!");
    EXPECT_TRUE(std::isupper(static_cast<unsigned char>(text[0])));
    for (const size_t lower : {1, 2, 3, 5, 6, 7, 8})
        EXPECT_TRUE(std::islower(static_cast<unsigned char>(text[lower]))) << text;
    EXPECT_EQ(text[4], ' ');
    EXPECT_EQ(text[9], '-');
    EXPECT_TRUE(std::isdigit(static_cast<unsigned char>(text[10])));
    EXPECT_TRUE(std::isdigit(static_cast<unsigned char>(text[11])));
    EXPECT_EQ(text.substr(12), "_!");
}

TEST(DisguisedText, OfAHexadecimalKeyIsOne) {
    for (const size_t length : {10U, 26U, 64U}) {
        std::string key;
        while (key.size() < length)
            key += "a1f0C";
        key.resize(length);
        const std::string text = disguised(key);
        EXPECT_NE(text, key);
        EXPECT_EQ(text.find_first_not_of("0123456789abcdefABCDEF"), std::string::npos) << text;
    }
    // A word of another length is a word.
    EXPECT_NE(disguised("abcdefabcdefabcdefabcdef").find_first_not_of("abcdef"), std::string::npos);
}

TEST(DisguisedText, OfAPinHasItsDigits) {
    for (const char* const pin : {"1234", "12345670"}) {
        const std::string text = disguised(pin);
        EXPECT_EQ(text.size(), std::string(pin).size());
        EXPECT_EQ(text.find_first_not_of("0123456789"), std::string::npos) << text;
    }
}

TEST(DisguisedText, OfABeginningIsTheBeginningOfTheDisguise) {
    const std::string whole = disguised("correct horse battery");
    EXPECT_EQ(disguised("correct horse"), whole.substr(0, 13));
    EXPECT_EQ(disguised("c"), whole.substr(0, 1));
}

TEST(DisguisedText, DependsOnTheKey) {
    std::string text = "correct horse battery";
    Disguise({1, 2}).text(text.data(), static_cast<uint32_t>(text.size()));
    EXPECT_NE(text, disguised("correct horse battery"));
}

TEST(DisguisedText, LeavesNoByteOutsideOfAscii) {
    const std::string name = "caf\xc3\xa9";
    const std::string text = disguised(name);
    ASSERT_EQ(text.size(), name.size());
    EXPECT_GE(static_cast<unsigned char>(text[3]), 0x80);
    EXPECT_GE(static_cast<unsigned char>(text[4]), 0x80);
    EXPECT_NE(text.substr(3), name.substr(3));
}

TEST(DisguisedMac, IsTheSameInBothCasesAndInBytes) {
    const std::string upper = withoutMacs("AA:BB:CC:DD:EE:0F");
    EXPECT_NE(upper, "AA:BB:CC:DD:EE:0F");
    EXPECT_EQ(withoutMacs("aa:bb:cc:dd:ee:0f"), upper);
    uint8_t octets[6] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x0F};
    kDisguise.mac(octets);
    char text[18];
    (void)std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", octets[0], octets[1], octets[2], octets[3],
                        octets[4], octets[5]);
    EXPECT_EQ(upper, text);
    EXPECT_EQ(upper.substr(0, 3), "02:");
}

TEST(DisguisedMac, IsFoundWhereverItStands) {
    const std::string text = withoutMacs("from 00:1a:2b:3c:4d:5e to 00-1A-2B-3C-4D-5E.");
    EXPECT_EQ(text.find("1a:2b"), std::string::npos);
    EXPECT_EQ(text.substr(0, 5), "from ");
    EXPECT_EQ(text.back(), '.');
    EXPECT_EQ(text[28], '-');
    EXPECT_EQ(text.substr(8, 2), text.substr(29, 2));
}

TEST(DisguisedMac, LeavesAddressesThatNameNoDevice) {
    for (const char* const text : {"00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff", "01:00:5e:00:00:01", "12:34:56",
                                   "12:34:56:78:9a:bg", "12:34:56-78:9a:bc"})
        EXPECT_EQ(withoutMacs(text), text);
}

}  // namespace
}  // namespace quorvel::recorder_test
