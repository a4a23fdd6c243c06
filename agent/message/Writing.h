#pragma once

#include <string>
#include <vector>

#include "agent/Context.h"
#include "agent/Problem.h"

namespace quorvel::agent {

/// A parameter of an object instance that shall have a value.
struct Assignment {
    std::string name;   ///< as the Message has it: "Enable", "MQTT.Topic"
    std::string value;  ///< in the form that USP writes
    bool required = false;
    std::string object;  ///< of the parameter itself: "Device.LocalAgent.MTP.1.MQTT."
    const Parameter* parameter = nullptr;
    Problem problem = {};
    Problem remark = {};  ///< the value is set, but
};

/// Says which row's parameter a name is, through single-instance children; parameter null when it is none.
void locate(const Place& row, Assignment& assignment);

/// Checks an assignment as far as the model tells: 7010, 7013, 7011, 7012. `fresh`: the row is being added. Values of
/// references may address by keys, and are replaced by what they name.
Task<void> checkAssignment(Context& context, Assignment& assignment, bool fresh);

/// Attaches problems of a row to the assignments that they are about; what is left belongs to the row.
[[nodiscard]] Problem attach(const std::vector<PathProblem>& problems, std::vector<Assignment>& assignments);

}  // namespace quorvel::agent
