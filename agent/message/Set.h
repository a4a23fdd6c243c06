#pragma once

#include "agent/Context.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Answers Set. Everything is checked and staged before anything is applied. Throws Refusal when allow_partial is false
/// and an object cannot be updated; nothing has changed then.
Task<void> answerSet(Context& context, const usp::Set& request, usp::SetResp& answer);

}  // namespace quorvel::agent
