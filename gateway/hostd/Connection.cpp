#include "gateway/hostd/Connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace quorvel::hostd {
namespace {

constexpr std::size_t kMaxLine = 1U << 20U;

}  // namespace

Connection::~Connection() {
    (void)close(descriptor_);  // the client takes the end for what it is
}

// The reader notices.
void Connection::disconnect() {
    broken_ = true;
    pieces_.clear();
    unsent_ = unsentNews_ = sentOfFirst_ = 0;
    (void)shutdown(descriptor_, SHUT_RDWR);  // it may be disconnected already
}

// Returns how many bytes the socket has taken.
std::size_t Connection::sendSome(std::string_view text) {
    std::size_t sent = 0;
    while (sent < text.size() && !broken_) {
        const ssize_t count = send(descriptor_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
        if (count <= 0) {
            disconnect();
            break;
        }
        sent += static_cast<std::size_t>(count);
    }
    return sent;
}

void Connection::keep(std::string_view text, bool news) {
    pieces_.push_back({std::string(text), news});
    unsent_ += text.size();
    if (news) unsentNews_ += text.size();
    if (unsentNews_ > kMaxNews || unsent_ > kMaxUnsent) disconnect();
}

void Connection::answer(std::string_view lines) {
    {
        const std::lock_guard lock(mutex_);
        if (broken_) return;
        if (pieces_.empty()) lines.remove_prefix(sendSome(lines));
        if (lines.empty() || broken_) return;
        keep(lines, false);
    }
    onUnsent_();
}

void Connection::push(std::string_view line) {
    {
        const std::lock_guard lock(mutex_);
        if (broken_) return;
        if (pieces_.empty()) line.remove_prefix(sendSome(line));
        if (line.empty() || broken_) return;
        keep(line, true);
    }
    onUnsent_();
}

void Connection::sendKept() {
    while (!pieces_.empty()) {
        const Piece& first = pieces_.front();
        const std::size_t sent = sendSome(std::string_view(first.text).substr(sentOfFirst_));
        if (broken_) return;
        sentOfFirst_ += sent;
        unsent_ -= sent;
        if (first.news) unsentNews_ -= sent;
        if (sentOfFirst_ < first.text.size()) return;
        sentOfFirst_ = 0;
        pieces_.pop_front();
    }
}

void Connection::flush() {
    const std::lock_guard lock(mutex_);
    sendKept();
}

bool Connection::hasUnsent() const {
    const std::lock_guard lock(mutex_);
    return !pieces_.empty();
}

bool Connection::isCongested() const {
    const std::lock_guard lock(mutex_);
    return unsent_ > kCongested;
}

bool Connection::receive(std::vector<std::string>& lines) {
    char buffer[16384];
    const ssize_t count = recv(descriptor_, buffer, sizeof buffer, MSG_DONTWAIT);
    if (count < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    if (count <= 0) return false;
    received_.append(buffer, static_cast<std::size_t>(count));
    std::size_t taken = 0;
    for (std::size_t end = received_.find('\n'); end != std::string::npos; end = received_.find('\n', taken)) {
        lines.push_back(received_.substr(taken, end - taken));
        taken = end + 1;
    }
    received_.erase(0, taken);
    return received_.size() <= kMaxLine;
}

}  // namespace quorvel::hostd
