#include "Dispatcher.h"

#include <algorithm>
#include <iostream>

#include "Verbs.h"
#include "host/EditDistance.h"

namespace quorvel::console {
namespace {

// Half letters; see editDistance().
constexpr unsigned kNear = 6;

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
    app.add_flag("--json", options.json, "Print JSON");
    app.add_flag("--plain", options.plain, "Print one record per line, tab-separated");
    app.add_flag("--no-color", options.noColor, "No colours (also: NO_COLOR)");
    app.add_flag("--no-sandbox", options.noSandbox, "Run the board without namespaces");
    app.add_flag("--real-time", options.realTime, "Wait as the device waits instead of letting board time run ahead");
    app.add_flag("--reveal", options.reveal, "Show passphrases, keys and PINs");
    app.add_option("--programs", options.programs, "Folder with the board's bin/, lib/ and boards/")->type_name("DIR");
    app.add_option("--emulator", options.emulator, "Command that runs programs built for another processor")
        ->envname("QUORVEL_EMULATOR")
        ->type_name("COMMAND");
}

void addVerbs(VerbContext& context) {
    addValueVerbs(context);
    addObjectVerbs(context);
    addExplainVerbs(context);
    addChangeVerbs(context);
    addRadioVerbs(context);
    addStatisticsVerbs(context);
    addStationVerbs(context);
    addOverviewVerbs(context);
    addBoardVerbs(context);
    addPlayVerbs(context);
    addSelftestVerb(context);
    addShellVerbs(context);
}

std::string nearestVerb(const CLI::App& app, const std::string& word) {
    std::string nearest;
    unsigned best = kNear + 1;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        const unsigned cost = host::editDistance(word, verb->get_name());
        if (cost >= best) continue;
        best = cost;
        nearest = verb->get_name();
    }
    return nearest;
}

// Returns the verb of a command, or the word that stands in its place.
std::string verbOf(const CLI::App& app) {
    if (!app.get_subcommands().empty()) return app.get_subcommands().front()->get_name();
    const std::vector<std::string> unknown = app.remaining();
    const auto found =
        std::find_if(unknown.begin(), unknown.end(), [](const std::string& word) { return !word.starts_with('-'); });
    return found == unknown.end() ? "" : *found;
}

int explain(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        (void)app.exit(error);  // prints the help; the status is known
        return kDone;
    }
    const std::string verb = verbOf(app);
    const bool known = !app.get_subcommands().empty();
    if (!verb.empty() && !known) {
        std::cerr << "quorvel-wifi: there is no verb \"" << verb << "\"";
        const std::string nearest = nearestVerb(app, verb);
        if (!nearest.empty()) std::cerr << "; did you mean \"" << nearest << "\"?";
        std::cerr << "\n";
    } else {
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
    }
    std::cerr << "Try: quorvel-wifi " << (known ? verb + " " : "") << "--help\n";
    return kWrongUsage;
}

VerbShape shapeOf(const CLI::App& app) {
    VerbShape shape;
    shape.name = app.get_name();
    shape.description = app.get_description();
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            shape.positionals.push_back(option->get_name(true));
            continue;
        }
        for (const std::string& name : option->get_lnames())
            shape.options.push_back({"--" + name, option->get_type_size_max() > 0 ? option->get_type_name() : ""});
    }
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        shape.verbs.push_back(shapeOf(*verb));
    }
    return shape;
}

}  // namespace

int dispatch(std::vector<std::string> words, Session& session) {
    const Options before = session.options;
    int status = kDone;
    CLI::App app("A simulated Wi-Fi gateway with the real plug-in on it, and its data model on the command line.",
                 "quorvel-wifi");
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    addOptions(app, session.options);
    VerbContext context{app, session, status};
    addVerbs(context);
    try {
        std::vector<std::string> reversed(words.rbegin(), words.rend());
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        status = explain(app, error);
    } catch (const GatewayError& error) {
        std::cout << std::flush;
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        if (session.options.json) std::cout << Json{{"error", error.what()}}.dump(2) << '\n';
        status = kFailed;
    } catch (const std::exception& error) {
        std::cout << std::flush;
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        status = kFailed;
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

VerbShape commandShape() {
    Session session{Options{}};
    int status = kDone;
    CLI::App app;
    addOptions(app, session.options);
    VerbContext context{app, session, status};
    addVerbs(context);
    return shapeOf(app);
}

std::vector<std::string> verbNames() {
    Session session{Options{}};
    int status = kDone;
    CLI::App app;
    VerbContext context{app, session, status};
    addVerbs(context);
    std::vector<std::string> names;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(verb->get_name());
    }
    return names;
}

}  // namespace quorvel::console
