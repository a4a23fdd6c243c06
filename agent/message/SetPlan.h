#pragma once

#include <string>
#include <vector>

#include "agent/Context.h"
#include "agent/message/Writing.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// One object instance that a Set updates.
struct Update {
    Place place;
    std::vector<Assignment> assignments;
    Problem problem = {};  ///< of the instance as a whole

    [[nodiscard]] bool requiredFailed() const;
    [[nodiscard]] bool failed() const {
        return problem || requiredFailed();
    }
};

/// One update_obj of a Set with the instances that it leads to. It succeeds or fails as a whole.
struct UpdateGroup {
    std::string path;
    Problem problem = {};  ///< of the path
    bool searched = false;
    std::vector<Update> updates = {};

    [[nodiscard]] bool failed() const;
};

/// Resolves and checks a Set without changing anything: by the model, by staging in the library, and by a trial in the
/// agent's own objects.
Task<std::vector<UpdateGroup>> planSet(Context& context, const usp::Set& request);

/// Sets the agent's own parameters of a group in the open transaction; attaches what is wrong.
void setOwn(Context& context, UpdateGroup& group);

/// Returns whether a Set touches the library.
[[nodiscard]] bool touchesWifi(const usp::Set& request);

}  // namespace quorvel::agent
