// quorvel-wifi-recording: shows what is in recordings, and how they differ.
#include <CLI/CLI.hpp>
#include <iostream>

#include "recorder/desk/Diff.h"
#include "recorder/desk/Show.h"

namespace {

using namespace quorvel::recorder;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr double kNanosecondsOfSecond = 1e9;

// Reads a recording, or says what is wrong with it.
std::optional<Recording> read(const std::string& path) {
    auto found = readRecordingFile(path);
    if (const auto* const error = std::get_if<RecordingError>(&found)) {
        std::cerr << "quorvel-wifi-recording: " << path << ", byte " << error->position << ": " << error->reason
                  << '\n';
        return std::nullopt;
    }
    return std::get<Recording>(std::move(found));
}

}  // namespace

int main(int count, char** arguments) {
    CLI::App app("Shows recordings of the plug-in.");
    app.require_subcommand(1);
    std::string file;
    std::string other;
    bool json = false;
    Filter filter;
    double from = 0;
    double until = 0;

    CLI::App* const show =
        app.add_subcommand("show", "prints the calls of a recording with what the library did in each");
    show->add_option("FILE", file, "the recording")->required();
    show->add_option("--parameter", filter.parameter, "only functions whose names contain this, in any case");
    show->add_option("--result", filter.result, "only calls that returned this");
    show->add_option("--thread", filter.thread, "only this thread, as the recording numbers them");
    CLI::Option* const fromOption =
        show->add_option("--from", from, "only calls that began this many seconds in, or later");
    CLI::Option* const untilOption =
        show->add_option("--until", until, "only calls that began this many seconds in, or earlier");
    show->add_flag("--json", json, "print one JSON document");

    CLI::App* const stats = app.add_subcommand("stats", "counts and times the calls of a recording");
    stats->add_option("FILE", file, "the recording")->required();
    stats->add_flag("--json", json, "print one JSON document");

    CLI::App* const diff = app.add_subcommand("diff", "prints how two recordings differ; exit status 1 when they do");
    diff->add_option("A", file, "the first recording")->required();
    diff->add_option("B", other, "the second recording")->required();

    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    }
    if (*fromOption) filter.from = static_cast<uint64_t>(from * kNanosecondsOfSecond);
    if (*untilOption) filter.until = static_cast<uint64_t>(until * kNanosecondsOfSecond);

    const std::optional<Recording> recording = read(file);
    if (!recording) return kFailed;
    if (*show) {
        (json ? showJson : showText)(std::cout, *recording, filter);
        return 0;
    }
    if (*stats) {
        (json ? showStatisticsJson : showStatistics)(std::cout, *recording);
        return 0;
    }
    const std::optional<Recording> second = read(other);
    if (!second) return kFailed;
    const size_t differing = showDifferences(std::cout, *recording, *second);
    std::cout << (differing == 0 ? "no call differs" : std::to_string(differing) + " calls differ") << '\n';
    return differing == 0 ? 0 : kFailed;
}
