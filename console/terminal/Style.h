#pragma once

#include <string>
#include <string_view>

namespace quorvel::console {

enum class Colour { kPlain, kName, kGood, kBad, kFaint, kHeading };

/// How text is dressed: colours only on a terminal that wants them.
class Style {
  public:
    /// Dresses text for the terminal at `descriptor`, if it is one and TERM is not "dumb"; in colours if `colours` are
    /// wanted and NO_COLOR is not set.
    Style(bool colours, int descriptor);

    [[nodiscard]] std::string dress(std::string_view text, Colour colour) const;
    [[nodiscard]] bool onTerminal() const {
        return terminal_;
    }
    /// Returns how many cells a line of the terminal has, 0 when there is none.
    [[nodiscard]] std::size_t columns() const;

  private:
    int descriptor_;
    bool terminal_;
    bool coloured_;
};

/// Tells whether the user's locale shows UTF-8.
[[nodiscard]] bool showsUtf8();

/// Returns a bar of `width` cells that is full to `share` (0 to 1).
[[nodiscard]] std::string bar(double share, unsigned width);

/// Returns the bar of a signal strength: empty at -95 dBm, full at -35 dBm.
[[nodiscard]] std::string signalBar(int dbm);

/// Returns the number of cells that the text takes on a terminal.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// Returns what of the text fits into so many cells.
[[nodiscard]] std::string cutTo(std::string_view text, std::size_t cells);

/// Returns seconds as "0:03", "2:03:04", "3 d 4 h".
[[nodiscard]] std::string clockText(std::uint64_t seconds);

/// Returns seconds as "3 d 4 h", "5 min 6 s".
[[nodiscard]] std::string duration(std::uint64_t seconds);

}  // namespace quorvel::console
