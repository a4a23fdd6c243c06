#include "tests/agent/mtp/RawWebSocket.h"

#include <netinet/in.h>
#include <openssl/evp.h>
#include <openssl/sha.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>

namespace quorvel::agent_test {
namespace {

constexpr std::string_view kMagic = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
constexpr std::string_view kHeadEnd = "\r\n\r\n";

std::string acceptValue(const std::string& key) {
    const std::string text = key + std::string(kMagic);
    std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
    (void)SHA1(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
    std::array<unsigned char, 64> encoded{};
    const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(digest.size()));
    return {reinterpret_cast<const char*>(encoded.data()), static_cast<std::size_t>(length)};
}

}  // namespace

int RawWebSocket::connectTo(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("cannot connect to port " + std::to_string(port));
    }
    return descriptor;
}

RawWebSocket::RawWebSocket(agent::EventLoop& loop, int descriptor, bool masks)
    : loop_(loop), descriptor_(descriptor), masks_(masks) {
    loop_.watch(descriptor_, POLLIN, [this](short) { read(); });
}

RawWebSocket::~RawWebSocket() {
    loop_.forget(descriptor_);
    (void)close(descriptor_);
}

void RawWebSocket::shakeHands(const std::string& path, const std::string& headers) {
    const std::string text = "GET " + path +
                             " HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                             "Sec-WebSocket-Key: AQIDBAUGBwgJCgsMDQ4PEA==\r\nSec-WebSocket-Version: 13\r\n" +
                             headers + "\r\n";
    (void)::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
}

void RawWebSocket::acceptHandshake(const std::string& subprotocol) {
    static constexpr std::string_view kKey = "Sec-WebSocket-Key: ";
    const std::size_t start = head_.find(kKey) + kKey.size();
    const std::string key = head_.substr(start, head_.find("\r\n", start) - start);
    std::string text =
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Accept: " +
        acceptValue(key) + "\r\n";
    if (!subprotocol.empty()) text += "Sec-WebSocket-Protocol: " + subprotocol + "\r\n";
    text += "\r\n";
    (void)::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
}

void RawWebSocket::send(unsigned opcode, std::string_view payload, bool isFinal) {
    std::string frame;
    const auto byte = [&frame](std::uint64_t value) { frame += static_cast<char>(value & 0xFFU); };
    byte((isFinal ? 0x80U : 0U) | opcode);
    const unsigned mask = masks_ ? 0x80U : 0U;
    if (payload.size() < 126) {
        byte(mask | payload.size());
    } else if (payload.size() < 65536) {
        byte(mask | 126U);
        byte(payload.size() >> 8U);
        byte(payload.size());
    } else {
        byte(mask | 127U);
        for (int shift = 56; shift >= 0; shift -= 8)
            byte(payload.size() >> static_cast<unsigned>(shift));
    }
    if (masks_) frame.append(4, '\0');  // a key of zeros changes nothing
    frame += payload;
    std::size_t sent = 0;
    while (sent < frame.size()) {
        const ssize_t count =
            ::send(descriptor_, frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) sent += static_cast<std::size_t>(count);
        if (count < 0 && errno != EAGAIN) return;  // the peer is gone; the test sees that
        // Both ends live in this thread: the other one must get to read.
        if (count < 0) (void)loop_.once(std::chrono::milliseconds(10));
    }
}

void RawWebSocket::stopReading() {
    loop_.forget(descriptor_);
}

void RawWebSocket::read() {
    std::array<char, 65536> piece{};
    const ssize_t count = recv(descriptor_, piece.data(), piece.size(), 0);
    if (count <= 0) {
        closed_ = true;
        loop_.forget(descriptor_);
        return;
    }
    incoming_.append(piece.data(), static_cast<std::size_t>(count));
    if (head_.empty()) {
        const std::size_t end = incoming_.find(kHeadEnd);
        if (end == std::string::npos) return;
        head_ = incoming_.substr(0, end + kHeadEnd.size());
        incoming_.erase(0, head_.size());
    }
    parse();
}

void RawWebSocket::parse() {
    const auto at = [this](std::size_t index) {
        return static_cast<std::uint64_t>(static_cast<unsigned char>(incoming_[index]));
    };
    for (;;) {
        if (incoming_.size() < 2) return;
        std::size_t header = 2;
        std::uint64_t length = at(1) & 0x7FU;
        const std::size_t more = length == 126 ? 2 : length == 127 ? 8 : 0;
        const bool masked = (at(1) & 0x80U) != 0;
        if (incoming_.size() < header + more + (masked ? 4 : 0)) return;
        if (more > 0) length = 0;
        for (std::size_t index = 0; index < more; ++index)
            length = length << 8U | at(header + index);
        header += more;
        std::string key(4, '\0');
        if (masked) key = incoming_.substr(header, 4);
        if (masked) header += 4;
        if (incoming_.size() < header + length) return;
        Frame frame;
        frame.opcode = static_cast<unsigned>(at(0) & 0x0FU);
        frame.isFinal = (at(0) & 0x80U) != 0;
        frame.payload = incoming_.substr(header, length);
        for (std::size_t index = 0; index < frame.payload.size(); ++index)
            frame.payload[index] = static_cast<char>(frame.payload[index] ^ key[index % 4]);
        incoming_.erase(0, header + length);
        frames.push_back(std::move(frame));
    }
}

}  // namespace quorvel::agent_test
