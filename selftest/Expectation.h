#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "wifi/model/Contexts.h"

namespace quorvel::selftest {

inline constexpr std::size_t kWordsPerEntry = 72;

/// A parameter as a conforming library serves it.
struct Parameter {
    const model::Object* object = nullptr;
    const model::Parameter* row = nullptr;
    unsigned depth = 0;
    std::size_t field = 0;  ///< byte offset in the object context

    [[nodiscard]] bool readable() const {
        return model::readable(*row);
    }
    [[nodiscard]] bool writable() const {
        return model::writable(*row);
    }
    /// Its setter fills the object context, instead of acting at once.
    [[nodiscard]] bool staged() const {
        return writable() && row->access != model::Access::kAtOnce && row->access != model::Access::kCommand;
    }
    [[nodiscard]] bool text() const {
        return row->type.kind == model::Kind::kString;
    }
    /// Reads one station, whose MAC it takes as a text.
    [[nodiscard]] bool perStation() const {
        return row->type.ofStation;
    }
    [[nodiscard]] std::string path() const {
        return std::string(object->path) + "." + std::string(row->name);
    }
    [[nodiscard]] std::string getter() const {
        return std::string(row->getter);
    }
    [[nodiscard]] std::string setter() const {
        return std::string(row->setter);
    }
    [[nodiscard]] std::string function(const char* suffix) const {
        return std::string(object->prefix) + suffix;
    }
    /// The words of its table entry from word 2 on: a number as text, or a function's name; empty for 0.
    [[nodiscard]] std::array<std::string, kWordsPerEntry> words() const;
};

/// All parameters in the order of the exported table.
[[nodiscard]] const std::vector<Parameter>& parameters();

[[nodiscard]] unsigned depthOf(const model::Object& object);
/// Returns the bytes of the object's contexts.
[[nodiscard]] std::uint32_t contextSizeOf(const model::Object& object);
/// The highest node that CheckContextNodeSet answers for.
[[nodiscard]] std::uint32_t nodeLimitOf(const model::Object& object);

}  // namespace quorvel::selftest
