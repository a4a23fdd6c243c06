#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quorvel::console {

/// Reads lines from the terminal, with history and completion where the platform's line-editing library is there.
class LineEditor {
  public:
    /// Returns what the word in front of the cursor can become, given the whole line up to the cursor.
    using Complete = std::function<std::vector<std::string>(const std::string& line, const std::string& word)>;

    /// Tells whether a line may be kept in the history file.
    using Keep = std::function<bool(const std::string& line)>;

    /// Takes up the history of `historyFile`, which is written with every line.
    LineEditor(std::string historyFile, Complete complete, Keep keep);
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    ~LineEditor() = default;

    /// Reads a line without its newline. Returns false at the end of the input.
    [[nodiscard]] bool read(const std::string& prompt, std::string& line);

  private:
    std::string historyFile_;
    Keep keep_;
    std::string last_;
};

}  // namespace quorvel::console
