#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

/// Frames between the WLAN manager and its clients, for both sides. Nothing here allocates or needs a C++ run-time
/// library.
///
/// A frame is a length (of what follows), an operation and a payload, all numbers 32-bit little-endian. A request's
/// payload is the words and texts that its operation takes (see shapeOf); a text is its length and its bytes, or
/// kNoText for a null text. An answer's payload is the call's result, a value, and up to kMaxBlocks blocks of bytes,
/// each with the offset at which the caller's buffer takes it.
namespace quorvel::manager {

inline constexpr std::size_t kMaxFrame = std::size_t{64} * 1024;  ///< length field included
inline constexpr std::size_t kFrameHeader = 8;
inline constexpr std::uint32_t kNoText = 0xffffffff;
inline constexpr std::size_t kMaxWords = 6;
inline constexpr std::size_t kMaxTexts = 2;
inline constexpr std::size_t kMaxBlocks = 4;
/// Bytes of a long answer that travel in one frame.
inline constexpr std::size_t kPiece = std::size_t{60} * 1024;

enum class Operation : std::uint32_t {
    kGet = 1,
    kExtGet,
    kSet,
    kNvramGet,
    kNvramSet,
    kSaveNvram,
    kHalStarted,
    kStartStopServices,
    kRestart,
    kSendCsa,
    kSendCsa2,
    kStaInfo,
    kSsidInfo,
    kClientRxTxStatsResult,
    kSystemUpSecs,
    kWlUpSecs,
    kCiScanStart,
    kCiScanResults,
    kChanimStats,
    kChannelStats,
    kRadioChannelStats2,
    kControl,  ///< text: JSON; a long answer
    kWl,       ///< texts: interface, command; a long answer, result 0 when the command succeeded
    kMore,     ///< word: offset; the next piece of this connection's last long answer
};
inline constexpr std::uint32_t kLastOperation = static_cast<std::uint32_t>(Operation::kMore);

/// The operations' names in counts, in their order.
inline constexpr const char* kOperationNames[] = {"get",
                                                  "extGet",
                                                  "set",
                                                  "nvramGet",
                                                  "nvramSet",
                                                  "saveNvram",
                                                  "halStarted",
                                                  "startStopServices",
                                                  "restart",
                                                  "sendCsa",
                                                  "sendCsa2",
                                                  "staInfo",
                                                  "ssidInfo",
                                                  "clientRxTxStatsResult",
                                                  "systemUpSecs",
                                                  "wlUpSecs",
                                                  "ciScanStart",
                                                  "ciScanResults",
                                                  "chanimStats",
                                                  "channelStats",
                                                  "radioChannelStats2",
                                                  "control",
                                                  "wl",
                                                  "more"};
static_assert(std::size(kOperationNames) == kLastOperation);

/// How many words and texts an operation's request carries.
struct Shape {
    std::size_t words;
    std::size_t texts;
};
[[nodiscard]] Shape shapeOf(Operation operation);

struct Request {
    Operation operation = Operation::kGet;
    std::uint32_t words[kMaxWords] = {};
    std::string_view texts[kMaxTexts];
    bool isNull[kMaxTexts] = {};  ///< the text is null rather than empty
};

struct Block {
    std::uint32_t offset = 0;
    std::span<const std::uint8_t> bytes;
};

struct Answer {
    Operation operation = Operation::kGet;
    std::int32_t result = 0;
    std::uint32_t value = 0;  ///< seconds of an up-time; the whole length of a long answer
    std::size_t blockCount = 0;
    Block blocks[kMaxBlocks];
};

/// Write a whole frame into `out` and return its size, or 0 when it does not fit.
[[nodiscard]] std::size_t encodeRequest(const Request& request, std::span<std::uint8_t> out);
[[nodiscard]] std::size_t encodeAnswer(const Answer& answer, std::span<std::uint8_t> out);

/// Reads a frame's length field, which `bytes` must hold, and returns the whole frame's size, or 0 when no frame has
/// it.
[[nodiscard]] std::size_t frameSize(std::span<const std::uint8_t> bytes);

/// Read a whole frame. Texts and blocks point into `frame`. Return false on anything that encode would not have
/// written.
[[nodiscard]] bool decodeRequest(std::span<const std::uint8_t> frame, Request& request);
[[nodiscard]] bool decodeAnswer(std::span<const std::uint8_t> frame, Answer& answer);

}  // namespace quorvel::manager
