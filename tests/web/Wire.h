#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "web/server/http/Server.h"
#include "web/server/live/Composer.h"

namespace quorvel::web_test {

/// A server on a free port of the loopback, with a board of the test's making.
class RunningServer {
  public:
    explicit RunningServer(web::Limits limits = {}, std::string token = "");
    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;
    ~RunningServer();

    /// Shows what the composer makes of a look.
    void take(const web::Look& look);

    [[nodiscard]] std::uint16_t port() const {
        return server_.address().port;
    }
    [[nodiscard]] std::string host() const {
        return server_.address().text();
    }
    [[nodiscard]] web::ServerCounts counts();

  private:
    web::Server server_;
    web::Composer composer_;
    std::unique_ptr<web::Site> site_;
    std::thread thread_;
};

/// A client that sends bytes as they are. Each wait ends after five seconds.
class RawClient {
  public:
    explicit RawClient(std::uint16_t port, int receiveBuffer = 0);
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;
    ~RawClient();

    /// Sends the bytes. Returns false when the server has ended the connection.
    bool send(const std::string& bytes) const;

    /// Reads until `text` has come, and returns everything up to its end; what has come when the wait or the connection
    /// ended.
    [[nodiscard]] std::string readUntil(const std::string& text);

    /// Reads until the server ends the connection. Returns false when it does not.
    [[nodiscard]] bool ended();

    /// Reads a whole answer, by its Content-Length.
    [[nodiscard]] std::string readAnswer();

    /// Tells whether anything comes within `time`.
    [[nodiscard]] bool hearsWithin(std::chrono::milliseconds time) const;

  private:
    [[nodiscard]] bool readSome(std::chrono::milliseconds time);

    int socket_ = -1;
    std::string pending_;
    bool over_ = false;
};

/// Returns a request's head.
[[nodiscard]] std::string get(const std::string& target, const std::string& host, const std::string& headers = "");

}  // namespace quorvel::web_test
