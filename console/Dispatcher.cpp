#include "console/Dispatcher.h"

#include <algorithm>
#include <iostream>

#include "console/commandline/CommandShape.h"
#include "console/commandline/Completion.h"
#include "console/commandline/Help.h"
#include "console/commandline/NearestWord.h"
#include "console/session/Faults.h"
#include "console/session/ProgramName.h"
#include "console/session/Version.h"
#include "console/terminal/Interrupt.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

void addOptions(CLI::App& app, Options& options, ArgumentKinds& kinds) {
    const auto add = [&](ArgumentKind kind, const char* name, auto& value, const char* description) {
        CLI::Option* const option = app.add_option(name, value, description);
        kinds[option] = kind;
        return option;
    };
    add(ArgumentKind::kBoard, "--board", options.board, "Board: a shipped one's name, or a JSON file")
        ->type_name("NAME|FILE");
    add(ArgumentKind::kFolder, "--state", options.state, "State folder, what survives a power cycle")->type_name("DIR");
    add(ArgumentKind::kFile, "--plugin", options.plugin, "Plug-in library to load instead of the built one")
        ->type_name("FILE");
    add(ArgumentKind::kFile, "--configuration", options.configuration, "Host configuration (INI)")->type_name("FILE");
    add(ArgumentKind::kLogLevel, "--log-level", options.logLevel, "Show the plug-in's log: 0 errors to 3 tracing")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 3));
    add(ArgumentKind::kFile, "--log-file", options.logFile, "Append the log to a file instead of standard error")
        ->type_name("FILE");
    add(ArgumentKind::kFile, "--record", options.record, "Record the plug-in's calls on a board that is started")
        ->type_name("FILE");
    CLI::Option* const json = app.add_flag("--json", options.json, "Print JSON");
    app.add_flag("--plain", options.plain, "Print one record per line, tab-separated")->excludes(json);
    app.add_flag("--no-color", options.noColor, "No colours (also: NO_COLOR)");
    add(ArgumentKind::kSandbox, "--sandbox", options.sandbox, "Keep a board apart by namespaces, or by its folder")
        ->type_name("KIND")
        ->check(CLI::IsMember({"namespaces", "folder"}));
    app.add_flag("--real-time", options.realTime, "Wait as the device waits; no running ahead in time");
    app.add_flag("--reveal", options.reveal, "Show passphrases, keys and PINs");
    add(ArgumentKind::kFolder, "--programs", options.programs, "Folder with the board's bin/, lib/ and boards/")
        ->type_name("DIR");
    add(ArgumentKind::kOther, "--emulator", options.emulator, "Command that runs programs built for another processor")
        ->envname("QUORVEL_EMULATOR")
        ->type_name("COMMAND");
}

// A command line: its verbs and options, and the kinds of their arguments.
class CommandLine {
  public:
    explicit CommandLine(Session& session)
        : app_("A simulated Wi-Fi gateway, and its data model on the command line.", "quorvel-wifi") {
        app_.require_subcommand(1);
        app_.set_help_flag("-h,--help", "Show the verbs, or what a verb takes");
        app_.set_version_flag("--version", std::string("quorvel-wifi ") + kVersion, "Show the version");
        addOptions(app_, session.options, kinds_);
        VerbContext context{app_, session, status_, kinds_, dispatch, [this] { return shape(); }};
        addValueVerbs(context);
        addExplainVerbs(context);
        addObjectVerbs(context);
        addChangeVerbs(context);
        addRadioVerbs(context);
        addStatisticsVerbs(context);
        addStationVerbs(context);
        addOverviewVerbs(context);
        addBoardVerbs(context);
        addUspVerbs(context);
        addWebVerb(context);
        addLogVerb(context);
        addPlayVerbs(context);
        addFleetVerbs(context);
        addSelftestVerb(context);
        addRecordingVerbs(context);
        addReplayVerb(context);
        addShellVerbs(context);
        addHelpVerb(context);
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    [[nodiscard]] CLI::App& app() {
        return app_;
    }
    [[nodiscard]] CommandShape shape() const {
        return shapeOf(app_, kinds_);
    }
    /// The exit status of the verb that has run.
    [[nodiscard]] int status() const {
        return status_;
    }

  private:
    CLI::App app_;
    ArgumentKinds kinds_;
    int status_ = kDone;
};

// The verb, and the verb's verb, that a command line has come to.
std::vector<std::string> verbsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* at = &app; !at->get_subcommands().empty();) {
        at = at->get_subcommands().front();
        names.push_back(at->get_name());
    }
    return names;
}

