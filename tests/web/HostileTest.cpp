#include <gtest/gtest.h>

#include <vector>

#include "tests/web/Boards.h"
#include "tests/web/Wire.h"

namespace quorvel::web_test {
namespace {

using namespace std::chrono_literals;

std::string statusLine(const std::string& answer) {
    return answer.substr(0, answer.find("\r\n"));
}

std::string answerTo(RunningServer& server, const std::string& bytes) {
    RawClient client(server.port());
    (void)client.send(bytes);  // the server may have ended the connection early
    return client.readAnswer();
}

}  // namespace

TEST(HostileRequest, WithAnEndlessHeadIsRefused) {
    RunningServer server;
    const std::string head = "GET / HTTP/1.1\r\nX: " + std::string(20000, 'x');
    EXPECT_EQ(statusLine(answerTo(server, head)), "HTTP/1.1 431 Request Header Fields Too Large");
    std::string many = "GET / HTTP/1.1\r\n";
    for (int i = 0; i < 2000; ++i)
        many += "A: b\r\n";
    EXPECT_EQ(statusLine(answerTo(server, many)), "HTTP/1.1 431 Request Header Fields Too Large");
}

TEST(HostileRequest, ThatIsNoHttpIsRefused) {
    RunningServer server;
    for (const std::string& bytes :
         {std::string("\r\n\r\n\r\n\r\n"), std::string("GARBAGE\r\n\r\n"), std::string("GET  HTTP/1.1\r\n\r\n"),
          std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15),
          std::string("GET / HTTP/9.9\r\n\r\n"), std::string("GET / HTTP/1.1\r\nHost : x\r\n\r\n"),
          std::string("GET / HTTP/1.1\r\n folded\r\n\r\n")})
        EXPECT_EQ(statusLine(answerTo(server, bytes)).substr(9, 3), "400") << bytes;
}

TEST(HostileRequest, WithABodyIsRefused) {
    RunningServer server;
    const std::string target = get("/api/live", server.host(), "Content-Length: 5\r\n") + "hello";
    EXPECT_EQ(statusLine(answerTo(server, target)).substr(9, 3), "413");
    const std::string chunked =
        get("/api/live", server.host(), "Transfer-Encoding: chunked\r\n") + "5\r\nhello\r\n0\r\n\r\n";
    EXPECT_EQ(statusLine(answerTo(server, chunked)).substr(9, 3), "413");
}

TEST(HostileRequest, FindsNoFileOfTheMachine) {
    RunningServer server;
    for (const char* const target : {"/../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/etc/passwd", "//etc/passwd",
                                     "/api/../../etc/passwd", "/\\..\\etc", "/api/live/", "/api/live%00", "/api"})
        EXPECT_EQ(statusLine(answerTo(server, get(target, server.host()))).substr(9, 3), "404") << target;
}

TEST(HostileRequest, ByAnotherNameGetsNoValues) {
    RunningServer server;
    server.take(lookAt(10));
    const std::string answer = answerTo(server, get("/api/live", "evil.example"));
    EXPECT_EQ(statusLine(answer).substr(9, 3), "403");
    EXPECT_EQ(answer.find("test-board"), std::string::npos);
    EXPECT_NE(answerTo(server, get("/api/live", "metrics.example")).find("test-board"), std::string::npos);
}

TEST(HostileRequest, WithTwoHostsIsRefused) {
    RunningServer server;
    const std::string twice = get("/api/live", server.host(), "Host: evil.example\r\n");
    EXPECT_EQ(statusLine(answerTo(server, twice)).substr(9, 3), "400");
}

TEST(HostileRequest, WithoutTheTokenGetsNoValues) {
    RunningServer server({}, "0123456789abcdef");
    server.take(lookAt(10));
    for (const char* const target :
         {"/api/live", "/api/stations", "/api/stream", "/api/history", "/metrics", "/api/nothing"}) {
        const std::string answer = answerTo(server, get(target, server.host()));
        EXPECT_EQ(statusLine(answer).substr(9, 3), "401") << target;
        EXPECT_EQ(answer.find("02:00:00"), std::string::npos) << target;
    }
    const std::string bearer = "Authorization: Bearer 0123456789abcdef\r\n";
    EXPECT_EQ(statusLine(answerTo(server, get("/api/live", server.host(), bearer))).substr(9, 3), "200");
}

TEST(HostileRequest, ThatComesTooSlowlyIsDropped) {
    web::Limits limits;
    limits.toAsk = 300ms;
    RunningServer server(limits);
    RawClient client(server.port());
    ASSERT_TRUE(client.send("GET / HT"));
    // A byte now and then does not extend the time.
    for (int i = 0; i < 4 && !client.hearsWithin(100ms); ++i)
        (void)client.send("x");
    EXPECT_TRUE(client.ended());
    EXPECT_GE(server.counts().dropped, 1U);
}

TEST(HostileRequest, OfTooManyConnectionsIsDropped) {
    web::Limits limits;
    limits.connections = 8;
    RunningServer server(limits);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 8; ++i) {
        clients.push_back(std::make_unique<RawClient>(server.port()));
        ASSERT_TRUE(clients.back()->send(get("/api/live", server.host())));
        ASSERT_EQ(statusLine(clients.back()->readAnswer()), "HTTP/1.1 200 OK");
    }
    RawClient extra(server.port());
    EXPECT_TRUE(extra.ended());
    // A place that is free again is given away.
    clients.pop_back();
    ASSERT_TRUE(clients.front()->send(get("/api/live", server.host())));
    ASSERT_EQ(statusLine(clients.front()->readAnswer()), "HTTP/1.1 200 OK");
    RawClient next(server.port());
    ASSERT_TRUE(next.send(get("/api/live", server.host())));
    EXPECT_EQ(statusLine(next.readAnswer()), "HTTP/1.1 200 OK");
}

TEST(HostileRequest, ThatIsPipelinedIsAnsweredInOrder) {
    RunningServer server;
    RawClient client(server.port());
    ASSERT_TRUE(
        client.send(get("/api/live", server.host()) + get("/nothing", server.host()) + get("/metrics", server.host())));
    EXPECT_EQ(statusLine(client.readAnswer()).substr(9, 3), "200");
    EXPECT_EQ(statusLine(client.readAnswer()).substr(9, 3), "404");
    EXPECT_EQ(statusLine(client.readAnswer()).substr(9, 3), "200");
}

TEST(EveryAnswer, CarriesTheSecurityHeadersAndNoCookie) {
    RunningServer server;
    for (const char* const target : {"/api/live", "/nothing", "/metrics", "/"}) {
        const std::string answer = answerTo(server, get(target, server.host()));
        EXPECT_NE(answer.find("Content-Security-Policy: default-src 'none'; script-src 'self'"), std::string::npos)
            << target;
        EXPECT_NE(answer.find("X-Content-Type-Options: nosniff"), std::string::npos) << target;
        EXPECT_NE(answer.find("Cross-Origin-Resource-Policy: same-origin"), std::string::npos) << target;
        EXPECT_EQ(answer.find("Set-Cookie"), std::string::npos) << target;
        EXPECT_EQ(answer.find("Access-Control-Allow-Origin"), std::string::npos) << target;
    }
}

}  // namespace quorvel::web_test
