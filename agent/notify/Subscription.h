#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Timers.h"
#include "agent/model/Schema.h"
#include "agent/model/Store.h"
#include "agent/path/Path.h"

namespace quorvel::agent {

/// One path of a ReferenceList.
struct ReferencePattern {
    std::string text;
    Path path;
    /// The path searches by values or follows references: `found` holds where it has led to last.
    bool dynamic = false;
    std::vector<std::string> found = {};

    /// Returns whether the pattern covers a parameter, command or event (by kind) of an object instance.
    [[nodiscard]] bool coversLeaf(Path::Kind kind, std::string_view object, std::string_view leaf) const;
    /// Returns whether the pattern names the table of a row: "T.", "T.*.".
    [[nodiscard]] bool coversCreated(std::string_view row) const;
    /// Returns whether the pattern names a row: "T.", "T.*.", "T.3.".
    [[nodiscard]] bool coversDeleted(std::string_view row) const;
};

/// A row of Device.LocalAgent.Subscription, typed.
struct Subscription {
    enum class Type : std::uint8_t {
        kNone,
        kValueChange,
        kObjectCreation,
        kObjectDeletion,
        kOperationComplete,
        kEvent
    };
    std::string row;
    std::string recipient;  ///< row of the controller
    std::string id;
    Type type = Type::kNone;
    bool enabled = false;
    bool persistent = false;
    bool retry = false;
    std::uint32_t expiration = 0;  ///< s, 0: never
    std::optional<BoardInstant> dies = {};
    std::vector<ReferencePattern> references = {};
    Timers::Id death = 0;
};

/// Reads a subscription's row.
[[nodiscard]] Subscription readSubscription(const Store& store, const std::string& row);

/// Parses a path of a ReferenceList.
[[nodiscard]] ReferencePattern parseReferencePattern(const Schema& schema, const std::string& text);

}  // namespace quorvel::agent
