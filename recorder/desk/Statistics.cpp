// How often and how long the functions of a recording were called.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>

#include "recorder/desk/Show.h"

namespace quorvel::recorder {

namespace {

using Json = nlohmann::ordered_json;

struct Numbers {
    uint64_t calls = 0;
    uint64_t failures = 0;
    uint64_t nanoseconds = 0;
    uint64_t longest = 0;
};

struct Statistics {
    std::map<std::string, Numbers> functions;
    std::map<std::string, uint64_t> platform;
    uint64_t logLines = 0;
    uint64_t missing = 0;
};

Statistics count(const Recording& recording) {
    Statistics found;
    const CallTree tree = makeCallTree(recording);
    for (const Call& call : tree.calls) {
        Numbers& numbers = found.functions[call.begin->function];
        ++numbers.calls;
        if (call.end == nullptr) continue;
        const auto results = call.end->valuesOf(ValueRole::kResult);
        // The check of a node answers a truth value.
        const bool isCheck = call.begin->function.ends_with("CheckContextNodeSet");
        if (!isCheck && !results.empty() && results.front()->number != 0) ++numbers.failures;
        const uint64_t took = call.end->nanoseconds - call.begin->nanoseconds;
        numbers.nanoseconds += took;
        numbers.longest = std::max(numbers.longest, took);
    }
    for (const Record& record : recording.records) {
        if (record.kind == RecordKind::kPlatform) ++found.platform[record.function];
        if (record.kind == RecordKind::kLog) ++found.logLines;
        if (record.kind == RecordKind::kGap) found.missing += record.values[0].number;
    }
    return found;
}

}  // namespace

void showStatistics(std::ostream& out, const Recording& recording) {
    const Statistics found = count(recording);
    std::array<char, 160> line{};
    const auto print = [&](auto... values) {
        (void)std::snprintf(line.data(), line.size(), values...);
        out << line.data() << '\n';
    };
    print("%-56s %9s %9s %12s %12s", "function", "calls", "not 0", "total ms", "longest ms");
    constexpr double kMillisecond = 1e6;
    for (const auto& [name, numbers] : found.functions) {
        print("%-56s %9llu %9llu %12.3f %12.3f", name.c_str(), static_cast<unsigned long long>(numbers.calls),
              static_cast<unsigned long long>(numbers.failures),
              static_cast<double>(numbers.nanoseconds) / kMillisecond,
              static_cast<double>(numbers.longest) / kMillisecond);
    }
    print("%-56s %9s", "platform call", "calls");
    for (const auto& [name, calls] : found.platform)
        print("%-56s %9llu", name.c_str(), static_cast<unsigned long long>(calls));
    print("%-56s %9llu", "log lines", static_cast<unsigned long long>(found.logLines));
    print("%-56s %9llu", "missing records", static_cast<unsigned long long>(found.missing));
}

void showStatisticsPlain(std::ostream& out, const Recording& recording) {
    const Statistics found = count(recording);
    for (const auto& [name, numbers] : found.functions) {
        out << name << '\t' << numbers.calls << '\t' << numbers.failures << '\t' << numbers.nanoseconds << '\t'
            << numbers.longest << '\n';
    }
    for (const auto& [name, calls] : found.platform)
        out << name << '\t' << calls << '\n';
}

void showStatisticsJson(std::ostream& out, const Recording& recording) {
    const Statistics found = count(recording);
    Json document{{"functions", Json::object()},
                  {"platform", found.platform},
                  {"logLines", found.logLines},
                  {"missingRecords", found.missing}};
    for (const auto& [name, numbers] : found.functions) {
        document["functions"][name] = {{"calls", numbers.calls},
                                       {"notZero", numbers.failures},
                                       {"nanoseconds", numbers.nanoseconds},
                                       {"longest", numbers.longest}};
    }
    out << document.dump(2) << '\n';
}

}  // namespace quorvel::recorder
