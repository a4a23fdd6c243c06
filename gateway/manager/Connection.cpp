#include "gateway/manager/Connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/UnixAddress.h"

namespace quorvel::manager {
namespace {

constexpr long long kBound = 1500;             // milliseconds for a request
constexpr long long kBoundAfterTimeout = 200;  // the same when the last one timed out
constexpr long long kGlance = 250;             // milliseconds of silence before the manager's process is looked at
constexpr long long kPollInterval = 4;         // milliseconds between looks for a manager that is being started
constexpr std::size_t kLongestAnswer = std::size_t{64} * 1024 * 1024;
constexpr const char* kDefaultSocket = "/var/run/wlmngr2.socket";

long long now() {
    timespec time = {};
    (void)clock_gettime(CLOCK_MONOTONIC, &time);  // this clock always exists
    return static_cast<long long>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

// Whether the process at the other end is stopped, and will answer nothing until somebody continues it.
bool peerIsStopped(int fd) {
    ucred peer = {};
    socklen_t length = sizeof peer;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 || peer.pid <= 0) return false;
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(peer.pid));
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    char text[512] = {};
    const ssize_t size = read(file, text, sizeof text - 1);
    (void)::close(file);  // it was only read
    const char* name = size > 0 ? std::strrchr(text, ')') : nullptr;
    return name != nullptr && std::strncmp(name, ") T", 3) == 0;
}

bool waitFor(int fd, short events, long long deadline) {
    for (;;) {
        const long long left = deadline - now();
        if (left <= 0) return false;
        pollfd entry = {fd, events, 0};
        const int ready = poll(&entry, 1, static_cast<int>(left < kGlance ? left : kGlance));
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) return false;
        if (ready == 0 && peerIsStopped(fd)) return false;
    }
}

}  // namespace

void Connection::close() {
    // The descriptor that a parent process opened is closed here too, without ending the parent's connection.
    if (socket_ >= 0) (void)::close(socket_);
    socket_ = -1;
}

void Connection::expectManager(bool expected) {
    managerExpected_ = expected;
}

bool Connection::connectOnce() {
    const char* path = std::getenv("QUORVEL_WLAN_SOCKET");
    if (path == nullptr || *path == '\0') path = kDefaultSocket;
    const common::UnixAddress address(path);
    if (!address.valid()) return false;
    socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket_ < 0) return false;
    owner_ = getpid();
    // A UNIX connect either succeeds or fails at once; with a full queue it says "try again", which is a failure here.
    if (connect(socket_, address.get(), common::UnixAddress::size()) == 0) return true;
    close();
    return false;
}

bool Connection::ensureConnected(long long deadline) {
    if (socket_ >= 0 && owner_ != getpid()) close();
    if (socket_ >= 0) {
        // Nothing may arrive between requests: whatever is readable is the end of the connection or rubbish.
        char byte = 0;
        const ssize_t got = recv(socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
        close();
    }
    while (!connectOnce()) {
        if (!managerExpected_ || now() >= deadline) {
            managerExpected_ = false;
            return false;
        }
        (void)poll(nullptr, 0, static_cast<int>(kPollInterval));  // only a pause
    }
    managerExpected_ = false;
    return true;
}

bool Connection::sendAll(std::size_t size, long long deadline) {
    std::size_t sent = 0;
    while (sent < size) {
        const ssize_t done = send(socket_, buffer_ + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (done > 0) {
            sent += static_cast<std::size_t>(done);
            continue;
        }
        if (done < 0 && errno == EINTR) continue;
        if (done < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return false;
        if (!waitFor(socket_, POLLOUT, deadline)) {
            timedOut_ = true;
            return false;
        }
    }
    return true;
}

bool Connection::receive(std::size_t from, std::size_t to, long long deadline) {
    while (from < to) {
        const ssize_t got = recv(socket_, buffer_ + from, to - from, MSG_DONTWAIT);
        if (got > 0) {
            from += static_cast<std::size_t>(got);
            continue;
        }
        if (got == 0) return false;
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
        if (!waitFor(socket_, POLLIN, deadline)) {
            timedOut_ = true;
            return false;
        }
    }
    return true;
}

bool Connection::exchange(const Request& request, Answer& answer, long long deadline) {
    const std::size_t size = encodeRequest(request, buffer_);
    if (size == 0) return false;
    timedOut_ = false;
    bool good = sendAll(size, deadline) && receive(0, 4, deadline);
    const std::size_t total = good ? frameSize({buffer_, 4}) : 0;
    good = total != 0 && receive(4, total, deadline) && decodeAnswer({buffer_, total}, answer) &&
           answer.operation == request.operation;
    // After a failure the connection is not at a frame's start any more.
    if (!good) close();
    return good;
}

bool Connection::call(const Request& request, Answer& answer) {
    const long long deadline = now() + (timedOut_ ? kBoundAfterTimeout : kBound);
    return ensureConnected(deadline) && exchange(request, answer, deadline);
}

bool Connection::callIfThere(const Request& request, Answer& answer) {
    const bool expected = managerExpected_;
    managerExpected_ = false;
    const bool done = call(request, answer);
    managerExpected_ = expected && !done;
    return done;
}

char* Connection::callLong(const Request& request, std::int32_t& result) {
    Answer answer;
    if (!call(request, answer)) return nullptr;
    result = answer.result;
    const std::size_t total = answer.value;
    if (total > kLongestAnswer) return nullptr;
    char* text = static_cast<char*>(std::malloc(total + 1));
    if (text == nullptr) return nullptr;
    std::size_t at = 0;
    for (;;) {
        const bool whole = answer.blockCount == 1 && answer.blocks[0].bytes.size() <= total - at &&
                           (at == total || !answer.blocks[0].bytes.empty());
        if (!whole) break;
        if (!answer.blocks[0].bytes.empty())
            std::memcpy(text + at, answer.blocks[0].bytes.data(), answer.blocks[0].bytes.size());
        at += answer.blocks[0].bytes.size();
        if (at == total) {
            text[total] = '\0';
            return text;
        }
        Request more;
        more.operation = Operation::kMore;
        more.words[0] = static_cast<std::uint32_t>(at);
        if (!call(more, answer) || answer.value != total) break;
    }
    std::free(text);
    close();
    return nullptr;
}

}  // namespace quorvel::manager
