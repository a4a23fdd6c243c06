#pragma once

// The host configuration's text format: [sections] of `key = value` lines, comments from '#' or ';' at a line's start.

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::framework {

/// A mistake in a configuration text: the line, from 1, and the text that was expected there.
struct IniError {
    unsigned line = 0;
    std::string message;
};

class Ini {
  public:
    /// Parses a whole text. Returns nothing and fills `error` when a line is malformed.
    [[nodiscard]] static std::optional<Ini> parse(std::string_view text, IniError& error);

    /// Returns the value of `key` in `section`, or null. Names are compared as they are written.
    [[nodiscard]] const std::string* find(const std::string& section, const std::string& key) const;

  private:
    std::map<std::string, std::map<std::string, std::string>> sections_;
};

}  // namespace quorvel::framework
