#pragma once

#include <string>

#include "common/Descriptor.h"
#include "gateway/board/Board.h"

namespace quorvel::hostd {

/// Where the calls of the plug-in are recorded, if anywhere.
class Recording {
  public:
    /// Keeps the way to `file`, a path outside the board; empty: nothing is recorded. Throws std::runtime_error when no
    /// recording can be made there.
    explicit Recording(const std::string& file);

    /// Tells whether there is one.
    [[nodiscard]] bool isMade() const {
        return static_cast<bool>(folder_);
    }

    /// Prepares the recording of the board's plug-in. Returns the recorder, to be loaded in its place. Throws
    /// std::runtime_error when the board has none.
    [[nodiscard]] std::string begin(const board::Places& places) const;

    /// Returns a sentence for people when the plug-in was called and nothing was recorded, else the empty text.
    [[nodiscard]] std::string trouble() const;

  private:
    std::string name_;           // of the file in its folder
    common::Descriptor folder_;  // the board need not show it
};

}  // namespace quorvel::hostd
