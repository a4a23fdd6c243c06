#include "gateway/manager/EventSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "common/UnixListener.h"

namespace quorvel::manager {
namespace {

constexpr std::size_t kMostListeners = 32;
constexpr std::size_t kLongestBacklog = std::size_t{1024} * 1024;

}  // namespace

EventSocket::EventSocket(std::string path) : path_(std::move(path)) {}

EventSocket::~EventSocket() {
    for (const auto& entry : listeners_)
        (void)close(entry.first);
    if (!listener_) return;
    (void)unlink(path_.c_str());  // gone is as good
}

std::string EventSocket::open() {
    std::string problem;
    listener_ = common::listenOn(path_, problem);
    return problem;
}

void EventSocket::watch(std::vector<pollfd>& watched) const {
    watched.push_back({listener_.get(), POLLIN, 0});
    for (const auto& [descriptor, listener] : listeners_) {
        watched.push_back({descriptor, static_cast<short>(POLLIN | (listener.backlog.empty() ? 0 : POLLOUT)), 0});
    }
}

void EventSocket::serve(const std::vector<pollfd>& watched) {
    for (const pollfd& entry : watched) {
        if (entry.revents == 0) continue;
        if (entry.fd == listener_.get()) {
            for (;;) {
                const int descriptor = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
                if (descriptor < 0) break;
                if (listeners_.size() < kMostListeners)
                    listeners_[descriptor];
                else
                    (void)close(descriptor);
            }
            continue;
        }
        const auto found = listeners_.find(entry.fd);
        if (found == listeners_.end()) continue;
        if ((entry.revents & POLLOUT) != 0) flush(entry.fd, found->second);
        if ((entry.revents & (POLLIN | POLLHUP | POLLERR)) == 0) continue;
        char ignored[256];
        const ssize_t got = recv(entry.fd, ignored, sizeof ignored, 0);
        if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) found->second.dead = true;
    }
    forget();
}

void EventSocket::flush(int descriptor, Listener& listener) {
    while (!listener.backlog.empty()) {
        const ssize_t done = send(descriptor, listener.backlog.data(), listener.backlog.size(), MSG_NOSIGNAL);
        if (done > 0) {
            listener.backlog.erase(listener.backlog.begin(), listener.backlog.begin() + done);
            continue;
        }
        if (done < 0 && errno == EINTR) continue;
        if (done < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
        listener.dead = true;
        return;
    }
}

void EventSocket::publish(const StationMessage& message) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&message.bytes);
    for (auto& [descriptor, listener] : listeners_) {
        if (listener.backlog.size() + message.size > kLongestBacklog) {
            listener.dead = true;
            continue;
        }
        listener.backlog.insert(listener.backlog.end(), bytes, bytes + message.size);
        flush(descriptor, listener);
    }
    forget();
}

void EventSocket::forget() {
    std::erase_if(listeners_, [](const auto& entry) {
        if (entry.second.dead) (void)close(entry.first);
        return entry.second.dead;
    });
}

}  // namespace quorvel::manager
