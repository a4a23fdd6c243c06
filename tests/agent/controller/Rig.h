#pragma once

// A board with its agent and a broker, as a user starts them.

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/agent/controller/Controller.h"

namespace quorvel::agent_test {

/// Debian's broker on a free port of loopback.
class Broker {
  public:
    Broker();
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;
    ~Broker();

    void kill();
    void start();
    /// Starts it again with further lines of configuration; the port stays.
    void configure(const std::string& lines);
    [[nodiscard]] int port() const {
        return port_;
    }
    [[nodiscard]] std::string url() const {
        return "mqtt://127.0.0.1:" + std::to_string(port_);
    }

  private:
    void writeConfiguration(const std::string& lines) const;

    std::string folder_;
    int port_ = 0;
    pid_t process_ = -1;
};

/// A state folder, and the console's commands on it.
class Board {
  public:
    Board();
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;
    ~Board();

    struct Outcome {
        int status = -1;
        std::string output;  ///< both outputs
    };

    /// Runs `quorvel-wifi` with these words on the board.
    Outcome run(const std::vector<std::string>& words) const;

    /// Runs it and expects success.
    std::string mustRun(const std::vector<std::string>& words) const;

    [[nodiscard]] const std::string& stateFolder() const {
        return state_;
    }
    /// Returns the process of the agent, or 0.
    [[nodiscard]] static pid_t agentProcess(const std::string& stateFolder);

  private:
    std::string state_;
};

/// Runs a program with its output captured.
Board::Outcome runProgram(const std::vector<std::string>& command, const std::string& folder = "");

/// Returns a port of loopback that nobody listens at now.
[[nodiscard]] int freePort();

inline constexpr const char* kAgentId = "os::025176-QW3-000001";
inline constexpr const char* kControllerId = "proto::interop-usp-controller";

}  // namespace quorvel::agent_test
