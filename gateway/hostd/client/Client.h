#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Lines.h"

namespace quorvel::hostd {

/// The host process could not be reached, does not answer, or is gone: what happened, and what to do next.
class ConnectionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The host process has ended the connection: the board was switched off, or something went wrong.
class ConnectionEnded : public ConnectionError {
  public:
    using ConnectionError::ConnectionError;
};

/// Talks to a host process. Usable in two ways that may be mixed: ask() waits for the answer; send() returns at once
/// and the answer's parts come out of process(), which an event loop calls when descriptor() is readable (or writable
/// while wantsToWrite()).
///
/// The exchange of versions happens by itself before the first request. Not for several threads at once.
class Client {
  public:
    using OnPart = std::function<void(const protocol::Part&)>;

    /// Takes over a connected socket. `name` is this program's, for the host process's messages.
    Client(int descriptor, std::string name);
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client();

    /// Sends a request and hands every part of its answer to `onPart` until the answer ends. Parts of other requests
    /// go to their own handlers meanwhile. Returns the faults of the answer, which `onPart` sees as well. Throws
    /// ConnectionError when the host process is gone or silent: a working one says within two seconds that it is there
    /// when it is asked, whatever the library does.
    std::vector<protocol::Fault> ask(const protocol::Request& request, const OnPart& onPart = {});

    /// Sends a request whose parts come until `stop` says so, and unsubscribes then. Throws as ask() does.
    void follow(const protocol::Request& request, const OnPart& onPart, const std::function<bool()>& stop);

    /// Sends a request and returns its id at once. `onPart` is called by process(), ask() and the like for each part;
    /// after the one with `done` it is forgotten. Throws ConnectionError when the host process is gone.
    protocol::Id send(const protocol::Request& request, OnPart onPart);

    /// Drops the handler of a request: what still comes for it is ignored.
    void forget(protocol::Id id);

    /// Reads what has come without waiting and hands the parts to their handlers; sends what is still unsent. Throws
    /// ConnectionError when the host process is gone, after the parts that it sent before have been handed out.
    void process();

    /// Waits for at most `milliseconds` until something has come, then does what process() does. Returns whether
    /// anything came.
    bool wait(int milliseconds);

    [[nodiscard]] int descriptor() const {
        return descriptor_;
    }
    /// Tells whether requests wait for the socket to take them.
    [[nodiscard]] bool wantsToWrite() const {
        return !unsent_.empty();
    }

    /// Waits for at most `milliseconds` for a line outside any answer, such as the report of a board that starts.
    /// Returns false on silence. Throws ConnectionError when the other side is gone.
    [[nodiscard]] bool line(std::string& text, int milliseconds);

    /// Waits for at most `milliseconds` for the other side to end the connection. Returns whether it has.
    [[nodiscard]] bool awaitEnd(int milliseconds);

    /// Called some ten times a second while ask() waits.
    std::function<void()> idle;

  private:
    void greet();
    void write(const std::string& text);
    void flush();
    [[nodiscard]] bool receive();
    [[nodiscard]] bool nextLine(std::string& text);
    void handOut(const std::string& text);
    void awaitSign(bool& probed, int& silent);

    int descriptor_;
    std::string name_;
    bool greeted_ = false;
    bool ended_ = false;
    protocol::Id lastId_ = 0;
    std::map<protocol::Id, std::shared_ptr<OnPart>> handlers_;
    std::string received_;
    std::size_t taken_ = 0;  // bytes of received_ that have been handed out
    std::string unsent_;
};

}  // namespace quorvel::hostd
