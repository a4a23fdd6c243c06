#include "scenario/picture/Picture.h"

#include <gtest/gtest.h>

#include "scenario/picture/TimeAxis.h"

namespace quorvel::scenario {
namespace {

Scenario scenarioOf() {
    Scenario scenario;
    scenario.name = "A <b>bold</b> \"play\"";
    scenario.end = 40'000;
    Expectation channel;
    channel.subject = "Device.WiFi.Radio.1.Channel";
    channel.condition = {Condition::Kind::kAtLeast, 44};
    channel.after = 10'000;
    channel.by = 20'000;
    Expectation event = channel;
    event.kind = Expectation::Kind::kEvent;
    event.subject = "associated";
    scenario.expectations = {channel, event};
    return scenario;
}

Result resultOf() {
    Result result;
    result.end = 40'000;
    result.entries = {{0, Entry::Kind::kStep, "power.on", "", {}},
                      {12'000, Entry::Kind::kHeld, "channel", "44", 0},
                      {20'000, Entry::Kind::kFailed, "event", "none", 1}};
    result.log = {{1'500, "set", "</script><script>alert(1)</script>"}};
    result.recording.parameters = {{"Device.WiFi.Radio.1.Channel", {{0, 36}, {10'000, nullptr}, {12'000, 44}}},
                                   {"Device.WiFi.SSID.1.SSID", {{0, "Old & <new>"}, {20'000, "New"}}}};
    result.recording.stations = {{0, "02:00:00:00:00:01", 0, -60}, {10'000, "02:00:00:00:00:01", 3, -62}};
    return result;
}

std::size_t countOf(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(Picture, ShowsWhatHeldAndWhatFailedWithTheSpansLookedFor) {
    const std::string page = picture(scenarioOf(), resultOf(), 7);
    EXPECT_TRUE(has(page, "<span class=\"verdict failed\">Failed</span> &middot; 1 of 2 expectations held"));
    EXPECT_EQ(countOf(page, "<div class=\"lane expectation held\">"), 1U);
    EXPECT_EQ(countOf(page, "<div class=\"lane expectation failed\">"), 1U);
    EXPECT_EQ(countOf(page, "<rect class=\"span\" x=\"25%\" width=\"25%\""), 2U);
    EXPECT_TRUE(has(page, "<circle class=\"held\" cx=\"30%\""));
    EXPECT_TRUE(has(page, "<circle class=\"failed\" cx=\"50%\""));
    EXPECT_TRUE(has(page, "failed at 20.000 s: none"));
    EXPECT_TRUE(has(page, "seed 7"));
}

TEST(Picture, DrawsNumbersAsALineWithGapsAndTextsAsSpans) {
    const std::string page = picture(scenarioOf(), resultOf(), 7);
    // From 36 to 44: nothing between 10 s, when it could not be read, and 12 s.
    EXPECT_TRUE(has(page, "<path class=\"line\" d=\"M0 90H250M300 10\"/>")) << page;
    EXPECT_TRUE(has(page, "asked for: 44"));
    EXPECT_TRUE(has(page, "<rect class=\"value shade-0\" x=\"0%\" width=\"50%\""));
    EXPECT_TRUE(has(page, "<rect class=\"value shade-1\" x=\"50%\" width=\"50%\""));
    EXPECT_TRUE(has(page, "Old &amp; &lt;new&gt;"));
}

TEST(Picture, ShowsWhereAStationWasAndHowStrong) {
    const std::string page = picture(scenarioOf(), resultOf(), 7);
    EXPECT_TRUE(has(page, "<rect class=\"association shade-3\" x=\"25%\" width=\"75%\""));
    EXPECT_TRUE(has(page, "on access point 3"));
    EXPECT_TRUE(has(page, R"("stations":{"02:00:00:00:00:01":[[0.0,0,-60],[10.0,3,-62]]})"));
}

// The page must open anywhere, and text of the board must not become part of it.
TEST(Picture, NeedsNothingElseAndTakesTextAsText) {
    const std::string page = picture(scenarioOf(), resultOf(), 7);
    EXPECT_TRUE(has(page, "content=\"default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'\""));
    for (const char* const outside : {"http:", "https:", "src=", "href=", "@import", "url("})
        EXPECT_FALSE(has(page, outside)) << outside;
    EXPECT_FALSE(has(page, "<b>bold</b>"));
    EXPECT_TRUE(has(page, "A &lt;b&gt;bold&lt;/b&gt; &quot;play&quot;"));
    EXPECT_EQ(countOf(page, "</script>"), 2U);
    EXPECT_EQ(countOf(page, "<script"), 2U);
}

TEST(TimeAxis, HasAboutTenRoundMarks) {
    for (const Time end : {Time{900}, Time{40'000}, Time{3'600'000}, Time{86'400'000}, Time{30 * Time{86'400'000}}}) {
        const std::vector<Time> marks = TimeAxis(end).marks();
        EXPECT_GE(marks.size(), 4U) << end;
        EXPECT_LE(marks.size(), 12U) << end;
    }
    EXPECT_EQ(TimeAxis(40'000).marks()[1], 5'000);
    EXPECT_EQ(readable(12'500), "12.5 s");
    EXPECT_EQ(readable(3'620'000), "1 h 20 s");
}

TEST(Picture, HasALaneForAControllerThatTakesPart) {
    Scenario scenario = scenarioOf();
    Result result = resultOf();
    result.log.push_back({20'000, "usp", "notify ValueChange <x>"});
    EXPECT_FALSE(has(picture(scenario, result, 7), "USP controller"));
    scenario.timeline.push_back({5'000, "", "usp.broker", {{"how", "down"}}});
    const std::string page = picture(scenario, result, 7);
    EXPECT_TRUE(has(page, "<span>USP controller</span><small>1 from the agent</small>")) << page;
    EXPECT_TRUE(has(page, "<circle class=\"arrival\" cx=\"50%\""));
    EXPECT_TRUE(has(page, "notify ValueChange &lt;x&gt;"));
}

}  // namespace quorvel::scenario
