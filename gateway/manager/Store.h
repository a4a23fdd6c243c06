#pragma once

#include <functional>
#include <optional>
#include <string>

#include "gateway/manager/Model.h"

namespace quorvel::manager {

/// The non-volatile store: one JSON file, always either the old or the new one, never half of either.
class Store {
  public:
    explicit Store(std::string path);

    /// Reads the file. A missing file gives nothing saved. A damaged one is kept aside with the suffix ".damaged",
    /// gives nothing saved, and sets `problem` to a text for a person.
    [[nodiscard]] Saved load(std::string& problem) const;

    /// Replaces the file and makes it durable before it returns. Gives what failed, in which case the old file stays,
    /// or nothing. `halfway` is called when half of it is written.
    [[nodiscard]] std::optional<std::string> save(
        const Saved& saved, const std::function<void()>& halfway = [] {}) const;

    [[nodiscard]] const std::string& path() const {
        return path_;
    }

  private:
    std::string path_;
};

/// The file's text, and back; nothing for a text that is not a store's.
[[nodiscard]] std::string encodeSaved(const Saved& saved);
[[nodiscard]] std::optional<Saved> decodeSaved(const std::string& text);

}  // namespace quorvel::manager
