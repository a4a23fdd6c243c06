#include "gateway/hostd/protocol/Codec.h"

#include <algorithm>

namespace quorvel::hostd::protocol {
namespace {

constexpr std::size_t kShownOfAValue = 60;

bool isPlain(char c) {
    return c >= 0x20 && c < 0x7f && c != '"' && c != '\\';
}

}  // namespace

void appendJson(std::string& out, const Json& value) {
    out += value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void appendText(std::string& out, std::string_view text) {
    if (!std::all_of(text.begin(), text.end(), isPlain)) return appendJson(out, std::string(text));
    out += '"';
    out += text;
    out += '"';
}

std::string refusal(const std::string& member, const std::string& expected, const Json& value) {
    std::string shown;
    appendJson(shown, value);
    if (shown.size() > kShownOfAValue) {
        shown.resize(kShownOfAValue);
        shown += "...";
    }
    return (member.empty() ? "the request" : "\"" + member + "\"") + " must be " + expected + "; it is " + shown;
}

}  // namespace quorvel::hostd::protocol
