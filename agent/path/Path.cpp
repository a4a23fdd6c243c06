#include "agent/path/Path.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace quorvel::agent {
namespace {

using common::skipBlanks;

constexpr std::string_view kRoot = "Device.";
constexpr std::size_t kMaxPath = 4096;

bool isNameCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-';
}

bool isName(std::string_view text) {
    return !text.empty() && !(text.front() >= '0' && text.front() <= '9') &&
           std::all_of(text.begin(), text.end(), isNameCharacter);
}

// Takes a quoted constant; %22 is a quote and %25 a per cent sign.
std::string takeQuoted(std::string_view& text, std::string& operand) {
    text.remove_prefix(1);
    const std::size_t end = text.find('"');
    if (end == std::string_view::npos) return "a quote is left open";
    const std::string_view quoted = text.substr(0, end);
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        const std::string_view escape = quoted.substr(i, 3);
        if (escape == "%22" || escape == "%25") {
            operand += escape == "%22" ? '"' : '%';
            i += 2;
        } else {
            operand += quoted[i];
        }
    }
    text.remove_prefix(end + 1);
    return "";
}

std::string takeCondition(std::string_view& text, Condition& condition) {
    skipBlanks(text);
    while (!text.empty() &&
           (isNameCharacter(text.front()) || std::string_view(".+#*").find(text.front()) != std::string_view::npos)) {
        condition.path += text.front();
        text.remove_prefix(1);
    }
    if (condition.path.empty()) return "a search condition begins with a parameter";
    skipBlanks(text);
    const auto comparison = common::takeComparison(text);
    if (!comparison) return "\"" + condition.path + "\" is followed by none of == != ~= < > <= >=";
    condition.comparison = *comparison;
    skipBlanks(text);
    if (text.starts_with('"')) {
        condition.quoted = true;
        return takeQuoted(text, condition.operand);
    }
    const std::size_t end = std::min(text.find_first_of(" \t&"), text.size());
    condition.operand = text.substr(0, end);
    text.remove_prefix(end);
    if (condition.operand.empty()) return "\"" + condition.path + "\" is compared with nothing";
    return condition.operand.find('"') == std::string::npos ? "" : "a constant has a quote in it";
}

std::string parseSearch(std::string_view text, Segment& segment) {
    segment.kind = Segment::Kind::kSearch;
    for (;;) {
        Condition condition;
        if (std::string wrong = takeCondition(text, condition); !wrong.empty()) return wrong;
        segment.conditions.push_back(std::move(condition));
        skipBlanks(text);
        if (text.empty()) return "";
        if (!text.starts_with("&&")) return "search conditions are joined by &&";
        text.remove_prefix(2);
    }
}

std::string parseReference(std::string_view text, Segment& segment) {
    segment.kind = Segment::Kind::kReference;
    text.remove_suffix(1);
    segment.number = 1;
    const std::size_t hash = text.find('#');
    if (hash != std::string_view::npos) {
        const std::string_view item = text.substr(hash + 1);
        text = text.substr(0, hash);
        if (item == "*") {
            segment.number = 0;
        } else if (!isNumber(item) ||
                   std::from_chars(item.data(), item.data() + item.size(), segment.number).ec != std::errc() ||
                   segment.number == 0) {
            return "\"#\" is followed by a number from 1 or by *";
        }
    }
    segment.name = text;
    return isName(text) ? "" : "a reference begins with a parameter's name";
}

std::string parseSegment(std::string_view text, Segment& segment) {
    if (text == "*") {
        segment.kind = Segment::Kind::kAll;
        return "";
    }
    if (text.starts_with('[')) {
        if (!text.ends_with(']')) return "a search ends with ] and a dot";
        return parseSearch(text.substr(1, text.size() - 2), segment);
    }
    if (isNumber(text)) {
        segment.kind = Segment::Kind::kNumber;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), segment.number);
        return error == std::errc() && segment.number != 0 ? "" : "instance numbers are from 1 to 4294967295";
    }
    if (text.ends_with('+')) return parseReference(text, segment);
    segment.name = text;
    return isName(text) ? "" : "\"" + std::string(text) + "\" is not a name";
}

