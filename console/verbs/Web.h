#pragma once

#include <memory>
#include <string>
#include <vector>

#include "console/session/Session.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quorvel::console {

struct VerbContext;

/// How the live page is served.
struct WebWishes {
    std::string listen = "127.0.0.1:8181";
    std::string tokenFile;
    std::vector<std::string> hosts;
    bool stationMetrics = false;
};

/// Adds the options of the live page to a verb. Returns them.
std::vector<CLI::Option*> addWebOptions(VerbContext& context, CLI::App& verb, WebWishes& wishes);

/// Serves the live page of the board that is up until an Interrupt. Returns the exit status.
[[nodiscard]] int servePage(const Session& session, const WebWishes& wishes);

}  // namespace quorvel::console
