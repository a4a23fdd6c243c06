// The wire: this is the one test that spells lines out.
#include "gateway/hostd/protocol/Requests.h"

#include <gtest/gtest.h>

#include "gateway/hostd/protocol/Codec.h"
#include "gateway/hostd/protocol/Lines.h"
#include "gateway/hostd/protocol/Simulation.h"

namespace quorvel::hostd::protocol {
namespace {

template <typename Kind>
Kind requestIn(const std::string& line) {
    const ParsedRequest parsed = parseRequest(line);
    EXPECT_EQ(parsed.wrong, "") << line;
    EXPECT_TRUE(std::holds_alternative<Kind>(parsed.request)) << line;
    return std::holds_alternative<Kind>(parsed.request) ? std::get<Kind>(parsed.request) : Kind{};
}

TEST(RequestLines, CarryIdVerbAndMembersThatDifferFromTheUsual) {
    EXPECT_EQ(requestLine(1, Hello{1, "test"}), "{\"id\":1,\"do\":\"hello\",\"protocol\":1,\"client\":\"test\"}\n");
    EXPECT_EQ(requestLine(2, Get{{"Device.WiFi."}, 0, 0}), "{\"id\":2,\"do\":\"get\",\"paths\":[\"Device.WiFi.\"]}\n");
    EXPECT_EQ(requestLine(3, Set{{{"p", "v", true}, {"q", "w", false}}, true, false, false, false}),
              "{\"id\":3,\"do\":\"set\",\"settings\":[{\"path\":\"p\",\"value\":\"v\"},"
              "{\"path\":\"q\",\"value\":\"w\",\"needed\":false}],\"save\":true}\n");
    EXPECT_EQ(requestLine(4, Subscribe{{Topic::kStations, Topic::kLog}, 2}),
              "{\"id\":4,\"do\":\"subscribe\",\"topics\":[\"stations\",\"log\"],\"logLevel\":2}\n");
    EXPECT_EQ(requestLine(5, Alive{}), "{\"id\":5,\"do\":\"alive\"}\n");
}

TEST(RequestLines, AreReadAsTheyWereWritten) {
    const Get get = requestIn<Get>(requestLine(7, Get{{"a", "b\n\"\xc3\xa9"}, 3, 0.5}));
    EXPECT_EQ(get.paths, (std::vector<std::string>{"a", "b\n\"\xc3\xa9"}));
    EXPECT_EQ(get.maxDepth, 3U);
    EXPECT_EQ(get.maxAge, 0.5);
    const Operate operate = requestIn<Operate>(requestLine(8, Operate{"p", "f", "text", {{"q", "v", true}}}));
    EXPECT_EQ(operate.text, "text");
    EXPECT_EQ(operate.settings.size(), 1U);
    EXPECT_FALSE(requestIn<Operate>(requestLine(8, Operate{"p", "f", std::nullopt, {}})).text.has_value());
    EXPECT_EQ(requestIn<Control>(requestLine(9, Control{Json{{"op", "time"}}})).command, (Json{{"op", "time"}}));
    EXPECT_EQ(parseRequest(requestLine(-3, Alive{})).id, -3);
}

struct Refused {
    const char* line;
    const char* reason;
};

TEST(RequestLines, ThatAreWrongAreRefusedWithWhatToChange) {
    const Refused cases[] = {
        {"", "no JSON object of at most 100 levels"},
        {"[]", "no JSON object of at most 100 levels"},
        {R"({"do":"alive"})", "\"id\" must be a whole number that the answer's lines repeat"},
        {R"({"id":"x","do":"alive"})", "\"id\" must be a whole number that the answer's lines repeat"},
        {R"({"id":1})", "\"do\" must be the text of a verb, such as \"get\""},
        {R"({"id":1,"do":7})", "\"do\" must be the text of a verb, such as \"get\""},
        {R"({"id":1,"do":"dance"})", "the host process knows no request \"dance\""},
        {R"({"id":1,"do":"get"})", "\"paths\" is missing"},
        {R"({"id":1,"do":"get","paths":"a"})", "\"paths\" must be an array of texts; it is \"a\""},
        {R"({"id":1,"do":"get","paths":[1]})", "\"paths\" must be a text; it is 1"},
        {R"({"id":1,"do":"get","paths":[],"maxdepth":1})", "there is no member \"maxdepth\""},
        {R"({"id":1,"do":"get","paths":[],"maxDepth":-1})",
         "\"maxDepth\" must be a whole number from 0 to 4294967295; it is -1"},
        {R"({"id":1,"do":"get","paths":[],"maxDepth":4294967296})",
         "\"maxDepth\" must be a whole number from 0 to 4294967295; it is 4294967296"},
        {R"({"id":1,"do":"set","settings":[{"path":"p"}]})", "\"settings.value\" is missing"},
        {R"({"id":1,"do":"subscribe","topics":["events"]})",
         "\"topics\" must be one of stations, manager, log, changes, time, faults, status, trace; it is \"events\""},
    };
    for (const Refused& each : cases)
        EXPECT_EQ(parseRequest(each.line).wrong, each.reason) << each.line;
}

TEST(RequestLines, MayNotNestWithoutEnd) {
    std::string deep = R"({"id":)";
    deep.append(200000, '[').append(200000, ']').append(R"(,"do":"ping"})");
    EXPECT_EQ(parseRequest(deep).wrong, "no JSON object of at most 100 levels");
}

TEST(PartLines, LeaveOutMembersThatTheyDoNotCarry) {
    Part part;
    EXPECT_EQ(partLine(3, part), "{\"id\":3}\n");
    part.values = {{"Device.WiFi.Radio.1.Channel", 36}, {"Device.WiFi.Radio.1.Name", "wl0"}};
    part.of = 1;
    part.faults = {{FaultCode::kNoSuchPath, "p", "r", "", 0, ""}};
    part.done = true;
    EXPECT_EQ(partLine(3, part),
              "{\"id\":3,\"of\":1,\"values\":[{\"path\":\"Device.WiFi.Radio.1.Channel\",\"value\":36},"
              "{\"path\":\"Device.WiFi.Radio.1.Name\",\"value\":\"wl0\"}],"
              "\"faults\":[{\"path\":\"p\",\"code\":7026,\"reason\":\"r\"}],\"done\":true}\n");
}

TEST(PartLines, AreReadAsTheyWereWritten) {
    Part part;
    part.board = BoardFacts{};
    part.board->tasks = {{"wler_thread0", 7, "running"}, {"wler_thread1", std::nullopt, "gone"}};
    part.clock = BoardClock{12.5, true};
    part.wait = 5;
    part.listening = false;
    part.event = StationEvent{};
    part.event->signalStrength = -60;
    part.change = Change{ChangeKind::kValues, {"a"}, "", 1};
    part.trace = {{1, 2.5, "usp", Json{{"type", "Get"}}}};
    const std::string line = partLine(9, part);
    const ParsedPart parsed = parsePart(line);
    EXPECT_TRUE(parsed.valid);
    EXPECT_EQ(parsed.id, 9);
    EXPECT_EQ(partLine(9, parsed.part), line);
    EXPECT_EQ(parsed.part.event->signalStrength, -60);
    EXPECT_EQ(parsed.part.listening, false);
}

TEST(PartLines, OfANewerHostProcessMaySayMore) {
    const ParsedPart parsed = parsePart(R"({"id":1,"weather":"fine","wait":3})");
    EXPECT_TRUE(parsed.valid);
    EXPECT_EQ(parsed.part.wait, 3U);
    EXPECT_FALSE(parsePart(R"({"wait":3})").valid);
    EXPECT_FALSE(parsePart("nonsense").valid);
}

TEST(PartLines, ReplaceBytesThatAreNoText) {
    Part part;
    part.program = "\xff";
    EXPECT_EQ(parsePart(partLine(1, part)).part.program, "\xef\xbf\xbd");
}

TEST(SimulationAnswers, NameANeighboursChannelAsScansPrintIt) {
    const auto answer = readSimulationAnswer(Json::parse(
        R"({"ok":true,"neighbours":[{"ssid":"a","bssid":"02:00:00:00:00:01","channel":"36/80","width":80,"rssi":-70,)"
        R"("noise":-92,"security":"WPA2-Personal"},{"ssid":"b","bssid":"02:00:00:00:00:02","channel":"6l","width":40,)"
        R"("rssi":-80,"noise":-92,"security":"None"}]})"));
    ASSERT_TRUE(answer.has_value());
    ASSERT_EQ(answer->neighbours.size(), 2U);
    EXPECT_EQ(answer->neighbours[0].channel, "36/80");
    EXPECT_EQ(answer->neighbours[1].channel, "6l");
}

}  // namespace
}  // namespace quorvel::hostd::protocol
