#include "tests/gateway/board/CommandRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <sstream>

namespace {

const std::string kPrograms = BOARD_TEST_PROGRAMS;

std::vector<std::string> emulator() {
    std::istringstream text(BOARD_TEST_EMULATOR);
    std::vector<std::string> words;
    for (std::string word; text >> word;)
        words.push_back(word);
    return words;
}

void redirect(const std::string& file, int descriptor) {
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (opened < 0 || dup2(opened, descriptor) < 0) _exit(126);
    close(opened);
}

}  // namespace

CommandRun::CommandRun(const std::vector<std::string>& words, const std::vector<std::string>& environment) {
    std::vector<std::string> copies = words;
    std::vector<char*> arguments;
    for (std::string& word : copies)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::vector<std::string> variables = environment;
    pid_ = fork();
    if (pid_ < 0) ADD_FAILURE() << "cannot fork";
    if (pid_ != 0) return;
    redirect(folder_.path() + "/out", STDOUT_FILENO);
    redirect(folder_.path() + "/err", STDERR_FILENO);
    for (std::string& variable : variables)
        putenv(variable.data());
    execvp(arguments[0], arguments.data());
    _exit(126);
}

CommandRun::~CommandRun() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    (void)waitpid(pid_, nullptr, 0);
}

Outcome CommandRun::finish() {
    int status = 0;
    if (waitpid(pid_, &status, 0) != pid_) ADD_FAILURE() << "cannot wait for " << pid_;
    pid_ = -1;
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), folder_.read("out"),
            folder_.read("err")};
}

std::vector<std::string> builtProgram(const std::string& name) {
    std::vector<std::string> words = emulator();
    words.push_back(kPrograms + "/bin/" + name);
    return words;
}

bool emulated() {
    return !emulator().empty();
}

std::vector<std::string> inNamespaces(const std::vector<std::string>& kinds, const std::vector<std::string>& words) {
    std::vector<std::string> all{"unshare", "--user", "--map-root-user"};
    all.insert(all.end(), kinds.begin(), kinds.end());
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

std::vector<std::string> boardWords(const std::string& state, const std::vector<std::string>& extra) {
    std::vector<std::string> words = builtProgram("board_command");
    const bool namespaces = std::find(extra.begin(), extra.end(), "--sandbox") == extra.end();
    // An emulated process cannot create the user namespace that an ordinary user needs for the others.
    if (namespaces && emulated() && geteuid() != 0) words = inNamespaces({}, words);
    // Passes the board's host library as the plug-in; nothing here loads it.
    for (const std::string& word : {std::string("--state"), state, std::string("--programs"), kPrograms,
                                    std::string("--plugin"), kPrograms + "/lib/libquorvel.so"})
        words.push_back(word);
    for (const std::string& word : emulator()) {
        words.emplace_back("--emulator");
        words.push_back(word);
    }
    words.insert(words.end(), extra.begin(), extra.end());
    words.emplace_back("--");
    return words;
}

std::vector<std::string> boardScript(const std::string& state, const std::string& script,
                                     const std::vector<std::string>& extra) {
    std::vector<std::string> words = boardWords(state, extra);
    for (const std::string& word : {std::string("sh"), std::string("-c"), script})
        words.push_back(word);
    return words;
}

Outcome run(const std::vector<std::string>& words, const std::vector<std::string>& environment) {
    return CommandRun(words, environment).finish();
}
