#include "agent/config/Url.h"

#include <gtest/gtest.h>

namespace quorvel::agent_test {
namespace {

using agent::ConfigError;
using agent::parseUrl;
using agent::Url;

TEST(UspUrl, BrokerHasUserHostAndPort) {
    const Url url = parseUrl("mqtt://lab@broker.example:1884");
    EXPECT_EQ(url.kind, Url::Kind::kMqtt);
    EXPECT_FALSE(url.tls);
    EXPECT_EQ(url.user, "lab");
    EXPECT_EQ(url.host, "broker.example");
    EXPECT_EQ(url.port, 1884);
}

TEST(UspUrl, EachSchemeHasItsUsualPort) {
    EXPECT_EQ(parseUrl("mqtt://h").port, 1883);
    EXPECT_EQ(parseUrl("mqtts://h").port, 8883);
    EXPECT_EQ(parseUrl("ws://h/p").port, 80);
    EXPECT_EQ(parseUrl("wss://h/p").port, 443);
    EXPECT_THROW((void)parseUrl("ws-listen://h/p"), ConfigError);
}

TEST(UspUrl, WebSocketHasAPath) {
    EXPECT_EQ(parseUrl("ws://h:1/a/b?c").path, "/a/b?c");
    EXPECT_EQ(parseUrl("wss-listen://h:1").path, "/");
    EXPECT_TRUE(parseUrl("wss-listen://h:1").tls);
}

TEST(UspUrl, AddressOfTheSixthVersionStandsInBrackets) {
    EXPECT_EQ(parseUrl("mqtt://[::1]:1884").host, "::1");
    EXPECT_EQ(parseUrl("mqtt://[::1]:1884").port, 1884);
    EXPECT_EQ(parseUrl("mqtt://[::1]").port, 1883);
    EXPECT_EQ(textOf(parseUrl("mqtt://u@[::1]")), "mqtt://u@[::1]:1883");
}

TEST(UspUrl, WrongOnesAreRefused) {
    for (const char* wrong : {"", "broker", "http://h", "mqtt://", "mqtt://h:0", "mqtt://h:65536", "mqtt://h:x",
                              "mqtt://h/topic", "ws://user@h/p", "mqtt://[::1", "mqtt://u:secret@h"}) {
        EXPECT_THROW((void)parseUrl(wrong), ConfigError) << wrong;
    }
}

TEST(UspUrl, PasswordInAnArgumentIsRefusedWithTheRemedy) {
    try {
        (void)parseUrl("mqtt://u:secret@h");
        FAIL();
    } catch (const ConfigError& error) {
        EXPECT_NE(std::string(error.what()).find("--usp-password-file"), std::string::npos);
    }
}

TEST(Loopback, IsThisMachineOnly) {
    for (const char* own : {"localhost", "127.0.0.1", "127.9.9.9", "::1"})
        EXPECT_TRUE(agent::isLoopback(own)) << own;
    for (const char* other : {"10.0.0.1", "128.0.0.1", "example.com", "::2", "0.0.0.0", "::"})
        EXPECT_FALSE(agent::isLoopback(other)) << other;
}

}  // namespace
}  // namespace quorvel::agent_test
