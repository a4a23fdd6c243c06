#include "tests/web/Wire.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <future>
#include <stdexcept>

namespace quorvel::web_test {
namespace {

constexpr std::chrono::milliseconds kPatience{5000};

}  // namespace

RunningServer::RunningServer(web::Limits limits, std::string token) : server_({"127.0.0.1", 0}, limits) {
    site_ = std::make_unique<web::Site>(
        web::Guard(server_.address(), {"metrics.example"}, std::move(token)), web::PageFiles(),
        web::Site::Sources{[] { return std::string("{}"); }, [](const web::Picture&) { return std::string("m 1\n"); },
                           "{}"});
    server_.show(composer_.picture());
    server_.serve(*site_);
    thread_ = std::thread([this] { server_.run(); });
}

RunningServer::~RunningServer() {
    server_.post([this] { server_.stop(); });
    thread_.join();
}

void RunningServer::take(const web::Look& look) {
    std::promise<void> done;
    server_.post([&] {
        server_.show(composer_.take(look));
        done.set_value();
    });
    done.get_future().wait();
}

web::ServerCounts RunningServer::counts() {
    std::promise<web::ServerCounts> counts;
    server_.post([&] { counts.set_value(server_.counts()); });
    return counts.get_future().get();
}

RawClient::RawClient(std::uint16_t port, int receiveBuffer) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    if (receiveBuffer > 0) (void)setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect to the server under test");
}

RawClient::~RawClient() {
    (void)close(socket_);  // nothing is buffered
}

bool RawClient::send(const std::string& bytes) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool RawClient::hearsWithin(std::chrono::milliseconds time) const {
    pollfd waiting{socket_, POLLIN, 0};
    return poll(&waiting, 1, static_cast<int>(time.count())) > 0;
}

bool RawClient::readSome(std::chrono::milliseconds time) {
    if (over_ || !hearsWithin(time)) return false;
    char buffer[16384];
    const ssize_t count = recv(socket_, buffer, sizeof buffer, 0);
    over_ = count <= 0;
    if (!over_) pending_.append(buffer, static_cast<std::size_t>(count));
    return !over_;
}

std::string RawClient::readUntil(const std::string& text) {
    std::size_t end = pending_.find(text);
    while (end == std::string::npos && readSome(kPatience))
        end = pending_.find(text);
    const std::string result = pending_.substr(0, end == std::string::npos ? end : end + text.size());
    pending_.erase(0, result.size());
    return result;
}

bool RawClient::ended() {
    while (readSome(kPatience)) {
    }
    return over_;
}

std::string RawClient::readAnswer() {
    std::string answer = readUntil("\r\n\r\n");
    const std::size_t at = answer.find("Content-Length: ");
    const std::size_t length = at == std::string::npos ? 0 : std::strtoul(answer.c_str() + at + 16, nullptr, 10);
    while (pending_.size() < length && readSome(kPatience)) {
    }
    answer += pending_.substr(0, length);
    pending_.erase(0, length);
    return answer;
}

std::string get(const std::string& target, const std::string& host, const std::string& headers) {
    return "GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" + headers + "\r\n";
}

}  // namespace quorvel::web_test
