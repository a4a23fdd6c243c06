#include "common/JsonPosition.h"

namespace quorvel::common {
namespace {

class Walker {
  public:
    explicit Walker(std::string_view text) : text_(text) {}

    void skipBlanks() {
        while (at_ < text_.size() &&
               (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\n' || text_[at_] == '\r')) {
            ++at_;
        }
    }

    // Skips a text and returns the characters between its quotes, with its escapes.
    std::string_view skipText() {
        const std::size_t start = ++at_;
        while (at_ < text_.size() && text_[at_] != '"')
            at_ += text_[at_] == '\\' ? 2 : 1;
        const std::size_t end = at_ < text_.size() ? at_ : text_.size();
        at_ = end + 1;
        return text_.substr(start, end - start);
    }

    void skipValue() {
        std::size_t depth = 0;
        do {
            skipBlanks();
            if (at_ >= text_.size()) return;
            const char c = text_[at_];
            if (c == '"') {
                (void)skipText();  // only its end matters
            } else if (c == '{' || c == '[') {
                ++depth;
                ++at_;
            } else if (c == '}' || c == ']') {
                if (depth == 0) return;
                --depth;
                ++at_;
            } else if (c == ',' || c == ':') {
                if (depth == 0) return;
                ++at_;
            } else {
                while (at_ < text_.size() && std::string_view(",:]} \t\r\n").find(text_[at_]) == std::string_view::npos)
                    ++at_;
            }
        } while (depth > 0);
    }

    // Moves from an object or array to the value of `token`; stays where it is when there is none.
    bool enter(std::string_view token) {
        skipBlanks();
        const std::size_t start = at_;
        if (at_ >= text_.size() || (text_[at_] != '{' && text_[at_] != '[')) return false;
        const bool object = text_[at_++] == '{';
        for (std::size_t index = 0;; ++index) {
            skipBlanks();
            if (at_ >= text_.size() || text_[at_] == '}' || text_[at_] == ']') break;
            bool found = !object && std::to_string(index) == token;
            if (object) {
                if (text_[at_] != '"') break;
                found = skipText() == token;
                skipBlanks();
                if (at_ < text_.size() && text_[at_] == ':') ++at_;
                skipBlanks();
            }
            if (found) return true;
            const std::size_t before = at_;
            skipValue();
            skipBlanks();
            if (at_ < text_.size() && text_[at_] == ',') ++at_;
            if (at_ == before) break;
        }
        at_ = start;
        return false;
    }

    [[nodiscard]] std::size_t position() const {
        return at_;
    }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

std::string placeOfByte(std::string_view text, std::size_t offset) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        ++column;
        if (text[i] != '\n') continue;
        ++line;
        column = 1;
    }
    return std::to_string(line) + ":" + std::to_string(column);
}

std::string placeOfPointer(std::string_view text, std::string_view pointer) {
    Walker walker(text);
    walker.skipBlanks();
    while (!pointer.empty()) {
        pointer.remove_prefix(1);
        const std::size_t end = pointer.find('/');
        const std::string_view token = pointer.substr(0, end);
        if (!walker.enter(token)) break;
        pointer = end == std::string_view::npos ? std::string_view{} : pointer.substr(end);
    }
    return placeOfByte(text, walker.position());
}

}  // namespace quorvel::common
