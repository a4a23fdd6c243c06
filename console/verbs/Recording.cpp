// recording: what the recorder wrote.
#include <iostream>
#include <memory>
#include <sstream>

#include "console/verbs/RecordingFile.h"
#include "console/verbs/Verbs.h"
#include "recorder/desk/Diff.h"
#include "recorder/desk/Show.h"

namespace quorvel::console {
namespace {

using recorder::Recording;

constexpr double kNanosecondsOfSecond = 1e9;

struct RecordingWishes {
    std::string file;
    std::string other;
    recorder::Filter filter;
    std::optional<double> from;
    std::optional<double> until;
};

std::optional<uint64_t> nanoseconds(const std::optional<double>& seconds) {
    if (!seconds) return std::nullopt;
    return static_cast<uint64_t>(*seconds * kNanosecondsOfSecond);
}

int show(const Session& session, RecordingWishes& asked) {
    asked.filter.from = nanoseconds(asked.from);
    asked.filter.until = nanoseconds(asked.until);
    const Recording recording = readRecordingOrThrow(asked.file);
    const auto print = session.options.json    ? recorder::showJson
                       : session.options.plain ? recorder::showPlain
                                               : recorder::showText;
    print(std::cout, recording, asked.filter);
    return kDone;
}

int statistics(const Session& session, const RecordingWishes& asked) {
    const Recording recording = readRecordingOrThrow(asked.file);
    const auto print = session.options.json    ? recorder::showStatisticsJson
                       : session.options.plain ? recorder::showStatisticsPlain
                                               : recorder::showStatistics;
    print(std::cout, recording);
    return kDone;
}

int difference(const Session& session, const RecordingWishes& asked) {
    const Recording first = readRecordingOrThrow(asked.file);
    const Recording second = readRecordingOrThrow(asked.other);
    if (!session.options.json) {
        const size_t calls = recorder::showDifferences(std::cout, first, second);
        if (!session.options.plain)
            std::cout << (calls == 0 ? "no call differs" : std::to_string(calls) + " calls differ") << '\n';
        return calls == 0 ? kDone : kFailed;
    }
    std::stringstream text;
    const size_t calls = recorder::showDifferences(text, first, second);
    Json lines = Json::array();
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    printJson({{"differing", calls}, {"lines", lines}}, {});
    return calls == 0 ? kDone : kFailed;
}

CLI::App* addPart(CLI::App* verb, const char* name, const char* description, const char* examples) {
    CLI::App* const part = verb->add_subcommand(name, description);
    part->footer(examples);
    part->fallthrough();
    return part;
}

void addShow(VerbContext& context, CLI::App* verb, const std::shared_ptr<RecordingWishes>& asked) {
    CLI::App* const part =
        addPart(verb, "show", "The calls, and what the plug-in did in each",
                "recording show fault.rec --parameter Channel\nrecording show fault.rec --result 1 --from 12.5 --json");
    context.take(part, ArgumentKind::kFile, "FILE", asked->file, "The recording")->required();
    part->add_option("--parameter", asked->filter.parameter, "Only functions whose names contain this, in any case")
        ->type_name("TEXT");
    part->add_option("--result", asked->filter.result, "Only calls that returned this")->type_name("N");
    part->add_option("--thread", asked->filter.thread, "Only this thread, as the recording numbers them")
        ->type_name("N");
    part->add_option("--from", asked->from, "Only calls that began this many seconds in, or later")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
    part->add_option("--until", asked->until, "Only calls that began this many seconds in, or earlier")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
}

}  // namespace

Recording readRecordingOrThrow(const std::string& file) {
    auto read = recorder::readRecordingFile(file);
    if (const auto* const error = std::get_if<recorder::RecordingError>(&read))
        throw std::runtime_error(file + ", byte " + std::to_string(error->position) + ": " + error->reason);
    return std::get<Recording>(std::move(read));
}

void addRecordingVerbs(VerbContext& context) {
    Session& session = context.session;
    int* const result = &context.status;
    auto asked = std::make_shared<RecordingWishes>();
    CLI::App* const verb = context.add(
        kManyVerbs, "recording", "Look at recordings of the plug-in's calls (--record)",
        "recording show fault.rec --parameter Channel\nrecording stats fault.rec\nrecording diff before.rec after.rec",
        [] { return kDone; });
    verb->require_subcommand(1);
    addShow(context, verb, asked);
    CLI::App* const stats =
        addPart(verb, "stats", "How often and how long each function was called", "recording stats fault.rec");
    context.take(stats, ArgumentKind::kFile, "FILE", asked->file, "The recording")->required();
    CLI::App* const diff = addPart(verb, "diff", "How two recordings differ; exit status 1 when they do",
                                   "recording diff before.rec after.rec");
    context.take(diff, ArgumentKind::kFile, "A", asked->file, "The first recording")->required();
    context.take(diff, ArgumentKind::kFile, "B", asked->other, "The second recording")->required();
    // The outer verb's callback runs behind those of its subcommands and would overwrite the status.
    verb->callback([&session, asked, stats, diff, result] {
        if (stats->parsed()) {
            *result = statistics(session, *asked);
        } else if (diff->parsed()) {
            *result = difference(session, *asked);
        } else {
            *result = show(session, *asked);
        }
    });
}

}  // namespace quorvel::console