// Says what is wrong with a command line in the words of this program.
std::string complaint(const CommandShape& program, const CLI::App& app, const CLI::ParseError& error) {
    const CommandShape* verb = &program;
    std::vector<std::string> options = program.optionNames();
    for (const std::string& name : verbsOf(app)) {
        verb = verb->verb(name);
        const std::vector<std::string> own = verb->optionNames();
        options.insert(options.end(), own.begin(), own.end());
    }
    const std::vector<std::string> unknown = app.remaining(true);
    for (const std::string& word : unknown) {
        if (!word.starts_with('-')) continue;
        const std::string name = word.substr(0, word.find('='));
        return "there is no option \"" + name + "\"" + didYouMean(name, options);
    }
    if (!verb->verbs.empty()) {
        const std::string names = listed(verb->verbNames());
        const std::string nearest = unknown.empty() ? "" : didYouMean(unknown.front(), verb->verbNames());
        if (verb != &program && unknown.empty()) return verb->name + " is followed by " + names;
        if (verb != &program) return verb->name + " has no verb \"" + unknown.front() + "\"; it has " + names + nearest;
        if (!unknown.empty()) return "there is no verb \"" + unknown.front() + "\"" + nearest;
    }
    if (!unknown.empty()) return "\"" + unknown.front() + "\" is one argument too many";
    std::string text = error.what();
    // Everything that is converted is a number.
    static constexpr std::string_view kNoNumber = "Could not convert: ";
    if (const std::size_t sign = text.find(" = "); text.starts_with(kNoNumber) && sign != std::string::npos) {
        return text.substr(kNoNumber.size(), sign - kNoNumber.size()) + ": \"" + text.substr(sign + 3) +
               "\" is not a whole number";
    }
    return text;
}

int explain(const CommandShape& program, const CLI::App& app, const CLI::ParseError& error, const Session& session,
            bool json) {
    const std::vector<std::string> verbs = verbsOf(app);
    if (error.get_name() == "CallForHelp" || error.get_name() == "CallForAllHelp") {
        std::cout << (verbs.empty() ? programHelp(program, session.outStyle(), session.interactive)
                                    : verbHelp(program, verbs, session.outStyle(), session.interactive));
        return kDone;
    }
    if (error.get_exit_code() == 0) {
        std::cout << error.what() << '\n';  // the version
        return kDone;
    }
    if (verbs.empty() && app.remaining(true).empty() && error.get_name() == "RequiredError") {
        if (json) std::cout << Json{{"error", "a verb is missing"}}.dump(2) << '\n';
        std::cerr << programHelp(program, session.errorStyle(), session.interactive);
        return kWrongUsage;
    }
    const std::string text = complaint(program, app, error);
    std::cerr << "quorvel-wifi: " << text << '\n';
    const std::string verb = verbs.empty() || verbs.front() == "help" ? "" : " " + verbs.front();
    std::cerr << "Try: " << (session.interactive ? "help" : programName() + " help") << verb << '\n';
    if (json) std::cout << Json{{"error", text}}.dump(2) << '\n';
    return kWrongUsage;
}

// A shell and a batch have one board, which is chosen when they begin, and stay in the foreground.
void refuseWhatCannotBeNested(const CLI::App& app, const Session& session, const Options& before) {
    if (!session.nested) return;
    const std::string verb = app.get_subcommands().empty() ? "" : app.get_subcommands().front()->get_name();
    if (verb == "shell" || verb == "batch" || verb == "up" || verb == "down" || verb == "web") {
        throw CLI::ValidationError(verb +
                                   " is not for use in a shell or a batch: they have their board from beginning to "
                                   "end");
    }
    const Options& now = session.options;
    const auto same = [&](auto member) { return now.*member == before.*member; };
    const bool texts = same(&Options::board) && same(&Options::state) && same(&Options::plugin) &&
                       same(&Options::configuration) && same(&Options::programs) && same(&Options::emulator) &&
                       same(&Options::logFile) && same(&Options::record);
    if (texts && same(&Options::logLevel) && same(&Options::sandbox) && same(&Options::realTime)) return;
    // play and fleet have boards of their own; selftest and replay have none.
    if (verb == "play" || verb == "fleet" || verb == "selftest" || verb == "replay") return;
    throw CLI::ValidationError(
        "the board is chosen when a shell or a batch begins; give --board, --state, --plugin, --configuration, "
        "--log-level, --log-file, --record, --real-time, --sandbox, --programs and --emulator there");
}

}  // namespace

int dispatch(std::vector<std::string> words, Session& session) {
    const Options before = session.options;
    CommandLine line(session);
    CLI::App& app = line.app();
    int status = kDone;
    app.parse_complete_callback([&] { refuseWhatCannotBeNested(app, session, before); });
    // Also when the words make no sense.
    const bool json = session.options.json || std::find(words.begin(), words.end(), "--json") != words.end();
    const auto failed = [&](const char* text) {
        std::cout << std::flush;
        std::cerr << "quorvel-wifi: " << text << '\n';
        if (json) std::cout << Json{{"error", text}}.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        status = kFailed;
    };
    try {
        std::vector<std::string> reversed(words.rbegin(), words.rend());
        app.parse(reversed);
        status = line.status();
    } catch (const CLI::ParseError& error) {
        status = explain(line.shape(), app, error, session, json);
    } catch (const Interrupted&) {
        std::cout << std::flush;
        if (!session.interactive) Interrupt::endProgram();
        std::cerr << '\n';
        status = kInterrupted;
    } catch (const std::exception& error) {
        failed(error.what());
    }
    session.options = before;
    return status;
}

int printCompletions(const std::vector<std::string>& words, Session& session) {
    for (std::size_t i = 0; i + 2 < words.size(); ++i) {
        if (words[i] == "--board") session.options.board = words[i + 1];
        if (words[i] == "--state") session.options.state = words[i + 1];
        if (words[i] == "--programs") session.options.programs = words[i + 1];
    }
    for (const std::string& candidate : complete(session, CommandLine(session).shape(), words))
        std::cout << candidate << '\n';
    return kDone;
}

}  // namespace quorvel::console
