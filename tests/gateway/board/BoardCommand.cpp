// Powers a board up and runs one command on it: what the board's tests look through.
//
//   board_command [--board B] [--state DIR] [--programs DIR] [--plugin FILE] [--configuration FILE] [--writable DIR]
//                 [--emulator WORD]... [--sandbox KIND] -- COMMAND...

#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "gateway/board/Board.h"

namespace {

int runCommand(char** command) {
    execvp(command[0], command);
    std::perror(command[0]);
    return 127;
}

}  // namespace

int main(int count, char** arguments) {
    quorvel::board::Options options;
    options.sandbox = quorvel::board::Sandbox::kNamespaces;
    const std::map<std::string, std::string*> texts{
        {"--board", &options.board},
        {"--state", &options.stateFolder},
        {"--programs", &options.programFolder},
        {"--plugin", &options.plugin},
        {"--configuration", &options.configuration},
    };
    const std::map<std::string, std::vector<std::string>*> lists{{"--writable", &options.writableFolders},
                                                                 {"--emulator", &options.emulator}};
    int at = 1;
    for (; at + 1 < count && std::string(arguments[at]) != "--"; ++at) {
        const std::string word = arguments[at];
        if (word == "--sandbox") {
            options.sandbox = quorvel::board::sandboxCalled(arguments[++at]).value();
        } else if (const auto text = texts.find(word); text != texts.end()) {
            *text->second = arguments[++at];
        } else if (const auto list = lists.find(word); list != lists.end()) {
            list->second->push_back(arguments[++at]);
        } else {
            std::fprintf(stderr, "board_command: unknown word %s\n", word.c_str());
            return 2;
        }
    }
    if (at + 1 >= count) return 2;
    try {
        const quorvel::board::Places places = quorvel::board::enterBoard(options);
        setenv("TEST_PLUGIN", places.plugin.c_str(), 1);
        setenv("TEST_NOTICE", places.notice.c_str(), 1);
        setenv("TEST_HOST_STATE", places.hostState.c_str(), 1);
    } catch (const quorvel::board::BoardError& error) {
        std::fprintf(stderr, "board_command: %s\n", error.what());
        return 1;
    }
    return runCommand(arguments + at + 1);
}
