// Checks any built plug-in against the data model and the rules of its front ends. It is its own platform: no daemon,
// driver or tool is started, and no setting of the machine is touched.
#include <langinfo.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "selftest/Checks.h"
#include "selftest/Watch.h"

namespace {

// Emulated and instrumented runs included.
constexpr unsigned kLongest = 120;

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

int wrongUsage(const char* trouble) {
    std::fprintf(stderr,
                 "quorvel-wifi-selftest: %s\n"
                 "usage: quorvel-wifi-selftest [--json | --plain] [--no-color] FILE\n",
                 trouble);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const char* file = nullptr;
    bool json = false;
    bool plain = false;
    bool coloured = isatty(STDOUT_FILENO) == 1 && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
    (void)std::setlocale(LC_CTYPE, "");
    const bool utf8 = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--json") {
            json = true;
        } else if (word == "--plain") {
            plain = true;
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
        if (json) std::printf("%s", errorAsJson(error.what()).c_str());
        return 1;
    }
    if (json) {
        report.printJson(file);
    } else if (plain) {
        report.printPlain();
    } else {
        report.printText(coloured, utf8);
    }
    return report.passed() ? 0 : 1;
}
