#include "tests/agent/mtp/ScriptedBroker.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace quorvel::agent_test {
namespace {

enum Packet : unsigned {
    kConnect = 1,
    kPublish = 3,
    kPubAck = 4,
    kSubscribe = 8,
    kUnsubscribe = 10,
    kPingReq = 12,
    kDisconnect = 14,
};

constexpr unsigned kRefusedSubscription = 0x87;

}  // namespace

ScriptedBroker::ScriptedBroker(agent::EventLoop& loop) : loop_(loop) {
    up();
}

ScriptedBroker::~ScriptedBroker() {
    down();
}

void ScriptedBroker::up() {
    listening_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int one = 1;
    (void)setsockopt(listening_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port_);
    if (bind(listening_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(listening_, 16) != 0) {
        throw std::runtime_error("the scripted broker cannot listen");
    }
    socklen_t length = sizeof address;
    (void)getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    loop_.watch(listening_, POLLIN, [this](short) { accept(); });
}

void ScriptedBroker::down() {
    breakConnections();
    if (listening_ < 0) return;
    loop_.forget(listening_);
    (void)close(std::exchange(listening_, -1));
}

void ScriptedBroker::breakConnections() {
    while (!clients_.empty())
        drop(clients_.begin()->first);
}

void ScriptedBroker::drop(int descriptor) {
    loop_.forget(descriptor);
    clients_.erase(descriptor);
    (void)close(descriptor);
}

void ScriptedBroker::accept() {
    const int descriptor = ::accept(listening_, nullptr, nullptr);
    if (descriptor < 0) return;
    clients_[descriptor];
    loop_.watch(descriptor, POLLIN, [this, descriptor](short events) {
        if ((events & POLLOUT) != 0) flush(descriptor);
        if ((events & (POLLIN | POLLERR | POLLHUP)) != 0) read(descriptor);
    });
}

void ScriptedBroker::read(int descriptor) {
    std::array<char, 65536> piece{};
    const ssize_t count = recv(descriptor, piece.data(), piece.size(), 0);
    if (count <= 0) {
        drop(descriptor);
        return;
    }
    clients_[descriptor].incoming.append(piece.data(), static_cast<std::size_t>(count));
    while (clients_.contains(descriptor)) {
        std::string& incoming = clients_[descriptor].incoming;
        MqttReader reader(incoming);
        std::string body;
        unsigned first = 0;
        try {
            first = reader.byte();
            body = reader.take(reader.length());
        } catch (const std::runtime_error&) {
            return;  // the packet is not complete yet
        }
        incoming = std::string(reader.rest());
        handle(descriptor, first, body);
    }
}

void ScriptedBroker::handle(int descriptor, unsigned first, std::string_view body) {
    switch (first >> 4U) {
        case kConnect:
            answerConnect(descriptor, body);
            return;
        case kPublish:
            takePublish(descriptor, first, body);
            return;
        case kSubscribe:
            answerSubscribe(descriptor, body);
            return;
        case kUnsubscribe:
            answerUnsubscribe(descriptor, body);
            return;
        case kPingReq:
            ++pings;
            if (!script.isMute) send(descriptor, MqttWriter().packet(0xD0));
            return;
        case kDisconnect:
            ++disconnects;
            drop(descriptor);
            return;
        default:
            return;
    }
}

void ScriptedBroker::answerConnect(int descriptor, std::string_view body) {
    MqttReader reader(body);
    Connect connect;
    (void)reader.text();  // "MQTT"
    connect.level = reader.byte();
    const unsigned flags = reader.byte();
    connect.cleanStart = (flags & 2U) != 0;
    connect.keepAlive = reader.word();
    if (connect.level == 5) connect.properties = reader.properties();
    connect.clientId = reader.text();
    if ((flags & 0x80U) != 0) connect.userName = reader.text();
    if ((flags & 0x40U) != 0) connect.password = reader.text();
    clients_[descriptor].level = connect.level;
    connects.push_back(connect);
    if (script.isMute) return;
    MqttWriter answer;
    answer.byte(0).byte(script.connectCode);
    if (connect.level == 5) {
        Properties properties;
        if (!script.responseInformation.empty()) properties.texts[kResponseInformation] = script.responseInformation;
        if (connect.clientId.empty() && !script.assignedClientId.empty())
            properties.texts[kAssignedClientId] = script.assignedClientId;
        if (script.keepAlive != 0) properties.numbers[kServerKeepAlive] = script.keepAlive;
        for (const std::string& topic : script.subscribeTopics)
            properties.user.emplace_back("subscribe-topic", topic);
        answer.properties(properties);
    }
    send(descriptor, answer.packet(0x20));
}

void ScriptedBroker::answerSubscribe(int descriptor, std::string_view body) {
    if (script.isMute) return;
    const bool version5 = clients_[descriptor].level == 5;
    MqttReader reader(body);
    MqttWriter answer;
    answer.word(reader.word());
    if (version5) {
        (void)reader.properties();
        answer.properties({});
    }
    while (!reader.atEnd()) {
        const std::string topic = reader.text();
        const unsigned qos = reader.byte() & 3U;
        subscribed.push_back(topic);
        const bool refused = script.refusesAll || script.refused.contains(topic);
        answer.byte(refused ? (version5 ? kRefusedSubscription : 0x80U) : qos);
    }
    send(descriptor, answer.packet(0x90));
}

void ScriptedBroker::answerUnsubscribe(int descriptor, std::string_view body) {
    const bool version5 = clients_[descriptor].level == 5;
    MqttReader reader(body);
    MqttWriter answer;
    answer.word(reader.word());
    if (version5) {
        (void)reader.properties();
        answer.properties({});
    }
    while (!reader.atEnd()) {
        unsubscribed.push_back(reader.text());
        if (version5) answer.byte(0);
    }
    send(descriptor, answer.packet(0xB0));
}

void ScriptedBroker::takePublish(int descriptor, unsigned first, std::string_view body) {
    MqttReader reader(body);
    Publish publish;
    publish.qos = first >> 1U & 3U;
    publish.topic = reader.text();
    const unsigned number = publish.qos > 0 ? reader.word() : 0;
    if (clients_[descriptor].level == 5) publish.properties = reader.properties();
    publish.payload = std::string(reader.rest());
    published.push_back(publish);
    if (publish.qos == 1) send(descriptor, MqttWriter().word(number).packet(kPubAck << 4U));
}

void ScriptedBroker::publish(const std::string& topic, std::string_view payload, const Properties& properties) {
    for (const auto& [descriptor, client] : clients_) {
        MqttWriter packet;
        packet.text(topic);
        if (client.level == 5) packet.properties(properties);
        send(descriptor, packet.raw(payload).packet(kPublish << 4U));
    }
}

void ScriptedBroker::send(int descriptor, const std::string& packet) {
    clients_[descriptor].outgoing += packet;
    flush(descriptor);
}

void ScriptedBroker::flush(int descriptor) {
    std::string& outgoing = clients_[descriptor].outgoing;
    while (!outgoing.empty()) {
        const ssize_t count = ::send(descriptor, outgoing.data(), outgoing.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count <= 0) break;
        outgoing.erase(0, static_cast<std::size_t>(count));
    }
    loop_.change(descriptor, static_cast<short>(outgoing.empty() ? POLLIN : POLLIN | POLLOUT));
}

}  // namespace quorvel::agent_test
