#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <stdexcept>
#include <string>

namespace quorvel::launch {

/// The board could not be reached, or was lost: what happened, and what to do next.
class GatewayError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Talks to a host process: JSON objects, one per line.
class Client {
  public:
    using OnPart = std::function<void(const nlohmann::ordered_json&)>;

    /// Takes over a connected socket.
    explicit Client(int descriptor) : descriptor_(descriptor) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client();

    /// Sends a request and hands every part of its answer to `onPart` until the answer ends. Throws GatewayError when
    /// the host process is gone or silent: a working one says within two seconds that it is there when it is asked,
    /// whatever the plug-in does.
    void ask(nlohmann::ordered_json request, const OnPart& onPart);

    /// Sends a request whose parts come until stop() says so; `onPart` is called for each.
    void follow(nlohmann::ordered_json request, const OnPart& onPart, const std::function<bool()>& stop);

    /// Waits for one line, at most `milliseconds`. Returns false on silence; throws GatewayError when the other side is
    /// gone.
    [[nodiscard]] bool line(std::string& text, int milliseconds);

    void send(const nlohmann::ordered_json& request);

    /// Given the lines that answer no request of ask().
    OnPart other;

    /// Called some ten times a second while an answer is awaited.
    std::function<void()> idle;

  private:
    [[nodiscard]] bool awaitLine(std::string& text, int milliseconds);

    int descriptor_;
    int lastId_ = 0;
    std::string pending_;
};

}  // namespace quorvel::launch
