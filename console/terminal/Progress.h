#pragma once

#include <chrono>
#include <string>

#include "console/terminal/Style.h"

namespace quorvel::console {

/// A line on standard error that tells what is going on, on a terminal only; gone without a trace afterwards.
class Progress {
  public:
    explicit Progress(const Style& style) : style_(style) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void say(const std::string& text);
    /// Has tick() say `text` when it is still called after a moment.
    void await(std::string text);
    /// Something takes `seconds` from now on: tick() draws how much of it has passed.
    void expect(unsigned seconds);
    void tick();
    /// Draws how much of `whole` is done, once it has taken a moment.
    void share(double done, double whole, const std::string& text);
    void clear();

  private:
    Style style_;
    bool shown_ = false;
    std::string awaited_;
    unsigned expected_ = 0;
    std::chrono::steady_clock::time_point since_;
};

}  // namespace quorvel::console
