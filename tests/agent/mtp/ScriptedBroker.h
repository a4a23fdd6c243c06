#pragma once

// An MQTT broker that does as a test says: what ordinary brokers cannot be made to do, and a record of what was asked.

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "agent/EventLoop.h"
#include "tests/agent/mtp/MqttBytes.h"

namespace quorvel::agent_test {

class ScriptedBroker {
  public:
    struct Script {
        std::string responseInformation;
        std::vector<std::string> subscribeTopics;
        std::string assignedClientId;
        unsigned keepAlive = 0;  ///< 0: leaves the client its own
        unsigned connectCode = 0;
        bool refusesAll = false;
        std::set<std::string> refused;  ///< topics whose subscription is refused
        bool isMute = false;            ///< accepts connections and answers nothing
    };
    struct Connect {
        unsigned level = 0;
        std::string clientId;
        std::string userName;
        std::string password;
        unsigned keepAlive = 0;
        bool cleanStart = false;
        Properties properties;
    };
    struct Publish {
        std::string topic;
        std::string payload;
        unsigned qos = 0;
        Properties properties;
    };

    explicit ScriptedBroker(agent::EventLoop& loop);
    ScriptedBroker(const ScriptedBroker&) = delete;
    ScriptedBroker& operator=(const ScriptedBroker&) = delete;
    ~ScriptedBroker();

    [[nodiscard]] std::uint16_t port() const {
        return port_;
    }
    /// Publishes to every client, whatever it has subscribed to.
    void publish(const std::string& topic, std::string_view payload, const Properties& properties = {});

    /// Breaks every connection.
    void breakConnections();

    /// Breaks every connection and listens no longer; up() listens at the same port again.
    void down();
    void up();

    Script script;
    std::vector<Connect> connects;
    std::vector<std::string> subscribed;
    std::vector<std::string> unsubscribed;
    std::vector<Publish> published;
    int pings = 0;
    int disconnects = 0;  ///< DISCONNECT packets

  private:
    struct Client {
        std::string incoming;
        std::string outgoing;
        unsigned level = 5;
    };

    void accept();
    void read(int descriptor);
    void handle(int descriptor, unsigned first, std::string_view body);
    void answerConnect(int descriptor, std::string_view body);
    void answerSubscribe(int descriptor, std::string_view body);
    void answerUnsubscribe(int descriptor, std::string_view body);
    void takePublish(int descriptor, unsigned first, std::string_view body);
    void send(int descriptor, const std::string& packet);
    void flush(int descriptor);
    void drop(int descriptor);

    agent::EventLoop& loop_;
    int listening_ = -1;
    std::uint16_t port_ = 0;
    std::map<int, Client> clients_;
};

}  // namespace quorvel::agent_test
