#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/gateway/framework/ScratchFolder.h"

// How a program ended and what it wrote.
struct Outcome {
    int status = -1;  // exit status, 128 + signal when a signal ended it
    std::string out;
    std::string err;
};

// A started program, with its output in a folder of its own.
class CommandRun {
  public:
    // Starts `words`; `environment` holds "NAME=value" to set.
    explicit CommandRun(const std::vector<std::string>& words, const std::vector<std::string>& environment = {});
    // Kills what still runs.
    ~CommandRun();
    CommandRun(const CommandRun&) = delete;
    CommandRun& operator=(const CommandRun&) = delete;

    [[nodiscard]] pid_t pid() const {
        return pid_;
    }
    // Waits for its end.
    [[nodiscard]] Outcome finish();

  private:
    ScratchFolder folder_;
    pid_t pid_ = -1;
};

// The program built as `name`, called so that it runs on this machine.
[[nodiscard]] std::vector<std::string> builtProgram(const std::string& name);

// Whether the programs are built for another processor and run under its emulator.
[[nodiscard]] bool emulated();

// `words` run by "root" in a user namespace and in those of the `kinds` that unshare(1) names.
[[nodiscard]] std::vector<std::string> inNamespaces(const std::vector<std::string>& kinds,
                                                    const std::vector<std::string>& words);

// The words of board_command for a board with its state in `state`, up to the "--" of the command: `extra` goes
// between.
[[nodiscard]] std::vector<std::string> boardWords(const std::string& state, const std::vector<std::string>& extra = {});

// The same with a shell script to run on the board.
[[nodiscard]] std::vector<std::string> boardScript(const std::string& state, const std::string& script,
                                                   const std::vector<std::string>& extra = {});

// Runs a program to its end.
[[nodiscard]] Outcome run(const std::vector<std::string>& words, const std::vector<std::string>& environment = {});
