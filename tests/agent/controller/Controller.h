#pragma once

// A USP controller for tests, over MQTT 5 or WebSocket. Messages are written in protobuf's text form.

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent_test {

/// One Record as it arrived, with how it was carried.
struct Arrival {
    usp_record::Record record;
    std::optional<usp::Msg> message;
    std::string topic;
    std::string contentType;
    std::string responseTopic;
    int qos = 0;
};

/// How Records reach the agent and come back.
class Carrier {
  public:
    virtual ~Carrier() = default;
    virtual void send(const std::string& bytes) = 0;
    /// Waits for at most `milliseconds` and appends what has come.
    virtual void wait(int milliseconds, std::deque<Arrival>& arrivals) = 0;
};

class Controller {
  public:
    struct Names {
        std::string self = "proto::test-controller";
        std::string agent;
    };

    Controller(std::unique_ptr<Carrier> carrier, Names names);

    /// Sends a request ("get { param_paths: 'Device.' }") and returns the answer with its message ID. A failed
    /// expectation and an empty message when none comes within ten seconds.
    usp::Msg ask(const std::string& request);

    /// Sends a request without waiting. Returns its message ID.
    std::string post(const std::string& request);

    /// Sends a Message as it is.
    void post(const usp::Msg& message);
    void post(const usp_record::Record& record);
    void postBytes(const std::string& bytes);

    /// Waits for an arrival that `wanted` accepts, and takes it and everything before it away.
    [[nodiscard]] std::optional<Arrival> await(const std::function<bool(const Arrival&)>& wanted,
                                               int milliseconds = 10000);

    /// Waits for a Notify of the subscription with this ID. Answers it when `answers`.
    [[nodiscard]] std::optional<usp::Notify> awaitNotify(const std::string& subscription, int milliseconds = 10000,
                                                         bool answers = true);

    /// Asks for something small, so that whatever the agent sent before has come, and forgets it all. Returns how many
    /// Records came that were not the answer.
    std::size_t drain();

    /// Returns a Record around a Message.
    [[nodiscard]] usp_record::Record wrap(const usp::Msg& message) const;
    [[nodiscard]] usp::Msg message(const std::string& request);

    Names names;
    std::deque<Arrival> arrivals;

  private:
    std::unique_ptr<Carrier> carrier_;
    int lastId_ = 0;
};

/// Connects to a broker on loopback; records go to `agentTopic`, answers come to `ownTopic`. `version5` is false for
/// MQTT 3.1.1. Throws std::runtime_error.
[[nodiscard]] std::unique_ptr<Carrier> mqttCarrier(int port, const std::string& agentTopic, const std::string& ownTopic,
                                                   bool version5 = true);

}  // namespace quorvel::agent_test
