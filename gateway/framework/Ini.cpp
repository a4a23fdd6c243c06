#include "gateway/framework/Ini.h"

namespace quorvel::framework {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes the next line off `text`.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

std::string quoted(std::string_view text) {
    constexpr std::size_t kShown = 60;
    return "\"" + std::string(text.substr(0, kShown)) + (text.size() > kShown ? "...\"" : "\"");
}

}  // namespace

std::optional<Ini> Ini::parse(std::string_view text, IniError& error) {
    Ini result;
    std::map<std::string, std::string>* section = nullptr;
    const auto refuse = [&error](unsigned line, std::string message) {
        error = {line, std::move(message)};
        return std::nullopt;
    };

    for (unsigned number = 1; !text.empty(); ++number) {
        const std::string_view line = trim(takeLine(text));
        if (line.find('\0') != std::string_view::npos) return refuse(number, "expected text, found a NUL byte");
        if (line.empty() || line.front() == '#' || line.front() == ';') continue;
        if (line.front() == '[') {
            if (line.back() != ']') return refuse(number, "expected \"]\" at the end of " + quoted(line));
            const std::string_view name = trim(line.substr(1, line.size() - 2));
            if (name.empty()) return refuse(number, "expected a section name between \"[\" and \"]\"");
            section = &result.sections_[std::string(name)];
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            return refuse(number, "expected \"key = value\" or \"[section]\", found " + quoted(line));
        if (section == nullptr) return refuse(number, "expected a \"[section]\" before the first " + quoted(line));
        const std::string_view key = trim(line.substr(0, equals));
        if (key.empty()) return refuse(number, "expected a key before \"=\" in " + quoted(line));
        if (!section->emplace(key, trim(line.substr(equals + 1))).second)
            return refuse(number, "expected every key of a section once, found " + quoted(key) + " again");
    }
    return result;
}

const std::string* Ini::find(const std::string& section, const std::string& key) const {
    const auto found = sections_.find(section);
    if (found == sections_.end()) return nullptr;
    const auto value = found->second.find(key);
    return value == found->second.end() ? nullptr : &value->second;
}

}  // namespace quorvel::framework
