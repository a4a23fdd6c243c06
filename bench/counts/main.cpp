// Counts the instructions of the plug-in's operations and of their floors under callgrind, which counts the same on
// every run. Prints one line an operation: name, instructions, floor, difference, each per call. With a file of budgets
// (name, limit of the difference) fails when one is exceeded. Exit status 77 when valgrind is missing.
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "bench/counts/Operation.h"

namespace {

constexpr int kSkipped = 77;
constexpr int kCannotRun = 127;

void measure(const char* name, const char* side, void (*run)(), std::uint32_t repetitions) {
    const std::string label = std::string(name) + " " + side;
    run();
    CALLGRIND_ZERO_STATS;
    for (std::uint32_t n = 0; n < repetitions; ++n)
        run();
    CALLGRIND_DUMP_STATS_AT(label.c_str());
}

void measureAll() {
    for (const quorvel::bench::Operation& operation : quorvel::bench::operations()) {
        operation.prepare();
        measure(operation.name, "whole", operation.run, operation.repetitions);
        if (operation.floor != nullptr) measure(operation.name, "floor", operation.floor, operation.repetitions);
    }
}

// Reads the totals of the dumps in `folder` by their label.
std::map<std::string, std::uint64_t> readDumps(const std::filesystem::path& folder) {
    std::map<std::string, std::uint64_t> totals;
    constexpr char kTrigger[] = "desc: Trigger: Client Request: ";
    constexpr char kTotals[] = "totals: ";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream dump(entry.path());
        std::string label;
        for (std::string line; std::getline(dump, line);) {
            if (line.rfind(kTrigger, 0) == 0) label = line.substr(std::strlen(kTrigger));
            if (line.rfind(kTotals, 0) == 0 && !label.empty()) {
                totals[label] = std::strtoull(line.c_str() + std::strlen(kTotals), nullptr, 10);
            }
        }
    }
    return totals;
}

int runUnderValgrind(const char* self, const std::filesystem::path& folder) {
    const std::string out = "--callgrind-out-file=" + (folder / "dump").string();
    const std::string log = "--log-file=" + (folder / "log").string();
    const pid_t child = fork();
    if (child < 0) return kCannotRun;
    if (child == 0) {
        execlp("valgrind", "valgrind", "--tool=callgrind", out.c_str(), log.c_str(), self, "--measure",
               static_cast<char*>(nullptr));
        _exit(kCannotRun);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return kCannotRun;
    return WEXITSTATUS(status);
}

std::map<std::string, double> readBudgets(const char* file) {
    std::map<std::string, double> budgets;
    std::ifstream stream(file);
    if (!stream) {
        std::fprintf(stderr, "cannot read the budgets in %s\n", file);
        std::exit(2);
    }
    for (std::string line; std::getline(stream, line);) {
        char name[64];
        double limit = 0;
        if (line.empty() || line[0] == '#') continue;
        if (std::sscanf(line.c_str(), "%63s %lf", name, &limit) == 2) budgets[name] = limit;
    }
    return budgets;
}

// Returns how many budgets are exceeded or were not measured.
int report(const std::map<std::string, std::uint64_t>& totals, std::map<std::string, double> budgets) {
    int exceeded = 0;
    std::printf("%-20s %12s %12s %12s %12s\n", "operation", "instructions", "floor", "added", "budget");
    for (const quorvel::bench::Operation& operation : quorvel::bench::operations()) {
        const auto whole = totals.find(std::string(operation.name) + " whole");
        const auto floor = totals.find(std::string(operation.name) + " floor");
        if (whole == totals.end()) continue;
        const double times = operation.repetitions;
        const double all = static_cast<double>(whole->second) / times;
        const double bare = floor == totals.end() ? 0 : static_cast<double>(floor->second) / times;
        std::printf("%-20s %12.1f %12.1f %12.1f", operation.name, all, bare, all - bare);
        const auto budget = budgets.find(operation.name);
        if (budget == budgets.end()) {
            std::printf("\n");
            continue;
        }
        const bool within = all - bare <= budget->second;
        std::printf(" %12.0f%s\n", budget->second, within ? "" : "  EXCEEDED");
        if (!within) ++exceeded;
    }
    return exceeded;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--measure") == 0) {
        measureAll();
        return 0;
    }
    if (argc > 2) {
        std::fprintf(stderr, "usage: %s [budgets]\n", argv[0]);
        return 2;
    }
    std::string folder = (std::filesystem::temp_directory_path() / "quorvel-counts-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::fprintf(stderr, "cannot create a folder below %s\n", std::filesystem::temp_directory_path().c_str());
        return 1;
    }
    const int status = runUnderValgrind(std::filesystem::read_symlink("/proc/self/exe").c_str(), folder);
    const auto totals = readDumps(folder);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    if (status == kCannotRun) {
        std::printf(
            "SKIPPED: valgrind is not installed, so no instructions were counted. Install the package valgrind.\n");
        return kSkipped;
    }
    if (status != 0 || totals.empty()) {
        std::fprintf(stderr, "counting under valgrind failed with status %d\n", status);
        return 1;
    }
    return report(totals, argc == 2 ? readBudgets(argv[1]) : std::map<std::string, double>{}) == 0 ? 0 : 1;
}
