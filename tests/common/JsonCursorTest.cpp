#include "common/JsonCursor.h"

#include <gtest/gtest.h>

#include "common/JsonPosition.h"

namespace quorvel::common {
namespace {

// The message of the first problem that `read` finds in the text, or the empty text.
std::string problem(const std::string& text, const std::function<void(const JsonCursor&)>& read) {
    const auto found = readDocument(text, read);
    return found ? found->message("file") : "";
}

TEST(JsonPlaces, FollowAPointerPastNestedValues) {
    const std::string document = "{\"a\":[{\"x\":\"}]\\\"\"},\n  {\"y\": 5}], \"b\":true}";
    EXPECT_EQ(placeOfPointer(document, "/a/1/y"), "2:9");
    EXPECT_EQ(placeOfPointer(document, "/b"), "2:18");
    EXPECT_EQ(placeOfPointer(document, "/a/7"), "1:6");
    EXPECT_EQ(placeOfPointer(document, ""), "1:1");
}

TEST(JsonCursor, NamesPositionAndPointerOfAWrongValue) {
    const auto read = [](const JsonCursor& root) { (void)root.at("a").at("b").count(1, 5); };
    EXPECT_EQ(problem("{\"a\":{\n \"b\": 6}}", read), "file:2:7: /a/b: expected a whole number from 1 to 5, found 6");
    EXPECT_EQ(problem("{\"a\":{\n \"b\": 5}}", read), "");
    EXPECT_EQ(problem("{\"a\":{}}", read), "file:1:6: /a: expected a key \"b\", found none");
    EXPECT_EQ(problem("[]", read), "file:1:1: /: expected an object, found []");
}

TEST(JsonCursor, EscapesKeysInItsPointer) {
    EXPECT_EQ(problem(R"({"a/b~c":1})",
                      [](const JsonCursor& root) {
                          root.allow({"x", "y"});
                      }),
              "file:1:1: /a~1b~0c: unknown key; expected one of x, y");
}

TEST(JsonCursor, RefusesNumbersThatNoRangeHolds) {
    const auto read = [](const JsonCursor& root) { (void)root.number(-9, 9'000'000'000); };
    for (const char* good : {"-9", "0", "9000000000"})
        EXPECT_EQ(problem(good, read), "") << good;
    for (const char* wrong : {"-10", "9000000001", "18446744073709551615", "99999999999999999999", "1.5", "\"1\""})
        EXPECT_NE(problem(wrong, read), "") << wrong;
}

TEST(JsonCursor, BoundsArraysAndTexts) {
    const auto ignore = [](const JsonCursor&) {};
    EXPECT_EQ(problem("[1,2]", [&](const JsonCursor& root) { root.each(ignore, 2); }), "");
    EXPECT_EQ(problem("[1,2,3]", [&](const JsonCursor& root) { root.each(ignore, 2); }),
              "file:1:1: /: expected at most 2 entries, found 3");
    const auto text = [](const JsonCursor& root) { (void)root.boundedText(2); };
    EXPECT_EQ(problem(R"("ab")", text), "");
    EXPECT_NE(problem(R"("abc")", text), "");
    EXPECT_NE(problem(R"("a\u0001")", text), "");
}

TEST(JsonCursor, ReadsTimesUpToTenMillionSeconds) {
    std::int64_t time = 0;
    const auto read = [&](const JsonCursor& root) { time = root.milliseconds(); };
    EXPECT_EQ(problem("1.2345", read), "");
    EXPECT_EQ(time, 1235);
    EXPECT_EQ(problem("10000000", read), "");
    EXPECT_NE(problem("10000001", read), "");
    EXPECT_NE(problem("-0.1", read), "");
}

TEST(Documents, ThatAreNotJsonAreReportedWithTheirPosition) {
    const auto never = [](const JsonCursor&) { ADD_FAILURE() << "read"; };
    EXPECT_EQ(problem("{\n\"a\" }", never).rfind("file:2:5: /: expected JSON: ", 0), 0U);
    EXPECT_EQ(problem(std::string(101, '['), never),
              "file:1:101: /: expected at most 100 levels of arrays and objects");
}

}  // namespace
}  // namespace quorvel::common
