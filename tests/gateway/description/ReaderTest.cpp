#include "gateway/description/Reader.h"

#include <gtest/gtest.h>

#include <variant>

namespace quorvel::description {
namespace {

// The shipped board called `name`; fails the test when it cannot be read.
Board shippedBoard(const std::string& name) {
    auto board = readBoardFile(std::string(QUORVEL_BOARDS) + "/" + name + ".json");
    if (const auto* error = std::get_if<Error>(&board)) {
        ADD_FAILURE() << error->message;
        return {};
    }
    return std::get<Board>(std::move(board));
}

std::string problem(const std::string& text) {
    const auto result = parseBoard(text, "board.json");
    const auto* error = std::get_if<Error>(&result);
    return error == nullptr ? "" : error->message;
}

std::string withRadio(const std::string& keys) {
    return R"({"name":"b","identifier":"0x0030","chips":["43c5"],"radios":[{"index":0,)" + keys + "}]}";
}

TEST(ShippedBoards, TriBandHasThreeRadiosWithEightAccessPointsEach) {
    const Board board = shippedBoard("tri-band");
    ASSERT_EQ(board.radios.size(), 3U);
    EXPECT_EQ(board.radios[1].band, common::Band::k5GHz);
    for (const Radio& radio : board.radios)
        EXPECT_EQ(radio.bss.size(), kBssPerRadio);
    EXPECT_EQ(board.chips.size(), 3U);
    EXPECT_GE(board.stations.size(), 8U);
    EXPECT_GE(board.neighbours.size(), 12U);
}

TEST(ShippedBoards, DualBandHasTwoRadiosAndUnsupportedHasNoChips) {
    EXPECT_EQ(shippedBoard("dual-band").radios.size(), 2U);
    const Board unsupported = shippedBoard("unsupported");
    EXPECT_EQ(unsupported.identifier, "0x0031");
    EXPECT_TRUE(unsupported.chips.empty());
}

TEST(ShippedBoards, UseLocallyAdministeredAddressesOnly) {
    for (const char* name : {"tri-band", "dual-band"}) {
        const Board board = shippedBoard(name);
        for (const Station& entry : board.stations)
            EXPECT_EQ(entry.mac.bytes[0] & 3U, 2U);
        for (const Neighbour& entry : board.neighbours)
            EXPECT_EQ(entry.bssid.bytes[0] & 3U, 2U);
        for (const Radio& radio : board.radios) {
            for (const Bss& bss : radio.bss)
                EXPECT_EQ(bss.bssid.bytes[0] & 3U, 2U);
        }
    }
}

TEST(BoardFile, FillsInTheBssThatADescriptionLeavesOut) {
    const auto result = parseBoard(
        withRadio(R"("band":"5GHz","channel":36,"bss":[{"index":1,"ssid":"a","bssid":"02:00:00:00:00:11"}])"), "b");
    ASSERT_TRUE(std::holds_alternative<Board>(result));
    const auto& bss = std::get<Board>(result).radios[0].bss;
    ASSERT_EQ(bss.size(), 8U);
    EXPECT_FALSE(bss[0].enabled);
    EXPECT_EQ(common::formatMac(bss[0].bssid), "02:00:00:00:00:10");
    EXPECT_TRUE(bss[1].enabled);
    EXPECT_EQ(common::formatMac(bss[7].bssid), "02:00:00:00:00:17");
}

TEST(BoardFile, NamesLineAndColumnOfASyntaxError) {
    EXPECT_EQ(problem("{\n  \"name\": }").rfind("board.json:2:11: ", 0), 0U) << problem("{\n  \"name\": }");
}

TEST(BoardFile, NamesLineAndPointerOfAWrongValue) {
    const std::string text = "{\"name\":\"b\",\n\"identifier\":\"0x30\",\"chips\":[],\"radios\":[]}";
    EXPECT_EQ(problem(text).rfind("board.json:2:14: /identifier: expected ", 0), 0U) << problem(text);
}

struct WrongRadio {
    const char* keys;
    const char* pointer;
};

class WrongRadios : public testing::TestWithParam<WrongRadio> {};

TEST_P(WrongRadios, AreNamedByPointer) {
    const std::string message = problem(withRadio(GetParam().keys));
    EXPECT_NE(message.find(std::string(": ") + GetParam().pointer + ": "), std::string::npos) << message;
    EXPECT_NE(message.find("expected"), std::string::npos) << message;
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongRadios,
    testing::Values(
        WrongRadio{R"("band":"6GHz","channel":36)", "/radios/0/band"}, WrongRadio{R"("band":"5GHz")", "/radios/0"},
        WrongRadio{R"("band":"5GHz","channel":6)", "/radios/0/channel"},
        WrongRadio{R"("band":"5GHz","channel":36.5)", "/radios/0/channel"},
        WrongRadio{R"("band":"5GHz","channel":99999999999999999999)", "/radios/0/channel"},
        WrongRadio{R"("band":"2.4GHz","channel":6,"bandwidth":80)", "/radios/0/bandwidth"},
        WrongRadio{R"("band":"5GHz","channel":36,"chanel":1)", "/radios/0/chanel"},
        WrongRadio{R"("band":"5GHz","channel":36,"enabled":1)", "/radios/0/enabled"},
        WrongRadio{R"("band":"5GHz","channel":36,"bss":{})", "/radios/0/bss"},
        WrongRadio{R"("band":"5GHz","channel":36,"bss":[{"index":8,"ssid":"a","bssid":"02:00:00:00:00:01"}])",
                   "/radios/0/bss/0/index"},
        WrongRadio{R"("band":"5GHz","channel":36,"bss":[{"index":0,"ssid":"a","bssid":"02:00:00:00:00"}])",
                   "/radios/0/bss/0/bssid"},
        WrongRadio{R"("band":"5GHz","channel":36,"bss":[{"index":0,"ssid":"a","bssid":"03:00:00:00:00:01"}])",
                   "/radios/0/bss/0/bssid"}));

TEST(BoardFile, RefusesRadiosOutOfOrderAndStationsTwice) {
    const std::string radios =
        R"({"name":"b","identifier":"0x0030","chips":[],"radios":[{"index":1,"band":"5GHz","channel":36}]})";
    EXPECT_NE(problem(radios).find("/radios/0/index"), std::string::npos);
    const std::string stations =
        R"({"name":"b","identifier":"0x0030","chips":[],"radios":[],"stations":[{"mac":"02:00:00:00:00:01","bss":1},{"mac":"02:00:00:00:00:01","bss":2}]})";
    EXPECT_NE(problem(stations).find("/stations/1/mac"), std::string::npos);
}

TEST(BoardFile, OuiAndSerialNameTheDeviceToItsManagers) {
    const auto with = [](const std::string& members) {
        return R"({"name":"b","identifier":"0x0030",)" + members + R"("chips":[],"radios":[]})";
    };
    const auto result = parseBoard(with(R"("oui":"02ABCD","serial":"QW-1.a_b",)"), "b");
    ASSERT_TRUE(std::holds_alternative<Board>(result));
    EXPECT_EQ(std::get<Board>(result).oui, "02ABCD");
    EXPECT_EQ(std::get<Board>(result).serial, "QW-1.a_b");
    EXPECT_NE(problem(with(R"("oui":"02abcd",)")).find("/oui"), std::string::npos);
    EXPECT_NE(problem(with(R"("oui":"02ABC",)")).find("/oui"), std::string::npos);
    EXPECT_NE(problem(with(R"("serial":"a b",)")).find("/serial"), std::string::npos);
    EXPECT_NE(problem(with(R"("serial":"",)")).find("/serial"), std::string::npos);
}

TEST(BoardFile, SaysWhyAFileCannotBeRead) {
    const auto result = readBoardFile("/nonexistent/board.json");
    ASSERT_TRUE(std::holds_alternative<Error>(result));
    EXPECT_NE(std::get<Error>(result).message.find("/nonexistent/board.json"), std::string::npos);
}

TEST(BoardFile, ReadsJoinAndLeaveTimesAsAPlan) {
    const auto result = parseStation(R"({"mac":"02:00:00:00:00:01","bss":"wl1.2","joinAt":5,"leaveAt":2})", "s");
    ASSERT_TRUE(std::holds_alternative<Station>(result));
    const auto& parsed = std::get<Station>(result);
    EXPECT_EQ(parsed.accessPoint, 11U);
    ASSERT_EQ(parsed.plan.size(), 2U);
    EXPECT_EQ(parsed.plan[0].kind, StationStep::Kind::kLeave);
    EXPECT_EQ(parsed.plan[1].kind, StationStep::Kind::kJoin);
}

TEST(BoardFile, LimitsTheDepthOfBoardsStationsAndNeighbours) {
    const std::string deep = "{\n\"name\": " + std::string(200000, '[');
    const auto message = [](const auto& result) {
        const auto* const error = std::get_if<Error>(&result);
        return error == nullptr ? std::string() : error->message;
    };
    const std::string expected = "board.json:2:108: /: expected at most 100 levels of arrays and objects";
    EXPECT_EQ(message(parseBoard(deep, "board.json")), expected);
    EXPECT_EQ(message(parseStation(deep, "board.json")), expected);
    EXPECT_EQ(message(parseNeighbour(deep, "board.json")), expected);
}

}  // namespace
}  // namespace quorvel::description
