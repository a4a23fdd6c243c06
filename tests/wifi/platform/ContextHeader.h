#pragma once

#include <quorvel.h>

#include <cstdint>
#include <cstring>

// The host's header of an object context: mark, size, and one bit per node. A context may have any
// address, so the header is copied out and in.
namespace quorvel::contextheader {

struct Header {
    std::uint32_t mark;
    std::uint32_t size;
    std::uint8_t setMap[QUORVEL_CONTEXT_HEADER_SIZE - 8];
};
static_assert(sizeof(Header) == QUORVEL_CONTEXT_HEADER_SIZE);

constexpr std::uint32_t kMark = 0x51564C43U;
constexpr std::uint32_t kNodes = sizeof(Header::setMap) * 8;

[[nodiscard]] inline Header load(const void* ctx) {
    Header header{};
    std::memcpy(&header, ctx, sizeof header);
    return header;
}

inline void store(void* ctx, const Header& header) {
    std::memcpy(ctx, &header, sizeof header);
}

// Clears a context of `size` bytes and marks it as initialised.
inline void initialise(void* ctx, std::uint32_t size) {
    std::memset(ctx, 0, size);
    Header header{};
    header.mark = kMark;
    header.size = size;
    store(ctx, header);
}

[[nodiscard]] inline bool isInitialised(const void* ctx) {
    return load(ctx).mark == kMark;
}

[[nodiscard]] inline bool isSet(const void* ctx, std::uint32_t node) {
    return (load(ctx).setMap[node / 8] & (1U << (node % 8))) != 0;
}

inline void set(void* ctx, std::uint32_t node) {
    Header header = load(ctx);
    header.setMap[node / 8] = static_cast<std::uint8_t>(header.setMap[node / 8] | (1U << (node % 8)));
    store(ctx, header);
}

inline void clear(void* ctx, std::uint32_t node) {
    Header header = load(ctx);
    header.setMap[node / 8] = static_cast<std::uint8_t>(header.setMap[node / 8] & ~(1U << (node % 8)));
    store(ctx, header);
}

inline void clearAll(void* ctx) {
    Header header = load(ctx);
    std::memset(header.setMap, 0, sizeof header.setMap);
    store(ctx, header);
}

}  // namespace quorvel::contextheader
