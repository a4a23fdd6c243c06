// The library's own numbers in texts are those of the C library, at every boundary.
#include "wifi/parsing/DecimalText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<std::string> texts() {
    std::vector<std::string> all = {"",
                                    "-",
                                    "+",
                                    " ",
                                    "x",
                                    "0",
                                    "-0",
                                    "007",
                                    "12x",
                                    "+-1",
                                    "+5",
                                    "+ 5",
                                    "- 5",
                                    "\2621",
                                    "\2401",
                                    "00000000000000000000000000042",
                                    "-00000000000000000000000000042",
                                    "123456789012x",
                                    " \t\n\v\f\r42",
                                    "1 2",
                                    "-2147483648",
                                    "2147483647",
                                    "4294967295",
                                    "4294967296",
                                    "999999999",
                                    "1000000000",
                                    "99999999",
                                    "100000000",
                                    "18446744073709551615",
                                    "18446744073709551616",
                                    "99999999999999999999999999",
                                    "-99999999999999999999999999"};
    for (const long limit : {LONG_MAX, LONG_MIN}) {
        std::string text = std::to_string(limit);
        for (char last = '0'; last <= '9'; ++last) {
            text.back() = last;
            all.push_back(text);
            all.push_back(text + "0");
        }
    }
    std::string text = std::to_string(ULONG_MAX);
    for (char last = '0'; last <= '9'; ++last) {
        text.back() = last;
        all.push_back(text);
        all.push_back("-" + text);
    }
    for (long power = 1; power < LONG_MAX / 10; power *= 10) {
        for (const long near : {power - 1, power, power + 1}) {
            all.push_back(std::to_string(near));
            all.push_back(std::to_string(-near));
        }
    }
    return all;
}

TEST(DecimalNumber, IsThatOfStrtol) {
    for (const std::string& text : texts()) {
        EXPECT_EQ(quorvel::decimalNumber(text.c_str()), std::strtol(text.c_str(), nullptr, 10)) << '"' << text << '"';
    }
}

TEST(NextCounter, IsThatOfSscanf) {
    for (const std::string& text : texts()) {
        unsigned long expected = 0;
        int length = 0;
        const bool there = std::sscanf(text.c_str(), "%lu%n", &expected, &length) == 1;
        std::uint32_t counter = 0;
        const char* end = quorvel::nextCounter(text.c_str(), counter);
        ASSERT_EQ(end != nullptr, there) << '"' << text << '"';
        EXPECT_EQ(quorvel::skipCounter(text.c_str()), end) << '"' << text << '"';
        if (!there) continue;
        EXPECT_EQ(counter, static_cast<std::uint32_t>(expected)) << '"' << text << '"';
        EXPECT_EQ(end, text.c_str() + length) << '"' << text << '"';
    }
}

// Whether a text begins with three numbers is seen many bytes at a time: each text stands in each place of a machine
// word, and nothing behind its NUL counts.
TEST(BeginsWithCounters, IsWhatSscanfReads) {
    std::vector<std::string> lines = texts();
    for (const std::string between : {" ", "  ", "            ", "\t", " \n", "", "+", " -", "x"}) {
        for (const std::string number : {"1", "12345678", "123456789012345678901234"}) {
            for (const std::string end : {"", "\n", " ", "x", "\xB5"}) {
                lines.push_back(between + number + between + number + end);
                lines.push_back(between + number + between + number + between + number + end);
                lines.push_back(number + between + number + between + number + between + number + end);
            }
        }
    }
    // Numbers that begin, end and go on where the last whole word ends, of every digit.
    for (std::size_t blanks = 0; blanks < 2 * sizeof(long); ++blanks) {
        for (char digit = '0'; digit <= '9'; ++digit) {
            for (std::size_t length = 1; length < 2 * sizeof(long); ++length) {
                const std::string number = std::string(blanks, ' ').append(length, digit);
                lines.push_back(number + " 1");
                lines.push_back(number + " 1 2");
                lines.push_back(number + "x 1 2");
            }
        }
    }
    for (const std::string& text : lines) {
        unsigned long number = 0;
        const bool expected = std::sscanf(text.c_str(), "%lu %lu %lu", &number, &number, &number) == 3;
        EXPECT_EQ(quorvel::beginsWithCounters(text.c_str(), 3), expected) << '"' << text << '"';
    }
}

TEST(AppendDecimal, WritesWhatPrintfWrites) {
    for (const std::int32_t value : {0, 1, 9, 10, -1, -10, INT32_MAX, INT32_MIN}) {
        char text[12];
        EXPECT_EQ(*quorvel::appendDecimal(text, value), '\0');
        EXPECT_EQ(text, std::to_string(value));
        char unsignedText[12];
        quorvel::appendDecimal(unsignedText, static_cast<std::uint32_t>(value));
        EXPECT_EQ(unsignedText, std::to_string(static_cast<std::uint32_t>(value)));
    }
}

}  // namespace
