#include "gateway/framework/Ini.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using quorvel::framework::Ini;
using quorvel::framework::IniError;

IniError errorOf(const std::string& text) {
    IniError error;
    EXPECT_FALSE(Ini::parse(text, error).has_value()) << text;
    return error;
}

std::string valueOf(const std::string& text, const std::string& section, const std::string& key) {
    IniError error;
    const auto ini = Ini::parse(text, error);
    if (!ini) return "line " + std::to_string(error.line) + ": " + error.message;
    const std::string* value = ini->find(section, key);
    return value == nullptr ? "(none)" : *value;
}

TEST(Ini, FindsAKeyInItsOwnSectionOnly) {
    const std::string text = "[A]\nkey = first\n[B]\nkey = second\n";
    EXPECT_EQ(valueOf(text, "A", "key"), "first");
    EXPECT_EQ(valueOf(text, "B", "key"), "second");
    EXPECT_EQ(valueOf(text, "C", "key"), "(none)");
    EXPECT_EQ(valueOf(text, "A", "Key"), "(none)");
}

TEST(Ini, TrimsBlanksAroundNamesAndValuesButKeepsThoseInside) {
    EXPECT_EQ(valueOf("  [ A ]\t\r\n \tkey\t=  one  two \r\n", "A", "key"), "one  two");
}

TEST(Ini, SkipsEmptyLinesAndComments) {
    EXPECT_EQ(valueOf("# first\n\n; second\n[A]\n # third\nkey = # not one\n", "A", "key"), "# not one");
}

TEST(Ini, SplitsAtTheFirstEqualsSign) {
    EXPECT_EQ(valueOf("[A]\nkey=a=b\n", "A", "key"), "a=b");
}

TEST(Ini, TakesAnEmptyValueAndALastLineWithoutNewline) {
    EXPECT_EQ(valueOf("[A]\nempty=", "A", "empty"), "");
}

TEST(Ini, JoinsASectionThatComesAgain) {
    EXPECT_EQ(valueOf("[A]\none=1\n[B]\n[A]\ntwo=2\n", "A", "two"), "2");
    EXPECT_EQ(valueOf("[A]\none=1\n[B]\n[A]\ntwo=2\n", "A", "one"), "1");
}

TEST(Ini, IsEmptyForAnEmptyText) {
    EXPECT_EQ(valueOf("", "A", "key"), "(none)");
}

TEST(IniErrors, NameTheLineAndWhatWasExpected) {
    struct Case {
        std::string text;
        unsigned line;
        std::string expected;
    };
    const Case cases[] = {
        {"[A]\nkey\n", 2, "expected \"key = value\" or \"[section]\", found \"key\""},
        {"\n\nkey = 1\n", 3, "expected a \"[section]\" before"},
        {"[A\n", 1, "expected \"]\""},
        {"[ ]\n", 1, "expected a section name"},
        {"[A]\n= 1\n", 2, "expected a key before \"=\""},
        {"[A]\nkey=1\nkey=2\n", 3, "found \"key\" again"},
        {std::string("[A]\nke\0y=1\n", 11), 2, "NUL"},
    };
    for (const Case& each : cases) {
        const IniError error = errorOf(each.text);
        EXPECT_EQ(error.line, each.line) << each.text;
        EXPECT_NE(error.message.find(each.expected), std::string::npos) << error.message;
    }
}

TEST(IniErrors, QuoteOnlyTheStartOfALongLine) {
    EXPECT_LT(errorOf("[A]\n" + std::string(100000, 'x')).message.size(), 200U);
}

}  // namespace
