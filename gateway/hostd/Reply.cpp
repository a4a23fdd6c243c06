#include "gateway/hostd/Reply.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace quorvel::hostd {
namespace {

// Returns the length of the well-formed UTF-8 sequence at the start of `text`, or 0. Control characters are not.
std::size_t sequence(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x20 || lead == 0x7f) return 0;
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc2 ? 2 : 0;
    if (length == 0 || lead > 0xf4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80) return 0;
    }
    // Overlong forms, surrogates, what lies beyond Unicode, and C1 controls.
    if ((lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xed && byte(1) > 0x9f)) return 0;
    if ((lead == 0xf0 && byte(1) < 0x90) || (lead == 0xf4 && byte(1) > 0x8f)) return 0;
    if (lead == 0xc2 && byte(1) < 0xa0) return 0;
    return length;
}

}  // namespace

std::string presentable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = sequence(text);
        if (length > 0) {
            shown.append(text.substr(0, length));
            text.remove_prefix(length);
            continue;
        }
        std::array<char, 8> escape{};
        (void)std::snprintf(escape.data(), escape.size(), "\\x%02x",
                            static_cast<unsigned>(static_cast<unsigned char>(text.front())));
        shown += escape.data();
        text.remove_prefix(1);
    }
    return shown;
}

protocol::Json toJson(const Value& value) {
    switch (value.type) {
        case Type::kText:
            return presentable(value.text);
        case Type::kBoolean:
            return value.number != 0;
        case Type::kUnsignedInt:
            return value.number;
        case Type::kInt:
            return static_cast<std::int32_t>(value.number);
    }
    return nullptr;
}

void Reply::fault(Fault fault) {
    fault.path = presentable(fault.path);
    fault.reason = presentable(fault.reason);
    fault.log = presentable(fault.log);
    protocol::Part sent;
    sent.faults.push_back(std::move(fault));
    part(sent);
}

}  // namespace quorvel::hostd
