#include "Table.h"

#include <algorithm>

namespace quorvel::console {
namespace {

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789.-") == std::string::npos;
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
            const std::string gap(width[i] - displayWidth(cells[i]), ' ');
            text += "  " + (numeric[i] ? gap + cells[i] : cells[i] + gap);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        out << style.dress(text, colour) << '\n';
    };
    line(headings_, Colour::kHeading);
    for (const auto& cells : rows_)
        line(cells, Colour::kPlain);
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
