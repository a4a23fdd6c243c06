#include "recorder/desk/Text.h"

#include <gtest/gtest.h>

namespace quorvel::recorder_test {
namespace {

using recorder::describe;
using recorder::formatted;
using recorder::Value;
using recorder::ValueRole;
using recorder::ValueType;

Value number(uint64_t value) {
    return {ValueRole::kArgument, ValueType::kNumber, value, {}};
}
Value wide(uint64_t value) {
    return {ValueRole::kArgument, ValueType::kNumber64, value, {}};
}
Value text(const std::string& value) {
    return {ValueRole::kArgument, ValueType::kText, 0, value};
}

std::string filled(std::string_view format, const std::vector<Value>& arguments) {
    return formatted(format, arguments);
}

TEST(FormattedText, IsWhatTheCLibraryPrints) {
    EXPECT_EQ(filled("%s Enter", {text("WiFiLock")}), "WiFiLock Enter");
    EXPECT_EQ(filled("radio[%d], ssid[%d]", {number(2), number(0xFFFFFFFF)}), "radio[2], ssid[-1]");
    EXPECT_EQ(filled("%u", {number(0xFFFFFFFF)}), "4294967295");
    EXPECT_EQ(filled("%02x:%02X", {number(10), number(11)}), "0a:0B");
    EXPECT_EQ(filled("0x%x", {number(255)}), "0xff");
    EXPECT_EQ(filled("%llu of %ld", {wide(12'345'678'901), number(7)}), "12345678901 of 7");
    EXPECT_EQ(filled("100%% of %-4s|", {text("x")}), "100% of x|");
    EXPECT_EQ(filled("%.*s|", {number(3), text("abcdef")}), "abc|");
}

TEST(FormattedText, ShowsNullAndMissingArguments) {
    EXPECT_EQ(filled("[%s]", {Value{}}), "[(null)]");
    EXPECT_EQ(filled("%d and %s", {number(1)}), "1 and %s");
    EXPECT_EQ(filled("cut %", {}), "cut %");
}

TEST(DescribedValues, AreReadable) {
    EXPECT_EQ(describe(number(5)), "5");
    EXPECT_EQ(describe(number(0xFFFFFFA4)), "-92");
    EXPECT_EQ(describe(text("line\n\x01")), "\"line\\n?\"");
    EXPECT_EQ(describe(Value{}), "null");
    EXPECT_EQ(describe({ValueRole::kAfter, ValueType::kBytes, 0, std::string(4, '\0')}), "4 bytes, all zero");
    EXPECT_EQ(describe({ValueRole::kAfter, ValueType::kBytes, 0, std::string("\x01\xff\0", 3)}), "3 bytes 01ff");
    EXPECT_EQ(describe({ValueRole::kArgument, ValueType::kHandle, 2, {}}), "stderr");
}

}  // namespace
}  // namespace quorvel::recorder_test
