#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace quorvel::console_test {

// The console on a terminal of its own: what a person sees and types. It is ended with this object.
class Terminal {
  public:
    // Starts a command. The environment's TERM, NO_COLOR and locale are those given, a UTF-8 one of colours by default.
    explicit Terminal(std::vector<std::string> words, const std::map<std::string, std::string>& environment = {},
                      unsigned short columns = 120);
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    void type(const std::string& text) const;
    // Waits until the text has been shown since the last call; returns all that was shown until then. A text that is
    // not shown within half a minute, or before the program ends, fails the test.
    std::string until(const std::string& text);
    // Waits for the end of the program and returns what was shown in the meantime.
    std::string rest();
    // The exit status; minus the signal's number when one ended it. Valid after rest().
    [[nodiscard]] int status() const {
        return status_;
    }

  private:
    bool take();

    int descriptor_ = -1;
    pid_t process_ = -1;
    int status_ = -1000;
    std::string shown_;
};

}  // namespace quorvel::console_test
