#include "common/JsonDepth.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace quorvel::common {
namespace {

std::string nested(std::size_t levels, char open, char close) {
    std::string text(levels, open);
    return text.append(levels, close);
}

TEST(JsonDepth, AllowsAHundredLevels) {
    EXPECT_FALSE(findTooDeep(nested(100, '[', ']')));
    EXPECT_FALSE(parseShallow(nested(100, '[', ']')).is_discarded());
    EXPECT_EQ(findTooDeep(nested(101, '[', ']')), 100U);
    EXPECT_TRUE(parseShallow(nested(101, '[', ']')).is_discarded());
    EXPECT_EQ(findTooDeep(nested(101, '{', '}')), 100U);
}

TEST(JsonDepth, CountsWhatIsOpenAtATime) {
    std::string siblings = "[";
    for (int i = 0; i < 300; ++i)
        siblings += "[],";
    siblings += "{}]";
    EXPECT_FALSE(findTooDeep(siblings));
    EXPECT_EQ(parseShallow(siblings).size(), 301U);
}

TEST(JsonDepth, TakesNoNoticeOfBracketsInTexts) {
    const std::string text = "[\"" + std::string(500, '[') + "\\\"" + std::string(500, '{') + "\"]";
    EXPECT_FALSE(findTooDeep(text));
    EXPECT_EQ(parseShallow(text).at(0).get<std::string>().size(), 1001U);
    EXPECT_EQ(findTooDeep("\"\\\\\"" + std::string(101, '[')), 104U);
}

TEST(JsonDepth, ReadsTextThatIsNotJson) {
    EXPECT_FALSE(findTooDeep(""));
    EXPECT_FALSE(findTooDeep("]]]]"));
    EXPECT_EQ(findTooDeep("]" + std::string(101, '[')), 101U);
    EXPECT_FALSE(findTooDeep("\"\\"));
    EXPECT_TRUE(parseShallow("what?").is_discarded());
}

}  // namespace
}  // namespace quorvel::common
