// quorvel-wifi-replay: lets a built plug-in go through a recording and reports where it does something else.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>
#include <ranges>

#include "recorder/library/Imports.h"
#include "recorder/library/RealLibrary.h"
#include "recorder/replay/Player.h"

namespace {

using namespace quorvel::recorder;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int complain(const std::string& sentence) {
    std::cerr << "quorvel-wifi-replay: " << sentence << '\n';
    return kFailed;
}

int reportJson(const PlayResult& result, size_t most) {
    nlohmann::ordered_json document{{"calls", result.calls},
                                    {"skipped", result.skipped},
                                    {"stopped", result.stopped},
                                    {"differing", result.differences.size()},
                                    {"differences", nlohmann::ordered_json::array()}};
    for (const Difference& difference : result.differences | std::views::take(most)) {
        document["differences"].push_back({{"position", difference.position},
                                           {"thread", difference.thread},
                                           {"call", difference.call},
                                           {"text", difference.text}});
    }
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return result.differences.empty() ? 0 : kFailed;
}

// A line for each difference: place, thread, call, text, by tabs.
int reportPlain(const PlayResult& result, size_t most) {
    for (const Difference& difference : result.differences | std::views::take(most)) {
        std::cout << difference.position << '\t' << difference.thread << '\t' << difference.call << '\t'
                  << difference.text << '\n';
    }
    return result.differences.empty() ? 0 : kFailed;
}

int report(const PlayResult& result, size_t most) {
    size_t shown = 0;
    for (const Difference& difference : result.differences) {
        if (shown++ == most) {
            std::cout << "... and " << result.differences.size() - most << " more\n";
            break;
        }
        std::cout << "at byte " << difference.position << ", thread " << difference.thread << ", " << difference.call
                  << ": " << difference.text << '\n';
    }
    std::cout << result.calls << " calls replayed, " << result.differences.size() << " differences";
    if (result.skipped != 0)
        std::cout << "; " << result.skipped << " calls take tables of the host's and were not replayed";
    std::cout << '\n';
    if (!result.stopped.empty()) std::cout << result.stopped << '\n';
    return result.differences.empty() ? 0 : kFailed;
}

// Starts a debugger on this program with the same recording; the program stops itself before the call.
[[noreturn]] void debug(char** arguments, int count) {
    std::vector<char*> command;
    std::vector<std::string> words{"gdb", "-q", "-ex", "run", "--args"};
    for (std::string& word : words)
        command.push_back(word.data());
    for (int i = 0; i < count; ++i) {
        if (std::string_view(arguments[i]) != "--gdb") command.push_back(arguments[i]);
    }
    std::string trap = "--trap";
    command.push_back(trap.data());
    command.push_back(nullptr);
    (void)execvp("gdb", command.data());
    std::exit(complain("cannot start gdb: " + std::string(std::strerror(errno)) + "; install the package gdb"));
}

}  // namespace

int main(int count, char** arguments) {
    CLI::App app("Lets a plug-in go through a recording, call by call, against a platform that answers from it.");
    std::string file;
    std::string plugin;
    PlayOptions options;
    size_t most = 50;
    bool gdb = false;
    bool json = false;
    bool plain = false;
    app.add_option("FILE", file, "the recording")->required();
    app.add_option("--plugin", plugin, "the plug-in to replay")->required();
    app.add_option("--until", options.until, "stop before this call, numbered from 1")->check(CLI::PositiveNumber);
    app.add_option("--most", most, "show at most this many differences");
    app.add_flag("--gdb", gdb, "with --until: stop in gdb before the call");
    app.add_flag("--json", json, "print one JSON document");
    app.add_flag("--plain", plain, "print one difference per line, tab-separated");
    app.add_flag("--trap", options.trap)->group("");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    }
    if (gdb && options.until == UINT64_MAX) {
        std::cerr << "quorvel-wifi-replay: --gdb needs --until CALL: it stops before that call\n";
        return kWrongUsage;
    }
    const auto read = readRecordingFile(file);
    if (const auto* const error = std::get_if<RecordingError>(&read))
        return complain(file + ", byte " + std::to_string(error->position) + ": " + error->reason);
    const auto& recording = std::get<Recording>(read);
    if (!recording.replayable)
        return complain(file +
                        " continues an earlier recording: what the library kept from before is not in it; "
                        "replay the first file of the recording");
    if (gdb) debug(arguments, count);
    if (const char* const failure = openRealLibrary(plugin.c_str()); failure != nullptr) return complain(failure);
    if (const char* const failure = replaceImports(imports, kImportCount); failure != nullptr) return complain(failure);
    // Threads of the plug-in may still wait: the player and its recording stay until the program is gone.
    auto* const playing = new Player(recording);
    const int code = (json ? reportJson : plain ? reportPlain : report)(playing->play(options), most);
    std::cout.flush();
    _exit(code);
}
