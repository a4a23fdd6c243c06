#include "selftest/Report.h"

#include <algorithm>
#include <cstdio>

namespace quorvel::selftest {
namespace {

// A broken library fails one rule in hundreds of places; the first ones tell which rule.
constexpr std::size_t kShown = 12;

std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char each : text) {
        if (each == '"' || each == '\\') json += '\\';
        if (static_cast<unsigned char>(each) < 0x20) {
            char code[8];
            (void)std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(each));
            json += code;
        } else {
            json += each;
        }
    }
    return json + '"';
}

}  // namespace

void Report::begin(const std::string& rule) {
    groups_.push_back({rule, 0, {}});
}

void Report::check(bool passed, const std::string& trouble) {
    ++groups_.back().checks;
    if (!passed) groups_.back().troubles.push_back(trouble);
}

void Report::expect(const std::string& where, std::uint32_t found, std::uint32_t expected) {
    check(found == expected, where + ": returned " + std::to_string(found) + ", expected " + std::to_string(expected));
}

void Report::fail(const std::string& trouble) {
    groups_.back().troubles.push_back(trouble);
}

bool Report::passed() const {
    return std::all_of(groups_.begin(), groups_.end(), [](const Group& group) { return group.troubles.empty(); });
}

unsigned Report::checks() const {
    unsigned sum = 0;
    for (const Group& group : groups_)
        sum += group.checks;
    return sum;
}

void Report::printText(bool coloured, bool utf8) const {
    const auto mark = [coloured](const char* text, const char* colour) {
        return coloured ? std::string(colour) + text + "\033[0m" : std::string(text);
    };
    const std::string good = mark(utf8 ? "✓" : "+", "\033[32m");
    const std::string bad = mark(utf8 ? "✗" : "x", "\033[31m");
    std::size_t troubles = 0;
    for (const Group& group : groups_) {
        std::printf("%s %-63s %5u checks", (group.troubles.empty() ? good : bad).c_str(), group.rule.c_str(),
                    group.checks);
        if (!group.troubles.empty()) std::printf(", %zu failed", group.troubles.size());
        std::printf("\n");
        for (std::size_t i = 0; i < group.troubles.size() && i < kShown; ++i)
            std::printf("    %s\n", group.troubles[i].c_str());
        if (group.troubles.size() > kShown) {
            std::printf("    ... and %zu more; --json lists them all\n", group.troubles.size() - kShown);
        }
        troubles += group.troubles.size();
    }
    if (troubles == 0) {
        std::printf("conforms: %u checks in %zu groups passed\n", checks(), groups_.size());
    } else {
        std::printf("does not conform: %zu failures in %u checks\n", troubles, checks());
    }
    (void)std::fflush(stdout);
}

void Report::printPlain() const {
    for (const Group& group : groups_) {
        std::printf("%s\t%u\t%zu\n", group.rule.c_str(), group.checks, group.troubles.size());
        for (const std::string& trouble : group.troubles)
            std::printf("failure\t%s\t%s\n", group.rule.c_str(), trouble.c_str());
    }
    (void)std::fflush(stdout);
}

std::string errorAsJson(const std::string& text) {
    return "{\n  \"error\": " + quoted(text) + "\n}\n";
}

void Report::printJson(const std::string& plugin) const {
    std::string json = "{\n  \"plugin\": " + quoted(plugin) + ",\n  \"passed\": " + (passed() ? "true" : "false") +
                       ",\n  \"checks\": " + std::to_string(checks()) + ",\n  \"groups\": [";
    for (const Group& group : groups_) {
        json += &group == groups_.data() ? "\n" : ",\n";
        json += "    {\"rule\": " + quoted(group.rule) + ", \"checks\": " + std::to_string(group.checks) +
                ", \"failures\": [";
        for (const std::string& trouble : group.troubles)
            json += (&trouble == group.troubles.data() ? "" : ", ") + quoted(trouble);
        json += "]}";
    }
    std::printf("%s\n  ]\n}\n", json.c_str());
    (void)std::fflush(stdout);
}

}  // namespace quorvel::selftest
