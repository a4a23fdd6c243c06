#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/MacAddress.h"

namespace quorvel::common {

/// A JSON value breaks a rule of its schema.
class SchemaError : public std::runtime_error {
  public:
    /// `at` is the value's JSON pointer; `text` says what was expected and what was found.
    SchemaError(std::string at, const std::string& text) : std::runtime_error(text), pointer(std::move(at)) {}
    std::string pointer;
};

/// A JSON value together with its pointer, so that messages can name it. Every function but has() throws SchemaError
/// when the value breaks the rule that the function states. The value must outlive the cursor.
class JsonCursor {
  public:
    JsonCursor(const nlohmann::ordered_json& value, std::string pointer)
        : value_(value), pointer_(std::move(pointer)) {}

    /// Throws: "expected EXPECTED, found VALUE".
    [[noreturn]] void fail(const std::string& expected) const;

    /// Checks that the value is an object with no other keys than these.
    void allow(std::initializer_list<std::string_view> keys) const;
    /// Tells whether the value is an object with the key.
    [[nodiscard]] bool has(std::string_view key) const;
    /// Returns the member of an object.
    [[nodiscard]] JsonCursor at(std::string_view key) const;
    /// Visits the entries of an array of at most `limit` entries, in order.
    void each(const std::function<void(const JsonCursor&)>& visit,
              std::size_t limit = std::numeric_limits<std::size_t>::max()) const;
    /// Visits the members of an object, in order.
    void eachKey(const std::function<void(const std::string&, const JsonCursor&)>& visit) const;

    /// Returns a text that is not empty.
    [[nodiscard]] std::string text() const;
    /// Returns a text, possibly empty, of at most `limit` bytes without control characters.
    [[nodiscard]] std::string boundedText(std::size_t limit) const;
    /// Returns a text that is one of `values`.
    [[nodiscard]] std::string oneOf(std::initializer_list<std::string_view> values) const;
    [[nodiscard]] bool boolean() const;
    /// Return a whole number from `low` to `high`.
    [[nodiscard]] std::int64_t number(std::int64_t low, std::int64_t high) const;
    [[nodiscard]] int integer(int low, int high) const;
    [[nodiscard]] unsigned count(unsigned low, unsigned high) const;
    /// Return a time of 0 to 10,000,000 seconds, whole or not.
    [[nodiscard]] double seconds() const;
    [[nodiscard]] std::int64_t milliseconds() const;
    /// Returns the MAC address of one station or access point.
    [[nodiscard]] MacAddress mac() const;

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

/// The first thing that is wrong with a JSON document.
struct DocumentProblem {
    std::string position;  ///< "LINE:COLUMN", both from 1
    std::string pointer;   ///< JSON pointer; empty for the whole document
    std::string text;

    /// Returns one line for people: "NAME:LINE:COLUMN: POINTER: TEXT", with "/" for the whole document.
    [[nodiscard]] std::string message(const std::string& name) const;
};

/// Parses `text` and hands its root to `read`. Returns the first problem: the text nests too deeply, is not JSON, or
/// `read` throws SchemaError.
[[nodiscard]] std::optional<DocumentProblem> readDocument(std::string_view text,
                                                          const std::function<void(const JsonCursor&)>& read);

}  // namespace quorvel::common
