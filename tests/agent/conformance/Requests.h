#pragma once

// Requests in protobuf's text form, and short ways into their answers.

#include <map>
#include <string>
#include <vector>

#include "agent/proto/usp.pb.h"

namespace quorvel::agent_test {

struct Param {
    std::string name;
    std::string value;
    bool required = true;
};

/// One object of an Add or a Set.
struct Change {
    std::string path;
    std::vector<Param> params;
};

[[nodiscard]] std::string add(bool allowPartial, const std::vector<Change>& changes);
[[nodiscard]] std::string set(bool allowPartial, const std::vector<Change>& changes);
[[nodiscard]] std::string del(bool allowPartial, const std::vector<std::string>& paths);
[[nodiscard]] std::string get(const std::vector<std::string>& paths, unsigned maxDepth = 0);
[[nodiscard]] std::string instances(const std::vector<std::string>& paths, bool firstLevelOnly = false);
/// All four return_ flags are `everything`.
[[nodiscard]] std::string supported(const std::vector<std::string>& paths, bool firstLevelOnly = false,
                                    bool everything = true);
[[nodiscard]] std::string operate(const std::string& command, const std::string& key, bool sendResp = true,
                                  const std::vector<Param>& arguments = {});

/// A subscription to be added, with the usual parameters.
[[nodiscard]] Change subscription(const std::string& id, const std::string& type, const std::string& references,
                                  const std::vector<Param>& more = {});

/// All values of a Get answer by full path.
[[nodiscard]] std::map<std::string, std::string> valuesOf(const usp::Msg& answer);

/// Returns the row that the first created object of an Add answer has, or the empty text.
[[nodiscard]] std::string createdRow(const usp::Msg& answer, int index = 0);

/// Returns the instance paths of the first result of a GetInstances answer.
[[nodiscard]] std::vector<std::string> instancesOf(const usp::Msg& answer, int index = 0);

}  // namespace quorvel::agent_test
