#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/Comparison.h"
#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// The conditions between the brackets of `Device.WiFi.SSID.[Enable==true && SSID~="Attic"].`, which must all hold.
class SearchExpression {
  public:
    using Operator = common::Comparison;

    struct Condition {
        std::string path;  ///< the parameter, relative to the object instance
        Operator comparison = Operator::kEqual;
        std::string operand;  ///< without its quotes
        bool quoted = false;
    };

    /// Takes `text` apart. Returns what is wrong with it, or the empty text.
    [[nodiscard]] std::string parse(std::string_view text);

    [[nodiscard]] const std::vector<Condition>& conditions() const {
        return conditions_;
    }

    /// Tells whether the comparison makes sense for a parameter of this type. Returns what is wrong, or the empty text.
    [[nodiscard]] static std::string check(const Condition& condition, Type type);

    /// Tells whether a value meets the condition, which check() has found to make sense. `~=` asks whether the operand
    /// is an element of the comma-separated list; texts are in order of their bytes.
    [[nodiscard]] static bool holds(const Condition& condition, const Value& value);

  private:
    std::vector<Condition> conditions_;
};

}  // namespace quorvel::hostd
