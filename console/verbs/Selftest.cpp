// selftest: the conformance check of a built plug-in, in a process of its own.
#include "console/session/Program.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

int selftest(const Session& session) {
    const Options& options = session.options;
    std::vector<std::string> command = programCommand(options, "quorvel-wifi-selftest");
    if (options.json) command.emplace_back("--json");
    if (options.plain) command.emplace_back("--plain");
    if (options.noColor) command.emplace_back("--no-color");
    command.push_back(pluginFile(options));
    return runProgram(std::move(command)) == 0 ? kDone : kFailed;
}

}  // namespace

void addSelftestVerb(VerbContext& context) {
    Session& session = context.session;
    (void)context.add(kManyVerbs, "selftest", "Check a built plug-in (--plugin) against its interface",
                      "selftest\nselftest --plugin libquorvel_wifi.so", [&session] { return selftest(session); });
}

}  // namespace quorvel::console
