#include "web/server/http/Address.h"

#include <gtest/gtest.h>

namespace quorvel::web_test {

TEST(ListenAddress, TakesNumericHostsAndAPort) {
    EXPECT_EQ(web::parseAddress("127.0.0.1:8181").value().text(), "127.0.0.1:8181");
    EXPECT_EQ(web::parseAddress("[::1]:0").value().text(), "[::1]:0");
    EXPECT_EQ(web::parseAddress("localhost:80").value().host, "127.0.0.1");
    EXPECT_EQ(web::parseAddress("0.0.0.0:65535").value().port, 65535);
}

TEST(ListenAddress, RefusesEverythingElse) {
    for (const char* const text :
         {"", ":", "8181", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1", "::1:80", "[::1]",
          "[127.0.0.1]:80", "example.net:80", "127.0.0.1:80 ", "[]:80", "1.2.3:80"})
        EXPECT_FALSE(web::parseAddress(text)) << text;
}

TEST(ListenAddress, KnowsTheLoopback) {
    for (const char* const text : {"127.0.0.1:1", "127.9.9.9:1", "[::1]:1"})
        EXPECT_TRUE(web::parseAddress(text).value().isLoopback()) << text;
    for (const char* const text : {"0.0.0.0:1", "[::]:1", "192.0.2.1:1", "128.0.0.1:1"})
        EXPECT_FALSE(web::parseAddress(text).value().isLoopback()) << text;
}

}  // namespace quorvel::web_test
