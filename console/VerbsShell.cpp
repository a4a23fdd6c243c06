// shell, batch: many commands in one session.
#include <algorithm>
#include <fstream>
#include <iostream>

#include "Completion.h"
#include "Dispatcher.h"
#include "LineEditor.h"
#include "Verbs.h"

namespace quorvel::console {
namespace {

// Commands that make no sense inside a session.
bool isForbidden(const std::string& verb) {
    return verb == "shell" || verb == "batch" || verb == "up" || verb == "down";
}

int runLine(Session& session, const std::string& line, const std::string& where) {
    std::vector<std::string> words;
    if (!splitLine(line, words)) {
        std::cerr << where << "a quote is left open\n";
        return kWrongUsage;
    }
    if (words.empty()) return kDone;
    if (isForbidden(words.front())) {
        std::cerr << where << "\"" << words.front() << "\" is not for use in here\n";
        return kWrongUsage;
    }
    if (words.front() == "help") words.front() = "--help";
    return dispatch(words, session);
}

std::vector<std::string> completions(Session& session, const std::string& before, const std::string& word) {
    std::vector<std::string> words;
    // A quote that is still open is the word's own.
    (void)splitLine(before, words);
    const bool first = words.empty();
    words.push_back(word);
    std::vector<std::string> found = complete(session, words);
    std::erase_if(found, [first](const std::string& candidate) { return first && isForbidden(candidate); });
    for (const char* own : {"help", "exit"}) {
        if (first && std::string_view(own).starts_with(word)) found.emplace_back(own);
    }
    return found;
}

int shell(Session& session) {
    (void)session.gateway();
    session.interactive = true;
    if (session.outStyle().onTerminal()) {
        std::cout << "The board " << session.options.board
                  << " is up. Tab completes, help lists the verbs, exit ends.\n";
    }
    LineEditor editor(
        stateFolder(session.options) + "/history",
        [&session](const std::string& before, const std::string& word) { return completions(session, before, word); });
    int status = kDone;
    for (std::string line; editor.read("wifi> ", line);) {
        if (line == "exit" || line == "quit") break;
        status = runLine(session, line, "quorvel-wifi: ");
        std::cout << std::flush;
    }
    return status;
}

// Goes on past a command that fails; the status is the worst.
int batch(Session& session, const std::string& name) {
    std::ifstream file;
    if (name != "-") {
        file.open(name);
        if (!file) throw CLI::ValidationError("cannot read the file " + name);
    }
    std::istream& in = name == "-" ? std::cin : file;
    int status = kDone;
    unsigned number = 0;
    for (std::string line; std::getline(in, line);) {
        const std::string where = "quorvel-wifi: " + name + ":" + std::to_string(++number) + ": ";
        status = std::max(status, runLine(session, line, where));
        std::cout << std::flush;
    }
    return status;
}

}  // namespace

void addShellVerbs(VerbContext& context) {
    Session& session = context.session;
    (void)context.add("shell", "Type commands, with history and completion", [&session] { return shell(session); });
    auto file = std::make_shared<std::string>();
    CLI::App* const verb = context.add("batch", "Run the commands of a file, one per line",
                                       [&session, file] { return batch(session, *file); });
    verb->add_option("FILE", *file, "A file, or - for standard input")->required();
}

}  // namespace quorvel::console
