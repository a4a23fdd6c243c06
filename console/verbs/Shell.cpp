// shell, batch: many commands in one session.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "console/commandline/Assignment.h"
#include "console/commandline/Completion.h"
#include "console/commandline/LineSplitter.h"
#include "console/session/Secrets.h"
#include "console/terminal/LineEditor.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

using Dispatch = std::function<int(std::vector<std::string>, Session&)>;

int runLine(Session& session, const Dispatch& dispatch, const std::string& line, const std::string& where) {
    std::vector<std::string> words;
    if (!splitLine(line, words)) {
        std::cerr << where << "a quote is left open\n";
        return kWrongUsage;
    }
    return words.empty() ? kDone : dispatch(words, session);
}

// Tells whether a line holds a secret, which is nothing for a file.
bool holdsSecret(const std::string& line) {
    std::vector<std::string> words;
    (void)splitLine(line, words);  // one with an open quote may hold one, too
    return std::any_of(words.begin(), words.end(), [](const std::string& word) {
        const std::size_t sign = signIn(word);
        if (sign == std::string::npos || !isSecret(std::string_view(word).substr(0, sign))) return false;
        const std::string value = word.substr(sign + 1);
        return !value.empty() && value != "-" && (value.front() != '@' || value.starts_with("@@"));
    });
}

std::vector<std::string> completions(Session& session, const CommandShape& program, const std::string& before,
                                     const std::string& word) {
    std::vector<std::string> words;
    // A quote that is still open is the word's own.
    (void)splitLine(before, words);
    const bool first = words.empty();
    words.push_back(word);
    std::vector<std::string> found = complete(session, program, words);
    // Not for use in here.
    std::erase_if(found, [first](const std::string& verb) {
        return first && (verb == "shell" || verb == "batch" || verb == "up" || verb == "down");
    });
    if (first && std::string_view("exit").starts_with(word)) found.emplace_back("exit");
    return found;
}

int shell(Session& session, const Dispatch& dispatch, const CommandShape& program) {
    (void)session.gateway();
    session.interactive = isatty(STDIN_FILENO) != 0;
    session.nested = true;
    session.inputIsCommands = !session.interactive;
    if (session.interactive && session.outStyle().onTerminal()) {
        std::cout << "The board " << session.options.board
                  << (session.gateway().inBackground() ? " is up." : " is up for this shell alone.")
                  << " Tab completes, help lists the verbs, exit ends.\n";
    }
    LineEditor editor(
        stateFolder(session.options) + "/history",
        [&](const std::string& before, const std::string& word) { return completions(session, program, before, word); },
        [](const std::string& line) { return !holdsSecret(line); });
    int status = kDone;
    for (std::string line; editor.read("wifi> ", line);) {
        if (line == "exit" || line == "quit") break;
        status = runLine(session, dispatch, line, "quorvel-wifi: ");
        std::cout << std::flush;
    }
    return status;
}

// Goes on past a command that fails; the status is the worst.
int batch(Session& session, const Dispatch& dispatch, const std::string& name) {
    std::ifstream file;
    session.nested = true;
    session.inputIsCommands = name == "-";
    if (name != "-") {
        file.open(name);
        // A folder can be opened and has nothing in it.
        if (!file || std::filesystem::is_directory(name)) throw CLI::ValidationError("cannot read the file " + name);
    }
    std::istream& in = name == "-" ? std::cin : file;
    int status = kDone;
    unsigned number = 0;
    for (std::string line; std::getline(in, line);) {
        const std::string where = "quorvel-wifi: " + name + ":" + std::to_string(++number) + ": ";
        const int outcome = runLine(session, dispatch, line, where);
        std::cout << std::flush;
        if (outcome != kDone) std::cerr << where << "exit status " << outcome << '\n';
        status = std::max(status, outcome);
    }
    return status;
}

}  // namespace

void addShellVerbs(VerbContext& context) {
    Session& session = context.session;
    (void)context.add(
        kManyVerbs, "shell", "Type commands, with history and completion", "shell\nshell --board dual-band",
        [&session, dispatch = context.dispatch, shape = context.shape] { return shell(session, dispatch, shape()); });
    auto file = std::make_shared<std::string>();
    CLI::App* const verb =
        context.add(kManyVerbs, "batch", "Run the commands of a file, one per line", "batch commands.txt",
                    [&session, file, dispatch = context.dispatch] { return batch(session, dispatch, *file); });
    context.take(verb, ArgumentKind::kFile, "FILE", *file, "A file, or - for standard input")->required();
}

}  // namespace quorvel::console
