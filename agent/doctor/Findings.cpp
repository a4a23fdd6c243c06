#include "agent/doctor/Findings.h"

#include <algorithm>

#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent {

Finding judge(const Circumstances& agent, const std::string& topic, std::string_view payload) {
    usp_record::Record record;
    if (!record.ParseFromArray(payload.data(), static_cast<int>(payload.size())) || record.from_id().empty()) return {};
    if (record.from_id() == agent.endpointId) return {};
    const std::string who = record.from_id();
    const bool forAgent = record.to_id() == agent.endpointId;
    const bool here = topic == agent.agentTopic || topic.starts_with(agent.agentTopic + "/");
    if (!forAgent && !here) return {};
    if (forAgent && !here) {
        const bool swapped = std::find(agent.controllerTopics.begin(), agent.controllerTopics.end(), topic) !=
                             agent.controllerTopics.end();
        return {false, swapped ? "swapped topics" : "wrong topic",
                who + " sends to this agent on " + topic + ", but the agent listens on " + agent.agentTopic +
                    ": have the controller publish there, or start the agent with --usp-topic " + topic};
    }
    if (!forAgent) {
        return {false, "wrong to_id",
                who + " sends to \"" + record.to_id() + "\" on the agent's topic, but the agent is \"" +
                    agent.endpointId + "\": change the controller's toId, or start the agent with --usp-endpoint " +
                    record.to_id()};
    }
    const bool known = std::find(agent.controllers.begin(), agent.controllers.end(), who) != agent.controllers.end();
    if (!known) {
        return {false, "unknown controller",
                who +
                    " is not an enabled controller of the agent, which drops what it sends: start the agent with "
                    "--usp-controller " +
                    who + ", or change the controller's fromId"};
    }
    return {true, "controller", who + " reaches the agent on " + topic};
}

}  // namespace quorvel::agent
