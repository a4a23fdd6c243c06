#pragma once

// Findings about a controller that is not heard, from the Records that pass by.

#include <string>
#include <string_view>
#include <vector>

namespace quorvel::agent {

/// One thing that the doctor has looked at.
struct Finding {
    bool isGood = false;
    std::string subject;  ///< a few words
    std::string text;     ///< what is the case, and the remedy when it is bad
};

/// Whom the agent listens to, and where.
struct Circumstances {
    std::string endpointId;
    std::vector<std::string> controllers;  ///< Endpoint IDs of the enabled ones
    std::string agentTopic;
    std::vector<std::string> controllerTopics;
};

/// Judges one message on a broker. Returns nothing to say (an empty subject) when it is not a Record, or is the
/// agent's.
[[nodiscard]] Finding judge(const Circumstances& agent, const std::string& topic, std::string_view payload);

}  // namespace quorvel::agent
