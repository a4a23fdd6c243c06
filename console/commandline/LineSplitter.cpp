#include "console/commandline/LineSplitter.h"

namespace quorvel::console {

bool splitLine(const std::string& line, std::vector<std::string>& words) {
    std::string word;
    bool inWord = false;
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote != '\0') {
            if (c == quote) {
                quote = '\0';
            } else if (c == '\\' && quote == '"' && i + 1 < line.size()) {
                word += line[++i];
            } else {
                word += c;
            }
        } else if (c == '\'' || c == '"') {
            quote = c;
            inWord = true;
        } else if (c == '\\' && i + 1 < line.size()) {
            word += line[++i];
            inWord = true;
        } else if (c == ' ' || c == '\t' || c == '\r') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
        } else if (c == '#' && !inWord) {
            break;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord) words.push_back(word);
    return quote == '\0';
}

}  // namespace quorvel::console
