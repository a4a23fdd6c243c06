#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::scripted {

// The lines that a source file logged, in order, as "level function: text"; with `last`, only the last ones.
inline std::vector<std::string> logLines(const Platform& platform, const std::string& file,
                                         std::size_t last = static_cast<std::size_t>(-1)) {
    std::vector<std::string> lines;
    for (const LogLine& line : platform.logs()) {
        if (line.file == file) {
            lines.push_back(std::to_string(line.level) + " " + line.function + ": " + line.text);
        }
    }
    if (lines.size() > last) {
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(last));
    }
    return lines;
}

// Whether a line of this level and text was logged; the first such line must be that function's, in that source file.
inline bool loggedBy(const Platform& platform, const std::string& file, const std::string& function,
                     std::uint32_t level, const std::string& text) {
    for (const LogLine& line : platform.logs()) {
        if (line.level == level && line.text == text) {
            EXPECT_EQ(line.function, function) << text;
            EXPECT_EQ(line.file, file) << text;
            return true;
        }
    }
    return false;
}

}  // namespace quorvel::scripted
