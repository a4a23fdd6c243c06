#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "tests/web/Boards.h"
#include "tests/web/Wire.h"

namespace quorvel::web_test {
namespace {

using Json = nlohmann::json;
using namespace std::chrono_literals;

/// Reads the next event's data; null when none comes.
Json next(RawClient& client, const std::string& name) {
    const std::string text = client.readUntil("\n\n");
    const std::string begin = "event: " + name + "\ndata: ";
    const std::size_t at = text.find(begin);
    return at == std::string::npos ? Json() : Json::parse(text.substr(at + begin.size()), nullptr, false);
}

std::unique_ptr<RawClient> follow(RunningServer& server) {
    auto client = std::make_unique<RawClient>(server.port());
    (void)client->send(get("/api/stream", server.host()));
    (void)client->readUntil("\r\n\r\n");
    return client;
}

}  // namespace

TEST(WebStream, BeginsWithTheWholePicture) {
    RunningServer server;
    server.take(lookAt(10));
    const auto client = follow(server);
    const Json picture = next(*client, "picture");
    ASSERT_TRUE(picture.is_object());
    EXPECT_EQ(picture["board"]["name"], "test-board");
    EXPECT_EQ(picture["stations"].size(), 2U);
    EXPECT_EQ(picture["neighbours"][0]["ssid"], "Attic");
}

TEST(WebStream, SendsOnlyWhatHasChanged) {
    RunningServer server;
    server.take(lookAt(10));
    const auto client = follow(server);
    ASSERT_TRUE(next(*client, "picture").is_object());
    web::Look look = lookAt(11);
    look.live.stations[0].rssi = -66;
    server.take(look);
    const Json update = next(*client, "update");
    ASSERT_TRUE(update.is_object());
    EXPECT_EQ(update["stations"][0]["rssi"], -66);
    EXPECT_EQ(update["board"]["time"], 11);
    EXPECT_FALSE(update.contains("radios"));
    EXPECT_FALSE(update.contains("neighbours"));
    EXPECT_FALSE(update.contains("events"));
}

TEST(WebStream, IsSilentWhileNothingChanges) {
    RunningServer server;
    server.take(lookAt(10));
    server.take(lookAt(11));
    const auto client = follow(server);
    ASSERT_TRUE(next(*client, "picture").is_object());
    for (int second = 12; second < 20; ++second)
        server.take(lookAt(second));
    web::Look look = lookAt(20);
    look.live.radios[0].utilization = 77;
    server.take(look);
    // The first that comes is the one change.
    const Json update = next(*client, "update");
    ASSERT_TRUE(update.is_object());
    EXPECT_EQ(update["board"]["time"], 20);
    EXPECT_EQ(update["radios"][0]["utilization"], 77);
}

TEST(WebStream, GivesEachOfTenBrowsersEverything) {
    RunningServer server;
    server.take(lookAt(10));
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 10; ++i) {
        clients.push_back(follow(server));
        ASSERT_TRUE(next(*clients.back(), "picture").is_object());
    }
    web::Look look = lookAt(11);
    look.log = {{1, 11, "join", "02:00:00:00:00:03 on access point 1"}};
    server.take(look);
    for (const auto& client : clients) {
        const Json update = next(*client, "update");
        ASSERT_TRUE(update.is_object());
        EXPECT_EQ(update["events"].back()["text"], "02:00:00:00:00:03 on access point 1");
    }
}

TEST(WebStream, KeepsASilentConnectionAlive) {
    web::Limits limits;
    limits.heartbeat = 50ms;
    RunningServer server(limits);
    const auto client = follow(server);
    ASSERT_TRUE(next(*client, "picture").is_object());
    EXPECT_EQ(client->readUntil(":\n\n"), ":\n\n");
    EXPECT_EQ(client->readUntil(":\n\n"), ":\n\n");
}

TEST(WebStream, OfAClientThatReadsNothingIsDropped) {
    web::Limits limits;
    limits.toTake = 300ms;
    RunningServer server(limits);
    RawClient client(server.port(), 4096);
    ASSERT_TRUE(client.send(get("/api/stream", server.host())));
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    for (int i = 0; server.counts().dropped == 0 && std::chrono::steady_clock::now() < deadline; ++i) {
        web::Look look = lookAt(10 + i);
        // Large changes, until the kernel takes no more.
        for (int n = 0; n < 3000; ++n)
            look.live.neighbours.push_back(look.live.neighbours.front());
        look.live.neighbours.back().rssi = -30 - i % 60;
        server.take(look);
    }
    EXPECT_EQ(server.counts().dropped, 1U);
    EXPECT_EQ(server.counts().streams, 0U);
}

TEST(WebStream, EndsWhenTheBrowserGoes) {
    RunningServer server;
    {
        const auto client = follow(server);
        ASSERT_TRUE(next(*client, "picture").is_object());
        EXPECT_EQ(server.counts().streams, 1U);
    }
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (server.counts().streams != 0 && std::chrono::steady_clock::now() < deadline) {
    }
    EXPECT_EQ(server.counts().streams, 0U);
}

TEST(WebStream, IsRefusedWhereThereAreTooMany) {
    web::Limits limits;
    limits.streams = 2;
    RunningServer server(limits);
    const auto one = follow(server);
    const auto two = follow(server);
    ASSERT_TRUE(next(*one, "picture").is_object());
    ASSERT_TRUE(next(*two, "picture").is_object());
    RawClient three(server.port());
    ASSERT_TRUE(three.send(get("/api/stream", server.host())));
    EXPECT_EQ(three.readAnswer().substr(9, 3), "503");
}

}  // namespace quorvel::web_test
