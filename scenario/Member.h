#pragma once

#include <functional>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quorvel::scenario {

/// A value is not what its place in the file allows.
class Mistake : public std::runtime_error {
  public:
    Mistake(std::string place, const std::string& what) : std::runtime_error(what), pointer(std::move(place)) {}
    std::string pointer;
};

/// A value of the file together with its place, so that whatever is wrong with it can be named. All but has() and
/// find() throw Mistake.
class Member {
  public:
    Member(const nlohmann::ordered_json& value, std::string pointer) : value_(value), pointer_(std::move(pointer)) {}

    [[noreturn]] void fail(const std::string& expected) const;

    /// Checks that it is an object with no other keys than these.
    void allow(std::initializer_list<std::string_view> keys) const;
    [[nodiscard]] bool has(std::string_view key) const;
    [[nodiscard]] Member at(std::string_view key) const;
    void each(const std::function<void(const Member&)>& visit) const;
    void eachKey(const std::function<void(const std::string&, const Member&)>& visit) const;

    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string oneOf(std::initializer_list<std::string_view> values) const;
    [[nodiscard]] bool boolean() const;
    [[nodiscard]] std::uint64_t number(std::uint64_t low, std::uint64_t high) const;
    [[nodiscard]] int signedNumber(int low, int high) const;
    [[nodiscard]] std::int64_t milliseconds() const;
    [[nodiscard]] std::string mac() const;
    [[nodiscard]] std::string expression() const;

    [[nodiscard]] const nlohmann::ordered_json& value() const {
        return value_;
    }
    [[nodiscard]] const std::string& pointer() const {
        return pointer_;
    }

  private:
    const nlohmann::ordered_json& value_;
    std::string pointer_;
};

}  // namespace quorvel::scenario
