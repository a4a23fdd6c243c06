#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvel::selftest {

/// The findings of the checks by group, and the call under way, in case the plug-in does not return from
/// it.
class Report {
  public:
    /// Starts a group of checks; `rule` says in a few words what holds in it.
    void begin(const std::string& rule);
    /// Counts a check of the current group; when it failed, `trouble` says where and what was expected.
    void check(bool passed, const std::string& trouble);
    /// Checks that a function returned what it should.
    void expect(const std::string& where, std::uint32_t found, std::uint32_t expected);
    /// Adds a failure without counting a check of its own: what could not be checked.
    void fail(const std::string& trouble);

    [[nodiscard]] bool passed() const;
    /// For people; the marks are letters where the terminal cannot show others.
    void printText(bool coloured, bool utf8) const;
    void printJson(const std::string& plugin) const;
    /// A line per rule (rule, checks, failures) and per failure ("failure", rule, what), tab-separated.
    void printPlain() const;

  private:
    struct Group {
        std::string rule;
        unsigned checks = 0;
        std::vector<std::string> troubles;
    };
    [[nodiscard]] unsigned checks() const;

    std::vector<Group> groups_;
};

/// Returns {"error": text} as JSON.
[[nodiscard]] std::string errorAsJson(const std::string& text);

}  // namespace quorvel::selftest
