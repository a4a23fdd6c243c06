#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvel::hostd {

/// A path as people write it, taken apart at its dots; those between brackets or quotes do not count.
struct PathText {
    struct Segment {
        std::string_view text;
        std::size_t end = 0;  ///< where the text ends in the path
    };

    std::vector<Segment> objects;  ///< what ends with a dot, "Device" left out
    std::string_view name;         ///< the text behind the last dot; empty for a partial path
    std::string_view station;      ///< the MAC text in brackets behind the name
    bool rooted = false;           ///< whether the path begins with "Device."

    explicit PathText(std::string_view path);
};

// The kinds of segments.
[[nodiscard]] bool isInstanceNumber(std::string_view segment);
[[nodiscard]] bool isExpression(std::string_view segment);  ///< [Enable==true]
[[nodiscard]] bool isReference(std::string_view segment);   ///< SSIDReference+
[[nodiscard]] bool standsForInstances(std::string_view segment);

}  // namespace quorvel::hostd
