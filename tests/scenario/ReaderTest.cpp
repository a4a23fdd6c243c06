#include <gtest/gtest.h>

#include "scenario/Reader.h"
#include "scenario/Report.h"

namespace quorvel::scenario {
namespace {

// A scenario around one timeline and one list of expectations.
std::string file(const std::string& timeline, const std::string& expectations) {
    return "{\"name\": \"Test\",\n \"timeline\": [" + timeline + "],\n \"expectations\": [" + expectations + "]}";
}

const std::string kExpectation = R"({"by": 5, "parameter": "Device.WiFi.RadioNumberOfEntries", "equals": 3})";

std::string mistakeIn(const std::string& text) {
    try {
        (void)parseScenario(text, "test.json");
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "no mistake";
}

TEST(ScenarioReader, ReadsTimelineInOrderOfTime) {
    const Scenario scenario = parseScenario(
        file(R"({"at": 9.5, "do": "power.cycle"}, {"at": 2, "do": "scan", "radio": 1})", kExpectation), "test.json");
    ASSERT_EQ(scenario.timeline.size(), 2U);
    EXPECT_EQ(scenario.timeline[0].action, "scan");
    EXPECT_EQ(scenario.timeline[1].at, 9500);
    EXPECT_EQ(scenario.end, 9500);
    EXPECT_EQ(scenario.seed, 1U);
}

TEST(ScenarioReader, TakesABoardFileFromBesideTheScenario) {
    const std::string text = R"({"name": "T", "board": "mine.json", "expectations": [)" + kExpectation + "]}";
    EXPECT_EQ(parseScenario(text, "folder/test.json").board, "folder/mine.json");
}

TEST(ScenarioReader, LooksForAnExpectationFromAfterToBy) {
    const Scenario scenario = parseScenario(
        file("", R"({"after": 3, "by": 7, "log": "wps"}, {"at": 4, "parameter": "Device.A", "oneOf": [1, 2]})"),
        "test.json");
    EXPECT_EQ(scenario.expectations[0].after, 3000);
    EXPECT_EQ(scenario.expectations[0].by, 7000);
    EXPECT_EQ(scenario.expectations[1].after, 4000);
    EXPECT_EQ(scenario.expectations[1].by, 4000);
}

struct Case {
    const char* name;
    std::string text;
    std::string message;
};

class ScenarioMistakes : public testing::TestWithParam<Case> {};

TEST_P(ScenarioMistakes, AreNamedWithPlaceAndWhatWasExpected) {
    EXPECT_EQ(mistakeIn(GetParam().text), "test.json:" + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ScenarioMistakes,
    testing::Values(
        Case{"NoJson", "{\"name\": }", R"(1:10: /: expected JSON: unexpected '}'; expected '[', '{', or a literal)"},
        Case{"NoName", "{}", R"(1:1: /: expected a key "name", found none)"},
        Case{"UnknownKey", R"({"name": "T", "boards": 1})",
             "1:25: /boards: unknown key; expected one of name, description, board, seed, state, timeline, "
             "expectations, duration"},
        Case{"NothingExpected", file("", ""), "3:18: /expectations: expected at least one expectation, found []"},
        Case{"SeedTooLarge", R"({"name": "T", "seed": -1})",
             "1:23: /seed: expected a whole number from 0 to 4294967295, found -1"},
        Case{"NegativeTime", file(R"({"at": -1, "do": "power.cut"})", kExpectation),
             "2:22: /timeline/0/at: expected seconds from 0 to 10000000, found -1"},
        Case{"NoGroupAddress", file(R"({"at": 1, "do": "station.leave", "mac": "01:00:00:00:00:01"})", kExpectation),
             "2:55: /timeline/0/mac: expected a MAC address such as \"02:00:00:12:34:56\" (not a group address), "
             "found \"01:00:00:00:00:01\""},
        Case{"BoardsOwnReaderToo",
             file(R"({"at": 1, "do": "station.join", "mac": "02:00:00:00:00:01", "rssi": 7})", kExpectation),
             "2:83: /timeline/0/rssi: expected a whole number from -120 to 0, found 7"},
        Case{"InlineBoard", R"({"name": "T", "board": {"name": "x", "identifier": 5}, "expectations": []})",
             "1:52: /board/identifier: expected a 16-bit identifier such as \"0x0030\", found 5"},
        Case{"StructuredValue", file(R"({"at": 1, "do": "set", "values": {"Device.A": []}})", kExpectation),
             "2:61: /timeline/0/values/Device.A: expected true, false, a whole number or a text, found []"},
        Case{"TwoConditions", file("", R"({"by": 1, "parameter": "Device.A", "equals": 1, "atLeast": 1})"),
             "3:19: /expectations/0: expected exactly one of equals, differs, oneOf, matches, atLeast, atMost, fault "
             "beside \"parameter\", found {\"by\":1,\"parameter\":\"Device.A\",\"equals\":1,\"atLeast\":1}"},
        Case{"BadExpression", file("", R"({"by": 1, "log": "join", "matches": "("})"),
             "3:55: /expectations/0/matches: expected a regular expression, found \"(\""},
        Case{"LongExpression", file("", R"({"by": 1, "log": "join", "matches": ")" + std::string(501, '(') + "\"}"),
             "3:55: /expectations/0/matches: expected a regular expression of at most 500 characters, found \"" +
                 std::string(59, '(') + "..."},
        Case{"DeepValue", "{\"name\": \"T\",\n \"state\": " + std::string(200000, '['),
             "2:110: /: expected at most 100 levels of arrays and objects"},
        Case{"SpanTurnedRound", file("", R"({"after": 9, "by": 1, "log": "join"})"),
             "3:29: /expectations/0/after: expected no later time than \"by\", found 9"},
        Case{"UnknownStep", file("", R"({"step": "a", "fault": 7012})"),
             "3:28: /expectations/0/step: expected the \"id\" of a step of the timeline, found \"a\""},
        Case{"DelayOfABrokerThatIsDown",
             file(R"({"at": 1, "do": "usp.broker", "how": "down", "delay": 2})", kExpectation),
             "2:69: /timeline/0/delay: expected no delay beside \"down\"; it goes with \"slow\", found 2"},
        Case{"TwoRequests",
             file(R"({"at": 1, "do": "usp.request", "get": ["Device."], "delete": ["Device."]})", kExpectation),
             "2:15: /timeline/0: expected exactly one of get, set, add, delete, operate, subscribe, request, found "
             "{\"at\":1,\"do\":\"usp.request\",\"get\":[\"Device.\"],\"delete\":[\"Devi..."},
        Case{"NoPaths", file(R"({"at": 1, "do": "usp.request", "get": []})", kExpectation),
             "2:53: /timeline/0/get: expected at least one path, found []"},
        Case{
            "AnswerToNothing", file("", R"({"by": 1, "answer": "a"})"),
            "3:39: /expectations/0/answer: expected the \"id\" of a step \"usp.request\" of the timeline, found \"a\""},
        Case{"UnknownNotification", file("", R"({"by": 1, "notification": "Change"})"),
             "3:45: /expectations/0/notification: expected one of \"ValueChange\", \"ObjectCreation\", "
             "\"ObjectDeletion\", \"OperationComplete\", \"Event\", \"OnBoardRequest\", found \"Change\""},
        Case{"IdTwice",
             file(R"({"at": 1, "id": "a", "do": "power.cut"}, {"at": 2, "id": "a", "do": "power.on"})", kExpectation),
             "2:72: /timeline/1/id: expected an id of its own, found \"a\""}),
    [](const auto& instance) { return instance.param.name; });

TEST(ScenarioReader, ListsTheActionsForAnUnknownOne) {
    const std::string message = mistakeIn(file(R"({"at": 1, "do": "dance"})", kExpectation));
    EXPECT_TRUE(message.starts_with("test.json:2:31: /timeline/0/do: expected an action (set, scan, ")) << message;
    EXPECT_TRUE(message.ends_with("time), found \"dance\"")) << message;
}

TEST(ScenarioReader, ReadsWhatAControllerShallGet) {
    const Scenario scenario = parseScenario(
        file(
            R"({"at": 1, "do": "usp.request", "id": "a", "get": ["Device.WiFi."]}, {"at": 2, "do": "usp.broker", "how": "down"})",
            R"({"by": 9, "notification": "ObjectCreation", "path": "Device.*.", "subscription": "s", "member": "Alias", "matches": "^cpe", "atMost": 2},
                {"by": 9, "answer": "a", "code": 7026}, {"by": 9, "answer": "a", "path": "Device.A", "equals": 4},
                {"by": 9, "answer": "a", "code": 0})"),
        "test.json");
    EXPECT_TRUE(scenario.usesUsp());
    EXPECT_TRUE(scenario.listens());
    const auto& expected = scenario.expectations;
    EXPECT_EQ(describe(expected[0]),
              "notification ObjectCreation Device.*. of subscription s Alias matches ^cpe, at most 2 times by 9 s");
    EXPECT_EQ(describe(expected[1]), "answer to a with fault 7026 by 9 s");
    EXPECT_EQ(describe(expected[2]), "answer to a Device.A = 4 by 9 s");
    EXPECT_EQ(describe(expected[3]), "answer to a without a fault by 9 s");
    EXPECT_EQ(describe(scenario.timeline[0]), "usp.request get Device.WiFi.");
    EXPECT_FALSE(parseScenario(file("", kExpectation), "test.json").usesUsp());
}

TEST(ScenarioReader, TakesAnExpressionOf500Characters) {
    const std::string pattern = std::string(250, '(').append(250, ')');
    EXPECT_EQ(mistakeIn(file("", R"({"by": 1, "log": "join", "matches": ")" + pattern + "\"}")), "no mistake");
}

TEST(ScenarioReader, TellsWhyAFileCannotBeRead) {
    EXPECT_THROW((void)readScenario("/nowhere/at/all.json"), ScenarioError);
}

TEST(ScenarioReport, IsXmlWhateverTheTextsHold) {
    Scenario scenario;
    scenario.name = "A < \"B\" & C";
    Result result;
    result.entries = {{0, Entry::Kind::kStep, "power.on", ""},
                      {1500, Entry::Kind::kHeld, "one", "1"},
                      {2000, Entry::Kind::kFailed, "two", "<\x01>"}};
    result.end = 2500;
    EXPECT_EQ(
        junit(scenario, result),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites tests=\"2\" failures=\"1\" errors=\"0\" time=\"2.500\">\n"
        "  <testsuite name=\"A &lt; &quot;B&quot; &amp; C\" tests=\"2\" failures=\"1\" errors=\"0\" time=\"2.500\">\n"
        "    <testcase classname=\"A &lt; &quot;B&quot; &amp; C\" name=\"one\" time=\"1.500\"/>\n"
        "    <testcase classname=\"A &lt; &quot;B&quot; &amp; C\" name=\"two\" time=\"2.000\">\n"
        "      <failure message=\"at 2.000 s: &lt;?&gt;\"/>\n"
        "    </testcase>\n"
        "  </testsuite>\n"
        "</testsuites>\n");
    EXPECT_FALSE(result.passed());
}

}  // namespace
}  // namespace quorvel::scenario
