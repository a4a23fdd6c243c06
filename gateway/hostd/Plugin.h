#pragma once

#include <span>
#include <string>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Imports.h"

namespace quorvel::hostd {

/// The loaded plug-in. It stays loaded for the life of the process: its listener thread may not outlive its code.
class Plugin {
  public:
    /// Loads the library and binds its calls of `supplied`, which the other libraries do not share. Throws
    /// std::runtime_error saying what is wrong with it.
    explicit Plugin(const std::string& file, std::span<const Supplied> supplied = {});

    /// Throws std::runtime_error when the library's own calls of sleep() do not lead to `sleep`, the host process's:
    /// the board's clock could not run ahead.
    void requireSleep(unsigned (*sleep)(unsigned)) const;

    [[nodiscard]] std::span<const TableEntry> table() const {
        return table_;
    }

    /// Returns the exported function called `name`, or null.
    template <typename Function>
    [[nodiscard]] Function* find(const std::string& name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

    /// Returns what the exported functions of a node's object begin with ("WiFiRadio"), found by the names of its
    /// accessors, or the empty text for an object that has none.
    [[nodiscard]] static std::string prefixOf(const DataModel& model, int node);

  private:
    [[nodiscard]] void* symbol(const std::string& name) const;

    void* handle_ = nullptr;
    std::span<const TableEntry> table_;
};

}  // namespace quorvel::hostd
