#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Runs the console as a person would, with a state folder of its own.
namespace quorvel::console_test {

// A program that takes longer has hung.
inline constexpr std::chrono::seconds kLongest{120};

struct Outcome {
    int status = -1;  // exit status; -1 when it had to be ended
    std::string out;
    std::string error;

    [[nodiscard]] nlohmann::json json() const {
        return nlohmann::json::parse(out, nullptr, false);
    }
};

class Console {
  public:
    // Makes an empty state folder.
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    // Switches a board that is up off and removes the state folder.
    ~Console();

    // Runs a command with `input` on standard input. It is ended when it takes longer than half a minute.
    [[nodiscard]] Outcome run(std::vector<std::string> words, const std::string& input = "") const;

    // The same with another state folder.
    [[nodiscard]] static Outcome runOn(const std::string& state, std::vector<std::string> words,
                                       const std::string& input = "");

    [[nodiscard]] const std::string& state() const {
        return state_;
    }

  private:
    std::string state_;
};

// Returns why no board can run here, or the empty text. Asked once.
[[nodiscard]] const std::string& whyNoBoard();

}  // namespace quorvel::console_test
