#pragma once

#include "agent/model/Schema.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Answers GetSupportedDM from the schema.
void answerGetSupportedDM(const Schema& schema, const usp::GetSupportedDM& request, usp::GetSupportedDMResp& answer);

}  // namespace quorvel::agent
