#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <vector>

#include "gateway/manager/Service.h"
#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

class Control : public testing::Test {
  protected:
    std::string ask(const std::string& request) {
        return service_.control(request);
    }
    bool holds(const std::string& request, const std::string& part) {
        const std::string answer = ask(request);
        if (answer.find(part) != std::string::npos) return true;
        ADD_FAILURE() << request << " gave " << answer;
        return false;
    }

    static BoardClock stillClock() {
        BoardClock clock([] { return Milliseconds{0}; });
        clock.startVirtual();
        return clock;
    }

    TemporaryFolder folder_;
    Service service_{shippedBoard("tri-band"), Store(folder_.path("store")), stillClock(), 1};
};

TEST_F(Control, TellsTheState) {
    const std::string state = ask(R"({"op":"state"})");
    EXPECT_EQ(state.rfind(R"({"ok":true,"board":{"name":"tri-band","identifier":"0x0030",)", 0), 0U) << state;
    EXPECT_NE(state.find(R"("radio":2,"interface":"wl1","band":"5GHz","status":"Up","channel":149,"bandwidth":80)"),
              std::string::npos);
}

TEST_F(Control, AdvancesTime) {
    EXPECT_EQ(ask(R"({"op":"time"})"), R"({"ok":true,"time":0.0,"virtual":true})");
    EXPECT_EQ(ask(R"({"op":"time","advance":61.5})"), R"({"ok":true,"time":61.5,"virtual":true})");
    EXPECT_EQ(service_.model().upSeconds(), 61U);
    holds(R"({"op":"time","advance":-1})", "\"ok\":false");
    holds(R"({"op":"time","virtual":false})", "\"ok\":false");
}

TEST_F(Control, CountsRequestsByTheirOperation) {
    EXPECT_NE(ask(R"({"op":"counts"})").find(R"("requests":[])"), std::string::npos);
    Request request;
    Session session;
    Answer answer;
    for (const Operation operation : {Operation::kSystemUpSecs, Operation::kNvramGet, Operation::kNvramGet}) {
        request.operation = operation;
        service_.handle(request, session, answer);
    }
    const std::string counts = ask(R"({"op":"counts"})");
    EXPECT_NE(counts.find(R"({"name":"nvramGet","seconds":)"), std::string::npos) << counts;
    EXPECT_NE(counts.find(R"({"name":"systemUpSecs","seconds":)"), std::string::npos);
    const auto sum = [](const common::Durations& durations) {
        const auto classes = durations.classes();
        return std::accumulate(classes.begin(), classes.end(), std::uint64_t{0});
    };
    EXPECT_EQ(sum(service_.durations(Operation::kNvramGet)), 2U);
    EXPECT_EQ(sum(service_.durations(Operation::kMore)), 0U);
}

TEST_F(Control, RefusesWhatNestsTooDeeply) {
    const std::string deep = R"({"op":"station.join","mac":)" + std::string(200000, '[').append(200000, ']') + "}";
    EXPECT_EQ(ask(deep), R"({"ok":false,"error":"a control request is a JSON object such as {\"op\":\"state\"}"})");
}

TEST_F(Control, JoinsMovesAndLeavesAStation) {
    holds(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":"wl0","rssi":-55})",
          R"("interface":"wl0","associated":true)");
    holds(R"({"op":"station.move","mac":"02:00:00:00:00:77","rssi":-80})", R"("rssi":-80)");
    holds(R"({"op":"station.traffic","mac":"02:00:00:00:00:77","downlink":5,"uplink":6})", R"("uplinkTraffic":6)");
    holds(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":10})", R"("interface":"wl1.1","associated":true)");
    holds(R"({"op":"station.leave","mac":"02:00:00:00:00:77"})", R"("associated":false)");
    holds(R"({"op":"station.join","mac":"02:00:00:00:00:77"})", R"("interface":"wl1.1","associated":true)");
}

TEST_F(Control, CountsPlannedTimesFromNow) {
    (void)ask(R"({"op":"time","advance":100})");
    holds(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":1,"joinAt":10,"leaveAt":20})",
          R"("associated":false)");
    (void)ask(R"({"op":"time","advance":10})");
    EXPECT_TRUE(service_.model().stations().back().associated);
    (void)ask(R"({"op":"time","advance":10})");
    EXPECT_FALSE(service_.model().stations().back().associated);
}

TEST_F(Control, SaysWhyAStationIsNotIn) {
    holds(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":1,"passphrase":"wrong one"})",
          R"("refusal":"the passphrase does not match")");
}

TEST_F(Control, AddsAndRemovesNeighbours) {
    holds(R"({"op":"neighbour.add","ssid":"x","bssid":"02:00:00:00:00:99","channel":"40"})", R"("ok":true)");
    holds(R"({"op":"neighbour.list"})", R"("bssid":"02:00:00:00:00:99","channel":"40","width":20)");
    holds(R"({"op":"neighbour.remove","bssid":"02:00:00:00:00:99"})", R"("ok":true)");
    holds(R"({"op":"neighbour.remove","bssid":"02:00:00:00:00:99"})", R"("ok":false)");
}

TEST_F(Control, GivesTheLogFromAnEntryOn) {
    const std::string all = ask(R"({"op":"events"})");
    EXPECT_NE(all.find(R"("number":1,"time":0.0,"kind":"power","text":"on, board tri-band")"), std::string::npos)
        << all;
    const auto last = service_.model().entries().back().number;
    const std::string none = ask(R"({"op":"events","since":)" + std::to_string(last) + "}");
    EXPECT_EQ(none, R"({"ok":true,"events":[],"last":)" + std::to_string(last) + "}");
    holds(R"({"op":"events","count":1})", R"("last":1})");
}

