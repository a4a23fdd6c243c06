#include <nlohmann/json.hpp>
#include <string>

#include "agent/Agent.h"
#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"
#include "fuzz/Input.h"
#include "tests/agent/core/ScriptedGateway.h"

// Bytes from a transport: the first byte says whether they are a Record, or the Message inside of one that is in order.

namespace {

using namespace quorvel::agent;
using quorvel::fuzz::require;

class Silent final : public Transports {
  public:
    void configure(const MtpSettings& /*settings*/) override {}
    [[nodiscard]] bool send(std::string record, const Destination& /*destination*/) override {
        usp_record::Record sent;
        require(sent.ParseFromString(record), "what the agent sends is a Record");
        require(sent.from_id() == "os::001122-1", "the agent sends as itself");
        require(record.size() <= kMaxRecord, "the agent keeps to the largest Record");
        return true;
    }
    void closeChannel(std::uint64_t /*channel*/, const std::string& /*reason*/) override {}
    void resetRetries(const std::string& /*row*/) override {}
    void stop(const std::string& /*reason*/) override {}
};

std::string around(const std::string& message) {
    usp_record::Record record;
    record.set_version("1.4");
    record.set_from_id("proto::fuzz");
    record.set_to_id("os::001122-1");
    record.mutable_no_session_context()->set_payload(message);
    return record.SerializeAsString();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::Input input(data, size);
    const bool isMessage = (input.byte() & 1U) != 0;
    const std::string rest = input.rest();

    quorvel::agent_test::ScriptedGateway gateway;
    gateway.stations(1, {"AA:1"});
    Silent transports;
    Config config;
    config.endpointId = "os::001122-1";
    config.controllers.push_back({"proto::fuzz", true, {{}}});
    Agent agent(config, gateway, transports,
                {.random = [] { return 0.5; },
                 .trace =
                     [](const TraceEntry& entry) {
                         (void)toJson(entry);  // decoding must hold as well
                     },
                 .log = {}});
    agent.start();
    Channel channel;
    channel.id = 1;
    agent.onConnected(channel);
    (void)agent.onRecord(isMessage ? around(rest) : rest, {1, "topic", "reply"});
    gateway.time += std::chrono::minutes(1);
    agent.tick(gateway.time);
    return 0;
}
