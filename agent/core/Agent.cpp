#include "agent/Agent.h"

#include <nlohmann/json.hpp>

#include "agent/core/AgentCore.h"

namespace quorvel::agent {

Agent::Agent(Config config, Gateway& gateway, Transports& transports, Surroundings surroundings)
    : core_(std::make_unique<AgentCore>(std::move(config), gateway, transports, std::move(surroundings))) {}

Agent::~Agent() = default;

void Agent::start() {
    core_->start();
}

void Agent::stop(const std::string& reason) {
    core_->stop(reason);
}

void Agent::onConnected(const Channel& channel) {
    core_->onConnected(channel);
}

void Agent::onLost(std::uint64_t channel, const std::string& reason) {
    core_->onLost(channel, reason);
}

bool Agent::onRecord(std::string_view bytes, const Source& source) {
    return core_->onRecord(bytes, source);
}

void Agent::onDropped(std::size_t size, const Source& source, const std::string& reason) {
    core_->onDropped(size, source, reason);
}

void Agent::onStatus(const std::string& object, const std::string& parameter, const std::string& value) {
    core_->onStatus(object, parameter, value);
}

void Agent::tick(BoardInstant now) {
    core_->tick(now);
}

std::optional<BoardInstant> Agent::nextDue() const {
    return core_->nextDue();
}

nlohmann::ordered_json Agent::status() const {
    return core_->status();
}

const std::string& Agent::endpointId() const {
    return core_->endpointId();
}

}  // namespace quorvel::agent
