#include "web/server/http/Guard.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace quorvel::web_test {
namespace {

using web::Guard;
using web::Request;

const web::Address kLoopback{"127.0.0.1", 8181};

Request request(const std::string& host) {
    Request asked;
    asked.method = "GET";
    asked.target = "/api/live";
    asked.host = host;
    asked.hosts = 1;
    return asked;
}

unsigned statusOf(const std::optional<web::Reply>& refusal) {
    return refusal ? refusal->status : 200;
}

// A file with a token, in a folder of its own; both go with it.
class TokenFile {
  public:
    TokenFile(const std::string& content, mode_t mode)
        : folder_((std::filesystem::temp_directory_path() / "quorvel-token-XXXXXX").string()) {
        if (mkdtemp(folder_.data()) == nullptr) throw std::runtime_error("no folder can be made for a token");
        std::ofstream(path()) << content;
        (void)chmod(path().c_str(), mode);
    }
    ~TokenFile() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TokenFile(const TokenFile&) = delete;
    TokenFile& operator=(const TokenFile&) = delete;

    std::string path() const {
        return folder_ + "/token";
    }

  private:
    std::string folder_;
};

}  // namespace

TEST(WebGuard, AnswersTheNamesOfTheLoopbackOnly) {
    const Guard guard(kLoopback, {}, "");
    for (const char* const host : {"127.0.0.1:8181", "localhost:8181", "LocalHost:8181", "[::1]:8181"})
        EXPECT_EQ(statusOf(guard.refuse(request(host))), 200U) << host;
    for (const char* const host : {"evil.example:8181", "127.0.0.1", "127.0.0.1:80", "localhost",
                                   "127.0.0.1:8181.evil.example", "", "evil.example", "127.0.0.1:8181@evil.example"})
        EXPECT_EQ(statusOf(guard.refuse(request(host))), 403U) << host;
}

TEST(WebGuard, AnswersNamesThatWereAllowed) {
    const Guard guard(kLoopback, {"Metrics.example"}, "");
    EXPECT_EQ(statusOf(guard.refuse(request("metrics.example"))), 200U);
    EXPECT_EQ(statusOf(guard.refuse(request("metrics.example:8181"))), 200U);
    EXPECT_EQ(statusOf(guard.refuse(request("other.example"))), 403U);
}

TEST(WebGuard, WantsOneHost) {
    const Guard guard(kLoopback, {}, "");
    Request asked = request("localhost:8181");
    asked.hosts = 0;
    EXPECT_EQ(statusOf(guard.refuse(asked)), 400U);
    asked.hosts = 2;
    EXPECT_EQ(statusOf(guard.refuse(asked)), 400U);
}

TEST(WebGuard, RefusesPagesOfOtherSites) {
    const Guard guard(kLoopback, {}, "");
    Request asked = request("localhost:8181");
    asked.origin = "http://localhost:8181";
    EXPECT_EQ(statusOf(guard.refuse(asked)), 200U);
    for (const char* const origin : {"http://evil.example", "null", "http://localhost", "http://localhost:81810"}) {
        asked.origin = origin;
        EXPECT_EQ(statusOf(guard.refuse(asked)), 403U) << origin;
    }
    asked.origin.clear();
    for (const char* const site : {"cross-site", "same-site"}) {
        asked.fetchSite = site;
        EXPECT_EQ(statusOf(guard.refuse(asked)), 403U) << site;
    }
    // A link on another site may open the page itself.
    asked.target = "/";
    EXPECT_EQ(statusOf(guard.refuse(asked)), 200U);
}

TEST(WebGuard, ReadsAndNeverWrites) {
    const Guard guard(kLoopback, {}, "");
    Request asked = request("localhost:8181");
    asked.method = "HEAD";
    EXPECT_EQ(statusOf(guard.refuse(asked)), 200U);
    for (const char* const method : {"POST", "PUT", "DELETE", "OPTIONS", "TRACE", "CONNECT", "get", ""}) {
        asked.method = method;
        EXPECT_EQ(statusOf(guard.refuse(asked)), 405U) << method;
    }
}

TEST(WebGuard, AsksForTheTokenWhereThereIsOne) {
    const std::string token = "0123456789abcdef";
    const Guard guard({"192.0.2.1", 8181}, {}, token);
    Request asked = request("192.0.2.1:8181");
    EXPECT_EQ(statusOf(guard.refuseStranger(asked)), 401U);
    for (const char* const given : {"Bearer", "Bearer ", "Bearer 0123456789abcdee", "Bearer 0123456789abcdef0",
                                    "Basic 0123456789abcdef", "0123456789abcdef", "Bearer  0123456789abcdef"}) {
        asked.authorization = given;
        EXPECT_EQ(statusOf(guard.refuseStranger(asked)), 401U) << given;
    }
    asked.authorization = "bearer " + token;
    EXPECT_EQ(statusOf(guard.refuseStranger(asked)), 200U);
    EXPECT_EQ(statusOf(Guard(kLoopback, {}, "").refuseStranger(request("localhost:8181"))), 200U);
}

TEST(WebToken, IsReadFromAFileThatIsPrivate) {
    EXPECT_EQ(web::readToken(TokenFile("0123456789abcdef\n", 0600).path()), "0123456789abcdef");
    for (const char* const content : {"", "short", "0123456789abcde\"f", "0123456789 abcdef"})
        EXPECT_THROW((void)web::readToken(TokenFile(content, 0600).path()), std::runtime_error) << content;
    EXPECT_THROW((void)web::readToken(TokenFile("0123456789abcdef\n", 0644).path()), std::runtime_error);
    EXPECT_THROW((void)web::readToken("/nonexistent/token"), std::runtime_error);
}

}  // namespace quorvel::web_test