// Returns where the segment that begins the text ends: at a dot outside of brackets and quotes.
std::size_t segmentEnd(std::string_view text) {
    bool quoted = false;
    unsigned depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"' && depth > 0) quoted = !quoted;
        if (quoted) continue;
        if (text[i] == '[') ++depth;
        if (text[i] == ']' && depth > 0) --depth;
        if (text[i] == '.' && depth == 0) return i;
    }
    return std::string_view::npos;
}

void parseLeaf(std::string_view text, Path& path) {
    path.leaf = text;
    path.kind = Path::Kind::kParameter;
    std::string_view name = text;
    if (text.ends_with("()")) {
        path.kind = Path::Kind::kCommand;
        name.remove_suffix(2);
    } else if (text.ends_with('!')) {
        path.kind = Path::Kind::kEvent;
        name.remove_suffix(1);
    }
    if (isName(name)) return;
    // An instance or a search without its last dot: nothing else can follow it.
    Segment segment;
    path.wrong = parseSegment(name, segment);
    if (!path.wrong.empty()) return;
    if (path.kind != Path::Kind::kParameter || segment.kind == Segment::Kind::kReference) {
        path.wrong = "\"" + std::string(text) + "\" is not a name";
        return;
    }
    path.segments.push_back(std::move(segment));
    path.leaf.clear();
    path.kind = Path::Kind::kObject;
}

}  // namespace

bool isNumber(std::string_view segment) {
    return !segment.empty() && std::all_of(segment.begin(), segment.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool Path::searches() const {
    return std::any_of(segments.begin(), segments.end(), [](const Segment& segment) {
        return segment.kind == Segment::Kind::kAll || segment.kind == Segment::Kind::kSearch ||
               (segment.kind == Segment::Kind::kReference && segment.number == 0);
    });
}

Path parseRelativePath(std::string_view text) {
    Path path;
    for (std::size_t dot = segmentEnd(text); dot != std::string_view::npos; dot = segmentEnd(text)) {
        Segment segment;
        path.wrong = parseSegment(text.substr(0, dot), segment);
        if (!path.wrong.empty()) return path;
        path.segments.push_back(std::move(segment));
        text.remove_prefix(dot + 1);
    }
    if (!text.empty()) parseLeaf(text, path);
    return path;
}

Path parsePath(std::string_view text) {
    Path path;
    if (text.size() > kMaxPath) {
        path.wrong = "a path has at most 4096 characters";
        return path;
    }
    if (text == "Device") return path;
    if (!text.starts_with(kRoot)) {
        path.wrong = "paths begin with \"Device.\"";
        return path;
    }
    return parseRelativePath(text.substr(kRoot.size()));
}

bool PathLess::operator()(std::string_view left, std::string_view right) const {
    const std::size_t shorter = std::min(left.size(), right.size());
    const char* const one = left.data();
    const char* const other = right.data();
    std::size_t at = 0;
    // Paths share long beginnings: eight characters at a time.
    constexpr std::size_t kStride = 8;
    while (at + kStride <= shorter && std::memcmp(one + at, other + at, kStride) == 0)
        at += kStride;
    while (at < shorter && one[at] == other[at])
        ++at;
    if (at == right.size()) return false;
    if (at == left.size()) return true;
    // The segments in which they differ.
    const std::size_t begin = left.substr(0, at).rfind('.') + 1;
    const std::string_view mine = left.substr(begin, left.find('.', begin) - begin);
    const std::string_view theirs = right.substr(begin, right.find('.', begin) - begin);
    if (isNumber(mine) && isNumber(theirs) && mine.size() != theirs.size()) return mine.size() < theirs.size();
    return mine < theirs;
}

std::string_view tableOf(std::string_view row) {
    row.remove_suffix(1);
    return row.substr(0, row.rfind('.') + 1);
}

}  // namespace quorvel::agent
