#pragma once

#include "agent/Context.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Answers Get: one result per path, in order, each with its own error.
Task<void> answerGet(Context& context, const usp::Get& request, usp::GetResp& answer);

/// Reads what a path names; the problem is that of the path. 7016 for a row that is missing, 7026 for a path outside of
/// the supported model.
struct PathReadings {
    Problem problem;
    std::vector<Reading> values;
};
Task<PathReadings> readPath(Context& context, std::string path, unsigned levels);

}  // namespace quorvel::agent
