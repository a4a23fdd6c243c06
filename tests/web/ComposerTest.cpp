#include "web/server/live/Composer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/web/Boards.h"

namespace quorvel::web_test {
namespace {

using Json = nlohmann::json;
using web::Composer;
using web::Member;

Json member(const web::Picture& picture, Member which) {
    return Json::parse(picture.member(which).json);
}

}  // namespace

TEST(WebPicture, IsTheSameWhenOnlyTimeHasPassed) {
    Composer composer;
    (void)composer.take(lookAt(10));
    // The first rates are known after the second look.
    const auto first = composer.take(lookAt(11));
    for (const double time : {12, 13}) {
        const auto later = composer.take(lookAt(time));
        EXPECT_EQ(later->version, first->version);
        EXPECT_EQ(web::updateText(*later, first->version, first->lastEvent), "");
    }
}

TEST(WebPicture, TellsWhenAStationAssociatedAndDoesNotWaver) {
    Composer composer;
    web::Look look = lookAt(100.2);
    look.live.stations[0].seconds = 40;
    const double since = member(*composer.take(look), Member::kStations)[0]["since"];
    EXPECT_EQ(since, 60);
    look = lookAt(101.9);
    look.live.stations[0].seconds = 41;
    EXPECT_EQ(member(*composer.take(look), Member::kStations)[0]["since"], since);
    look.live.clock.time = 110;
    look.live.stations[0].associations = 2;
    look.live.stations[0].seconds = 1;
    EXPECT_EQ(member(*composer.take(look), Member::kStations)[0]["since"], 109);
}

TEST(WebPicture, TellsANeighboursPrimaryChannel) {
    Composer composer;
    web::Look look = lookAt(10);
    look.live.neighbours.resize(3, look.live.neighbours.front());
    look.live.neighbours[1].channel = "36/80";
    look.live.neighbours[2].channel = "11";
    const Json neighbours = member(*composer.take(look), Member::kNeighbours);
    EXPECT_EQ(neighbours[0]["channel"], 6);
    EXPECT_EQ(neighbours[1]["channel"], 36);
    EXPECT_EQ(neighbours[2]["channel"], 11);
}

TEST(WebPicture, TurnsCountersIntoRates) {
    Composer composer;
    (void)composer.take(lookAt(10));
    web::Look look = lookAt(12);
    look.live.interfaces[0].bytesSent += 250'000;
    look.live.interfaces[0].bytesReceived += 25'000;
    const Json traffic = member(*composer.take(look), Member::kTraffic);
    EXPECT_EQ(traffic[0]["sentRate"], 1'000'000);
    EXPECT_EQ(traffic[0]["receivedRate"], 100'000);
    EXPECT_EQ(traffic[0]["sent"], 252'000);
    EXPECT_EQ(traffic[1]["sentRate"], 0);
}

TEST(WebPicture, GivesNoRateForCountersThatBeginAnew) {
    Composer composer;
    web::Look look = lookAt(100);
    look.live.interfaces[0].bytesSent = 1'000'000;
    (void)composer.take(look);
    EXPECT_EQ(member(*composer.take(lookAt(101)), Member::kTraffic)[0]["sentRate"], 0);
    EXPECT_EQ(member(*composer.take(lookAt(1)), Member::kTraffic)[0]["sentRate"], 0);
}

TEST(WebPicture, KeepsTheLastValuesOfALostBoard) {
    Composer composer;
    (void)composer.take(lookAt(10));
    const auto lost = composer.lose("no board is up");
    EXPECT_EQ(member(*lost, Member::kBoard)["state"], "lost");
    EXPECT_EQ(member(*lost, Member::kBoard)["reason"], "no board is up");
    EXPECT_EQ(member(*lost, Member::kStations).size(), 2U);
    EXPECT_EQ(lost->events.back().kind, "lost");
    EXPECT_EQ(composer.lose("no board is up")->version, lost->version);
    const auto found = composer.take(lookAt(1));
    EXPECT_EQ(member(*found, Member::kBoard)["state"], "up");
    EXPECT_EQ(found->events.back().kind, "found");
}

TEST(WebPicture, SaysThatTheManagerIsSilent) {
    Composer composer;
    (void)composer.take(lookAt(10));
    web::Look look;
    look.name = "test-board";
    look.live.clock.time = 11;
    look.live.manager = {"wlmngr2", 17, "stopped"};
    const auto silent = composer.take(look);
    EXPECT_EQ(member(*silent, Member::kBoard)["state"], "silent");
    EXPECT_EQ(member(*silent, Member::kBoard)["reason"], "it is stopped");
    EXPECT_EQ(member(*silent, Member::kRadios).size(), 2U);
}

TEST(WebPicture, LeavesSecretsOut) {
    Composer composer;
    web::Look look = lookAt(10);
    look.log = {{1, 9, "nvram", "wps_device_pin=12345670"},
                {2, 9, "wps", "wl0 started client-pin 12345670"},
                {3, 9, "set", "wl0 wlSsid=Attic"}};
    look.agent = hostd::protocol::ServiceStatus{
        "usp", true, {{"endpoint", "os::1"}, {"mqtt", {{"password", "hunter2hunter2"}, {"user", "gateway"}}}}};
    hostd::protocol::TraceEntry entry;
    entry.number = 1;
    entry.service = "usp";
    entry.entry = {{"set", {{{"param", "KeyPassphrase"}, {"value", "correct-horse"}}}}};
    look.trace = {entry};
    const std::string text = web::pictureText(*composer.take(look));
    for (const char* const secret : {"12345670", "hunter2hunter2", "correct-horse"})
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
    EXPECT_NE(text.find("wl0 wlSsid=Attic"), std::string::npos);
    EXPECT_NE(text.find("\"user\":\"gateway\""), std::string::npos);
    EXPECT_NE(text.find("KeyPassphrase"), std::string::npos);
}

TEST(WebPicture, KeepsTheLatestEvents) {
    Composer composer;
    web::Look look = lookAt(10);
    for (std::uint64_t i = 1; i <= 700; ++i)
        look.log.push_back({i, 10, "move", "entry " + std::to_string(i)});
    const auto picture = composer.take(look);
    EXPECT_EQ(picture->events.size(), web::Events::kKept);
    EXPECT_EQ(picture->events.front().number + web::Events::kKept - 1, picture->lastEvent);
}

TEST(WebHistory, KeepsTenMinutes) {
    web::History history;
    for (int second = 0; second <= 1000; ++second)
        history.add(lookAt(second).live, {{1, {1000, 500}}});
    const Json json = Json::parse(history.toJson().dump());
    EXPECT_EQ(json["time"].size(), 601U);
    EXPECT_EQ(json["time"].front(), 400);
    EXPECT_EQ(json["radios"][0]["values"]["utilization"].size(), 601U);
    EXPECT_EQ(json["traffic"][0]["values"]["sentRate"].back(), 1000);
}

TEST(WebHistory, HasNothingForAStationThatWasAway) {
    web::History history;
    history.add(lookAt(1).live, {});
    web::Look look = lookAt(2);
    look.live.stations.pop_back();
    history.add(look.live, {});
    history.add(lookAt(3).live, {});
    const Json stations = Json::parse(history.toJson().dump())["stations"];
    EXPECT_EQ(stations[1]["rssi"], Json::parse("[-60.0, null, -60.0]"));
}

TEST(WebHistory, BeginsAnewWithTheBoard) {
    web::History history;
    history.add(lookAt(500).live, {});
    history.add(lookAt(1).live, {});
    EXPECT_EQ(history.samples(), 1U);
}

}  // namespace quorvel::web_test
