// replay: a plug-in goes through a recording again, in a process of its own.
#include <memory>

#include "console/session/Program.h"
#include "console/verbs/RecordingFile.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

struct ReplayWishes {
    std::string file;
    std::string call;
    std::string most;
    bool debugger = false;
};

int replay(const Session& session, const ReplayWishes& asked) {
    const Options& options = session.options;
    if (asked.debugger && !options.emulator.empty())
        throw CLI::ValidationError("--gdb", "debugs programs of this machine; leave out --emulator");
    // The console's errors come in the console's forms.
    if (!readRecordingOrThrow(asked.file).replayable) {
        throw std::runtime_error(asked.file +
                                 " continues an earlier recording, whose end the plug-in remembers; replay the first "
                                 "file of the recording");
    }
    std::vector<std::string> command = programCommand(options, "quorvel-wifi-replay");
    command.insert(command.end(), {asked.file, "--plugin", pluginFile(options)});
    if (!asked.call.empty()) command.insert(command.end(), {"--until", asked.call});
    if (!asked.most.empty()) command.insert(command.end(), {"--most", asked.most});
    if (asked.debugger) command.emplace_back("--gdb");
    if (options.json) command.emplace_back("--json");
    if (options.plain) command.emplace_back("--plain");
    return runProgram(std::move(command));
}

}  // namespace

void addReplayVerb(VerbContext& context) {
    Session& session = context.session;
    auto asked = std::make_shared<ReplayWishes>();
    CLI::App* const verb =
        context.add(kManyVerbs, "replay", "Replay a recording on a plug-in; exit status 1 when it differs",
                    "replay fault.rec\nreplay fault.rec --plugin libquorvel_wifi.so\nreplay fault.rec --until 12 --gdb",
                    [&session, asked] { return replay(session, *asked); });
    context.take(verb, ArgumentKind::kFile, "FILE", asked->file, "The recording")->required();
    CLI::Option* const until = verb->add_option("--until", asked->call, "Stop before this call, numbered from 1")
                                   ->type_name("CALL")
                                   ->check(positive());
    verb->add_option("--most", asked->most, "Show at most this many differences")->type_name("N")->check(positive());
    verb->add_flag("--gdb", asked->debugger, "Stop there in the debugger gdb")->needs(until);
}

}  // namespace quorvel::console
