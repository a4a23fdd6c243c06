#pragma once

#include "agent/Context.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Answers Add. Throws Refusal when allow_partial is false and a row cannot be created; nothing has changed then.
Task<void> answerAdd(Context& context, const Originator& originator, const usp::Add& request, usp::AddResp& answer);

/// Answers Delete. Throws Refusal when allow_partial is false and a path cannot be deleted; nothing has changed then.
Task<void> answerDelete(Context& context, const usp::Delete& request, usp::DeleteResp& answer);

}  // namespace quorvel::agent
