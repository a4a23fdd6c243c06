#pragma once

#include <string>
#include <string_view>

#include "agent/mtp/Mtp.h"
#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent {

/// The version of USP that the agent speaks first.
constexpr const char* kOwnVersion = "1.4";

/// Returns whether a peer may name this version: "1." and a number.
[[nodiscard]] bool isVersion(std::string_view version);

/// Returns a Record around an encoded Message.
[[nodiscard]] usp_record::Record wrap(const std::string& version, const std::string& from, const std::string& to,
                                      std::string message);

/// Returns the Connect Record that is first on a channel.
[[nodiscard]] usp_record::Record connectRecord(const std::string& version, const std::string& from,
                                               const std::string& to, const Channel& channel);

/// Returns a Disconnect Record.
[[nodiscard]] usp_record::Record disconnectRecord(const std::string& version, const std::string& from,
                                                  const std::string& to, std::uint32_t code, const std::string& reason);

/// Returns the msg_type that goes with a request.
[[nodiscard]] usp::Header::MsgType requestType(const usp::Request& request);

/// Says which Error answers a Request that cannot be handled, or nothing.
struct RequestFault {
    std::uint32_t code = 0;
    std::string text;
};
[[nodiscard]] RequestFault checkMessage(const usp::Msg& message);

}  // namespace quorvel::agent
