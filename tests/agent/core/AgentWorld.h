#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "agent/Agent.h"
#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"
#include "tests/agent/core/ScriptedGateway.h"

namespace quorvel::agent_test {

/// Transports that keep what is sent.
class ScriptedTransports final : public Transports {
  public:
    struct Sent {
        usp_record::Record record;
        Destination destination;
    };
    std::vector<Sent> sent;
    std::vector<MtpSettings> configured;
    std::vector<std::uint64_t> closed;
    std::vector<std::string> resets;
    std::string stopped;
    bool broken = false;  ///< send() fails

    void configure(const MtpSettings& settings) override {
        configured.push_back(settings);
    }
    [[nodiscard]] bool send(std::string record, const Destination& destination) override;
    void closeChannel(std::uint64_t channel, const std::string& /*reason*/) override {
        closed.push_back(channel);
    }
    void resetRetries(const std::string& row) override {
        resets.push_back(row);
    }
    void stop(const std::string& reason) override {
        stopped = reason;
    }
};

constexpr const char* kAgent = "os::001122-42";
constexpr const char* kController = "proto::ctl-1";
constexpr const char* kLocal = "Device.LocalAgent.";
constexpr const char* kSubscriptionTable = "Device.LocalAgent.Subscription.";

/// An agent with one controller over MQTT, on a library that a test scripts.
class AgentWorld : public testing::Test {
  protected:
    AgentWorld();
    ~AgentWorld() override;

    /// Starts the agent, or another one on what the last has saved.
    void start();
    void connect(std::uint64_t channel = 1);
    void restart();

    // Requests: the answer's Message, or an Error, or one without a body when nothing was sent.
    usp::Msg ask(usp::Msg message, const std::string& from = kController);
    usp::GetResp get(const std::vector<std::string>& paths, unsigned depth = 0);
    usp::Msg set(const std::string& object, const std::vector<std::pair<std::string, std::string>>& settings,
                 bool partial = false, bool required = true);
    usp::Msg add(const std::string& table, const std::vector<std::pair<std::string, std::string>>& settings,
                 bool partial = false, bool required = true);
    usp::Msg remove(const std::vector<std::string>& paths, bool partial = false);
    usp::Msg operate(const std::string& command, const std::map<std::string, std::string>& arguments = {},
                     const std::string& key = "", bool respond = true);
    usp::GetInstancesResp instances(const std::vector<std::string>& paths, bool first = false);
    usp::GetSupportedDMResp model(const std::vector<std::string>& paths, bool first = false, bool all = true);

    /// Adds a subscription and returns its row.
    std::string subscribe(const std::string& id, const std::string& type, const std::string& references,
                          std::vector<std::pair<std::string, std::string>> more = {});
    /// Reads one value; "?" when there is not exactly one.
    std::string value(const std::string& path);
    /// Takes the Notifies that were sent since the last call.
    std::vector<usp::Notify> notifies();
    /// The msg_id of the Notify that was sent last.
    std::string lastNotifyId;
    void respondToNotify(const std::string& subscription, const std::string& id, const std::string& from = kController);
    /// Lets board time pass.
    void pass(std::chrono::milliseconds time);
    void deliver(const usp_record::Record& record, const std::string& responseTopic = "reply");

    static usp::Msg request(usp::Header::MsgType type);
    [[nodiscard]] static usp_record::Record record(const usp::Msg& message, const std::string& from = kController,
                                                   const std::string& to = kAgent);

    ScriptedGateway gateway;
    ScriptedTransports transports;
    Config config;
    std::vector<TraceEntry> traced;
    std::vector<std::string> logged;
    double random = 0.5;
    std::unique_ptr<Agent> agent;

  private:
    std::uint64_t channel_ = 1;  // connected last
    std::size_t seen_ = 0;       // of what was sent
    unsigned lastId_ = 0;
    std::filesystem::path folder_;
};

}  // namespace quorvel::agent_test
