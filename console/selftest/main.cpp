// Checks any built plug-in against the data model and the rules of its front ends. It is its own platform: no daemon,
// driver or tool is started, and no setting of the machine is touched.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "Checks.h"
#include "Watch.h"

namespace {

// Emulated and instrumented runs included.
constexpr unsigned kLongest = 120;

int wrongUsage(const char* trouble) {
    std::fprintf(stderr,
                 "quorvel-wifi-selftest: %s\n"
                 "usage: quorvel-wifi-selftest [--json] [--no-color] FILE\n",
                 trouble);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const char* file = nullptr;
    bool json = false;
    bool coloured = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--json") {
            json = true;
        } else if (word == "--no-color") {
            coloured = false;
        } else if (word.starts_with("-")) {
            return wrongUsage(("there is no option " + std::string(word)).c_str());
        } else if (file != nullptr) {
            return wrongUsage("one plug-in at a time");
        } else {
            file = argv[i];
        }
    }
    if (file == nullptr) return wrongUsage("which plug-in? Name the built libquorvel_wifi.so");

    using namespace quorvel::selftest;
    watch(kLongest);
    Report report;
    try {
        const Library library(file);
        checkExports(library, report);
        checkTable(library, report);
        checkLockCreation(library, report);
        checkContexts(library, report);
        checkSetters(library, report);
        checkGetters(library, report);
        checkApplies(library, report);
        checkSnapshots(library, report);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorvel-wifi-selftest: %s\n", error.what());
        return 1;
    }
    if (json) {
        report.printJson(file);
    } else {
        report.printText(coloured);
    }
    return report.passed() ? 0 : 1;
}
