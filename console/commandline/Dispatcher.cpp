#include "console/commandline/Dispatcher.h"

#include <algorithm>
#include <iostream>

#include "console/Version.h"
#include "console/commandline/Help.h"
#include "console/commandline/NearestWord.h"
#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

void addOptions(CLI::App& app, Options& options) {
    app.add_option("--board", options.board, "Board: a shipped one's name, or a JSON file")->type_name("NAME|FILE");
    app.add_option("--state", options.state, "State folder, what survives a power cycle")->type_name("DIR");
    app.add_option("--plugin", options.plugin, "Plug-in library to load instead of the built one")->type_name("FILE");
    app.add_option("--configuration", options.configuration, "Host configuration (INI)")->type_name("FILE");
    app.add_option("--log-level", options.logLevel, "Show the plug-in's log: 0 errors to 3 tracing")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 3));
    app.add_option("--log-file", options.logFile, "Append the log to a file instead of standard error")
        ->type_name("FILE");
    CLI::Option* const json = app.add_flag("--json", options.json, "Print JSON");
    app.add_flag("--plain", options.plain, "Print one record per line, tab-separated")->excludes(json);
    app.add_flag("--no-color", options.noColor, "No colours (also: NO_COLOR)");
    app.add_flag("--no-sandbox", options.noSandbox, "Run the board without namespaces");
    app.add_flag("--real-time", options.realTime, "Wait as the device waits; no running ahead in time");
    app.add_flag("--reveal", options.reveal, "Show passphrases, keys and PINs");
    app.add_option("--programs", options.programs, "Folder with the board's bin/, lib/ and boards/")->type_name("DIR");
    app.add_option("--emulator", options.emulator, "Command that runs programs built for another processor")
        ->envname("QUORVEL_EMULATOR")
        ->type_name("COMMAND");
}

void build(CLI::App& app, Session& session, int& status) {
    app.require_subcommand(1);
    app.set_help_flag("-h,--help", "Show the verbs, or what a verb takes");
    app.set_version_flag("--version", std::string("quorvel-wifi ") + kVersion, "Tell the version");
    addOptions(app, session.options);
    VerbContext context{app, session, status};
    addValueVerbs(context);
    addExplainVerbs(context);
    addObjectVerbs(context);
    addChangeVerbs(context);
    addRadioVerbs(context);
    addStatisticsVerbs(context);
    addStationVerbs(context);
    addOverviewVerbs(context);
    addBoardVerbs(context);
    addLogVerb(context);
    addPlayVerbs(context);
    addSelftestVerb(context);
    addShellVerbs(context);
    addHelpVerb(context);
}

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
std::string complaint(const CLI::App& app, const CLI::ParseError& error) {
    const CommandShape program = shapeOf(app);
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
        const std::string meant = unknown.empty() ? "" : didYouMean(unknown.front(), verb->verbNames());
        if (verb != &program && unknown.empty()) return verb->name + " is followed by " + names;
        if (verb != &program) return verb->name + " knows no \"" + unknown.front() + "\", only " + names + meant;
        if (!unknown.empty()) return "there is no verb \"" + unknown.front() + "\"" + meant;
    }
    if (!unknown.empty()) return "\"" + unknown.front() + "\" is one argument too many";
    std::string text = error.what();
    // Everything that is converted is a number.
    static constexpr std::string_view kNoNumber = "Could not convert: ";
    if (const std::size_t sign = text.find(" = "); text.starts_with(kNoNumber) && sign != std::string::npos) {
        return text.substr(kNoNumber.size(), sign - kNoNumber.size()) + ": \"" + text.substr(sign + 3) +
               "\" is no number";
    }
    return text;
}

int explain(const CLI::App& app, const CLI::ParseError& error, const Session& session, bool json) {
    const std::vector<std::string> verbs = verbsOf(app);
    if (error.get_name() == "CallForHelp" || error.get_name() == "CallForAllHelp") {
        const CommandShape program = shapeOf(app);
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
        std::cerr << programHelp(shapeOf(app), session.errorStyle(), session.interactive);
        return kWrongUsage;
    }
    const std::string text = complaint(app, error);
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
    if (verb == "shell" || verb == "batch" || verb == "up" || verb == "down") {
        throw CLI::ValidationError(verb +
                                   " is not for use in a shell or a batch: they have their board from beginning to "
                                   "end");
    }
    const Options& now = session.options;
    const auto same = [&](auto member) { return now.*member == before.*member; };
    const bool texts = same(&Options::board) && same(&Options::state) && same(&Options::plugin) &&
                       same(&Options::configuration) && same(&Options::programs) && same(&Options::emulator) &&
                       same(&Options::logFile);
    if (texts && same(&Options::logLevel) && same(&Options::noSandbox) && same(&Options::realTime)) return;
    // What plays or checks has a board of its own, or none.
    if (verb == "play" || verb == "selftest") return;
    throw CLI::ValidationError(
        "the board is chosen when a shell or a batch begins; give --board, --state, --plugin, --configuration, "
        "--log-level, --log-file, --real-time, --no-sandbox, --programs and --emulator there");
}

}  // namespace

int dispatch(std::vector<std::string> words, Session& session) {
    const Options before = session.options;
    int status = kDone;
    CLI::App app("A simulated Wi-Fi gateway with the real plug-in on it, and its data model on the command line.",
                 "quorvel-wifi");
    build(app, session, status);
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
    } catch (const CLI::ParseError& error) {
        status = explain(app, error, session, json);
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

bool splitLine(const std::string& line, std::vector<std::string>& words) {
    std::string word;
    bool inWord = false;
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote != '\0') {
            if (c == quote) {
                quote = '\0';
            } else if (c == '\\' && quote == '"' && i + 1 < line.size()) {
                word += line[++i];
            } else {
                word += c;
            }
        } else if (c == '\'' || c == '"') {
            quote = c;
            inWord = true;
        } else if (c == '\\' && i + 1 < line.size()) {
            word += line[++i];
            inWord = true;
        } else if (c == ' ' || c == '\t' || c == '\r') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
        } else if (c == '#' && !inWord) {
            break;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord) words.push_back(word);
    return quote == '\0';
}

CommandShape commandShape() {
    Session session{Options{}};
    int status = kDone;
    CLI::App app;
    build(app, session, status);
    return shapeOf(app);
}

}  // namespace quorvel::console
