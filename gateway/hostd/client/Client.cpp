#include "gateway/hostd/client/Client.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quorvel::hostd {
namespace {

using protocol::Fault;
using protocol::Id;
using protocol::Part;
using protocol::Request;

// A host process that does not answer a probe within both together is stopped or lost: two seconds all in all.
constexpr int kSilence = 500;
constexpr int kPatience = 1400;
constexpr int kGlance = 100;
constexpr const char* kNoAnswer =
    "the host process (quorvel-wifi-host) does not answer: it is stopped or hangs; continue or end it, then start the "
    "board again";
constexpr const char* kGone = "the host process is gone; start the board again";
constexpr const char* kEnded =
    "the host process ended unexpectedly; run again with --log-level 0 to see its last words";

}  // namespace

Client::Client(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}

Client::~Client() {
    (void)close(descriptor_);  // nothing is buffered
}

void Client::greet() {
    if (greeted_) return;
    greeted_ = true;
    protocol::Hello hello;
    hello.client = name_;
    (void)send(hello, [](const Part& part) {
        // The refusal of another version is the last that the host process says.
        if (!part.faults.empty()) throw ConnectionError(part.faults.front().reason);
    });
}

void Client::write(const std::string& text) {
    unsent_ += text;
    flush();
}

void Client::flush() {
    std::size_t sent = 0;
    while (sent < unsent_.size()) {
        const ssize_t count =
            ::send(descriptor_, unsent_.data() + sent, unsent_.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
        if (count <= 0) throw ConnectionEnded(kGone);
        sent += static_cast<std::size_t>(count);
    }
    unsent_.erase(0, sent);
}

// Reads what has come. Returns whether there was anything.
bool Client::receive() {
    bool any = false;
    for (;;) {
        char buffer[65536];
        const ssize_t count = recv(descriptor_, buffer, sizeof buffer, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return any;
        if (count <= 0) {
            ended_ = true;
            return any;
        }
        received_.append(buffer, static_cast<std::size_t>(count));
        any = true;
        if (static_cast<std::size_t>(count) < sizeof buffer) return any;
    }
}

bool Client::nextLine(std::string& text) {
    const std::size_t end = received_.find('\n', taken_);
    if (end == std::string::npos) {
        received_.erase(0, std::exchange(taken_, 0));
        return false;
    }
    text.assign(received_, taken_, end - taken_);
    taken_ = end + 1;
    return true;
}

void Client::handOut(const std::string& text) {
    const protocol::ParsedPart parsed = protocol::parsePart(text);
    if (!parsed.valid) return;
    const auto found = handlers_.find(parsed.id);
    if (found == handlers_.end()) return;
    // A handler may send and forget requests.
    const std::shared_ptr<OnPart> handler = found->second;
    if (parsed.part.done) handlers_.erase(found);
    if (*handler) (*handler)(parsed.part);
}

Id Client::send(const Request& request, OnPart onPart) {
    greet();
    const Id id = ++lastId_;
    handlers_[id] = std::make_shared<OnPart>(std::move(onPart));
    write(protocol::requestLine(id, request));
    return id;
}

void Client::forget(Id id) {
    handlers_.erase(id);
}

void Client::process() {
    if (wantsToWrite()) flush();
    (void)receive();  // what there is, is handed out below
    for (std::string text; nextLine(text);)
        handOut(text);
    if (ended_) throw ConnectionEnded(kEnded);
}

bool Client::wait(int milliseconds) {
    pollfd waiting{descriptor_, static_cast<short>(POLLIN | (wantsToWrite() ? POLLOUT : 0)), 0};
    if (poll(&waiting, 1, milliseconds) <= 0) return false;
    process();
    return (waiting.revents & POLLIN) != 0;
}

// Waits for a moment. Probes a host process that has been silent for long, and gives up one that stays silent.
void Client::awaitSign(bool& probed, int& silent) {
    if (wait(kGlance)) {
        probed = false;
        silent = 0;
        return;
    }
    silent += kGlance;
    if (silent < (probed ? kPatience : kSilence)) return;
    if (probed) throw ConnectionError(kNoAnswer);
    (void)send(protocol::Alive{}, {});
    probed = true;
    silent = 0;
}

std::vector<Fault> Client::ask(const Request& request, const OnPart& onPart) {
    std::vector<Fault> faults;
    bool done = false;
    const Id id = send(request, [&](const Part& part) {
        faults.insert(faults.end(), part.faults.begin(), part.faults.end());
        done = part.done;
        if (onPart) onPart(part);
    });
    // The handler refers to this call's own variables.
    const struct Forgotten {
        Client& client;
        Id id;
        ~Forgotten() {
            client.forget(id);
        }
    } forgotten{*this, id};
    bool probed = false;
    for (int silent = 0; !done;) {
        awaitSign(probed, silent);
        if (!done && idle) idle();
    }
    return faults;
}

void Client::follow(const Request& request, const OnPart& onPart, const std::function<bool()>& stop) {
    bool done = false;
    const Id id = send(request, [&](const Part& part) {
        done = part.done;
        onPart(part);
    });
    const struct Forgotten {
        Client& client;
        Id id;
        ~Forgotten() {
            client.forget(id);
        }
    } forgotten{*this, id};
    bool probed = false;
    for (int silent = 0; !stop();) {
        awaitSign(probed, silent);
        if (done) return;
    }
    forget(id);
    (void)ask(protocol::Unsubscribe{id});  // there is nothing to go wrong with it
}

bool Client::line(std::string& text, int milliseconds) {
    for (;;) {
        if (nextLine(text)) return true;
        if (ended_) throw ConnectionEnded(kEnded);
        pollfd waiting{descriptor_, POLLIN, 0};
        const int ready = poll(&waiting, 1, milliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) return false;
        (void)receive();  // the next look at the lines says what there is
    }
}

bool Client::awaitEnd(int milliseconds) {
    while (!ended_) {
        received_.clear();
        taken_ = 0;
        pollfd waiting{descriptor_, POLLIN, 0};
        if (poll(&waiting, 1, milliseconds) <= 0) return false;
        (void)receive();  // only the end matters
    }
    return true;
}

}  // namespace quorvel::hostd