TEST_F(Control, RefusesWhatItDoesNotUnderstand) {
    for (const char* wrong : {"",
                              "x",
                              "[]",
                              "{}",
                              R"({"op":1})",
                              R"({"op":"dance"})",
                              R"({"op":"station.dance","mac":"02:00:00:00:00:77"})",
                              R"({"op":"station.join"})",
                              R"({"op":"station.join","mac":"02:00:00:00:00:77"})",
                              R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":25})",
                              R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":1,"x":1})",
                              R"({"op":"station.move","mac":"02:5a:00:00:01:01"})",
                              R"({"op":"station.move","mac":"02:5a:00:00:01:01","rssi":5})",
                              R"({"op":"neighbour.add"})",
                              R"({"op":"neighbour.dance"})",
                              R"({"op":"fault"})",
                              R"({"op":"fault","fault":"x"})",
                              R"({"op":"fault","fault":"save","on":3})",
                              R"({"op":"fault","fault":"wl","how":"x"})",
                              R"({"op":"fault","fault":"die"})",
                              R"({"op":"fault","fault":"stop","at":"breakfast"})",
                              R"({"op":"events","since":"x"})"}) {
        const std::string answer = ask(wrong);
        EXPECT_EQ(answer.rfind(R"({"ok":false,"error":")", 0), 0U) << wrong << " gave " << answer;
    }
}

TEST_F(Control, FailsSavesOnRequest) {
    holds(R"({"op":"fault","fault":"save"})", R"("ok":true)");
    Request request;
    request.operation = Operation::kSaveNvram;
    Session session;
    Answer answer;
    service_.handle(request, session, answer);
    EXPECT_EQ(answer.result, 0);
    (void)ask(R"({"op":"fault","fault":"none"})");
    service_.handle(request, session, answer);
    EXPECT_EQ(answer.result, 1);
}

struct Moment {
    const char* name;
    Operation operation;
    const char* texts[2];
};

TEST_F(Control, EndsOrStopsInTheMiddleOfWhatItIsAskedTo) {
    constexpr Moment kMoments[] = {
        {"read", Operation::kGet, {"wlSsid", ""}},   {"read", Operation::kExtGet, {"wlSsid", ""}},
        {"read", Operation::kNvramGet, {"x", ""}},   {"write", Operation::kSet, {"wlSsid", "Attic"}},
        {"write", Operation::kNvramSet, {"x", "1"}}, {"scan", Operation::kWl, {"wl0", "scan"}},
        {"save", Operation::kSaveNvram, {"", ""}}};
    std::vector<int> signals;
    service_.setSignalling([&signals](int signal) { signals.push_back(signal); });
    const auto perform = [this](const Moment& moment) {
        Request request;
        request.operation = moment.operation;
        request.texts[0] = moment.texts[0];
        request.texts[1] = moment.texts[1];
        Session session;
        Answer answer;
        service_.handle(request, session, answer);
    };
    for (const Moment& moment : kMoments) {
        for (const bool dies : {true, false}) {
            holds(std::string(R"({"op":"fault","fault":")") + (dies ? "die" : "stop") + R"(","at":")" + moment.name +
                      R"("})",
                  R"("ok":true)");
            signals.clear();
            for (const Moment& other : kMoments) {
                if (other.name != std::string(moment.name)) perform(other);
            }
            perform({"", Operation::kWl, {"wl0", "counters"}});
            EXPECT_EQ(signals, std::vector<int>{}) << moment.name;
            // Once, and not again.
            perform(moment);
            perform(moment);
            EXPECT_EQ(signals, std::vector<int>{dies ? SIGKILL : SIGSTOP}) << moment.name;
        }
    }
    holds(R"({"op":"fault","fault":"die","at":"read"})", R"("ok":true)");
    holds(R"({"op":"fault","fault":"none"})", R"("ok":true)");
    signals.clear();
    perform(kMoments[0]);
    EXPECT_EQ(signals, std::vector<int>{});
}

TEST_F(Control, CutsALongAnswerIntoPieces) {
    for (int i = 0; i < 400; ++i) {
        description::Station setup;
        setup.mac = {{2, 1, 1, 1, static_cast<std::uint8_t>(i / 256), static_cast<std::uint8_t>(i)}};
        ASSERT_FALSE(service_.model().joinStation(setup));
    }
    Request request;
    request.operation = Operation::kControl;
    request.texts[0] = R"({"op":"station.list"})";
    Session session;
    Answer answer;
    service_.handle(request, session, answer);
    const std::string whole = session.longAnswer;
    ASSERT_GT(whole.size(), kPiece);
    ASSERT_EQ(answer.value, whole.size());
    std::string got(reinterpret_cast<const char*>(answer.blocks[0].bytes.data()), answer.blocks[0].bytes.size());
    while (got.size() < whole.size()) {
        request = {};
        request.operation = Operation::kMore;
        request.words[0] = static_cast<std::uint32_t>(got.size());
        service_.handle(request, session, answer);
        ASSERT_FALSE(answer.blocks[0].bytes.empty());
        got.append(reinterpret_cast<const char*>(answer.blocks[0].bytes.data()), answer.blocks[0].bytes.size());
    }
    EXPECT_EQ(got, whole);
}

TEST_F(Control, NamesTheKeyThatIsWrong) {
    EXPECT_EQ(ask(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":25})"),
              R"({"ok":false,"error":"\"bss\": expected a whole number from 1 to 24, found 25"})");
    EXPECT_NE(ask(R"({"op":"station.join","mac":"02:00:00:00:00:77"})").find("the station 02:00:00:00:00:77 is new"),
              std::string::npos);
    EXPECT_EQ(ask(R"({"op":"neighbour.add"})").find("request:"), std::string::npos);
}

}  // namespace
}  // namespace quorvel::manager::test
