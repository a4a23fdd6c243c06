#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "console/terminal/Style.h"

namespace quorvel::console {

/// Rows under headings, aligned for people or one record per line with tabs for programs.
class Table {
  public:
    explicit Table(std::vector<std::string> headings) : headings_(std::move(headings)) {}

    void row(std::vector<std::string> cells) {
        rows_.push_back(std::move(cells));
    }
    /// Leaves the column out for programs: it shows what another one says.
    void hideInPlain(const std::string& heading) {
        hidden_ = heading;
    }
    [[nodiscard]] bool empty() const {
        return rows_.empty();
    }
    /// Returns the cells that the widest line takes.
    [[nodiscard]] std::size_t width() const;
    /// Writes the table for people, with two blanks before each row.
    void print(std::ostream& out, const Style& style) const;
    /// Writes the rows alone, tab-separated.
    void printPlain(std::ostream& out) const;

  private:
    std::vector<std::string> headings_;
    std::string hidden_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace quorvel::console
