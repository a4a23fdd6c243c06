#include "console/terminal/Table.h"

#include <algorithm>
#include <sstream>

namespace quorvel::console {
namespace {

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789.-") == std::string::npos;
}

// A last column with less room is not cut.
constexpr std::size_t kNarrowest = 20;

// Breaks a text at its blanks.
std::vector<std::string> wrapped(const std::string& text, std::size_t room) {
    std::vector<std::string> lines(1);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        std::string& last = lines.back();
        if (!last.empty() && displayWidth(last) + 1 + displayWidth(word) > room) {
            lines.push_back(word);
        } else {
            last += (last.empty() ? "" : " ") + word;
        }
    }
    return lines;
}

}  // namespace

void Table::print(std::ostream& out, const Style& style) const {
    const std::size_t columns = headings_.size();
    std::vector<std::size_t> width(columns);
    std::vector<bool> numeric(columns, true);
    for (std::size_t i = 0; i < columns; ++i) {
        width[i] = displayWidth(headings_[i]);
        for (const auto& cells : rows_) {
            if (i >= cells.size()) continue;
            width[i] = std::max(width[i], displayWidth(cells[i]));
            numeric[i] = numeric[i] && (cells[i].empty() || cells[i] == "-" || isNumber(cells[i]));
        }
    }
    const auto line = [&](const std::vector<std::string>& cells, Colour colour) {
        std::string text;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::size_t shown = displayWidth(cells[i]);
            const std::string gap(width[i] > shown ? width[i] - shown : 0, ' ');
            text += "  " + (numeric[i] ? gap + cells[i] : cells[i] + gap);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        out << style.dress(text, colour) << '\n';
    };
    std::size_t before = 2;  // in front of the last column
    for (std::size_t i = 0; i + 1 < columns; ++i)
        before += width[i] + 2;
    const std::size_t room = style.columns() > before + kNarrowest ? style.columns() - before : 0;
    line(headings_, Colour::kHeading);
    for (const auto& cells : rows_) {
        if (room == 0 || cells.size() != columns || displayWidth(cells.back()) <= room) {
            line(cells, Colour::kPlain);
            continue;
        }
        std::vector<std::string> part = cells;
        for (const std::string& piece : wrapped(cells.back(), room)) {
            part.back() = piece;
            line(part, Colour::kPlain);
            std::fill(part.begin(), part.end(), "");
        }
    }
}

std::size_t Table::width() const {
    std::size_t sum = 0;
    for (std::size_t i = 0; i < headings_.size(); ++i) {
        std::size_t widest = displayWidth(headings_[i]);
        for (const auto& cells : rows_)
            widest = std::max(widest, i < cells.size() ? displayWidth(cells[i]) : 0);
        sum += widest + 2;
    }
    return sum;
}

void Table::printPlain(std::ostream& out) const {
    for (const auto& cells : rows_) {
        bool first = true;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (!hidden_.empty() && headings_[i] == hidden_) continue;
            out << (first ? "" : "\t") << cells[i];
            first = false;
        }
        out << '\n';
    }
}

}  // namespace quorvel::console
