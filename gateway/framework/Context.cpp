// Object contexts: initialisation mark and set map at the start of a block that the host hands out.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "gateway/framework/Platform.h"

namespace {

using quorvel::framework::kBadArgument;
using quorvel::framework::kDone;

constexpr std::uint32_t kMark = 0x51564358;
constexpr std::size_t kMapSize = QUORVEL_CONTEXT_HEADER_SIZE - sizeof kMark;
constexpr std::uint32_t kNodes = kMapSize * 8;
static_assert(kNodes == 1024);

// Callers allocate the blocks, which may be unaligned.
unsigned char* mapOf(void* ctx) {
    return static_cast<unsigned char*>(ctx) + sizeof kMark;
}

unsigned char bitOf(std::uint32_t node) {
    return static_cast<unsigned char>(1U << (node % 8));
}

}  // namespace

std::uint32_t Quorvel_ContextInit(void* ctx, std::uint32_t size) {
    if (ctx == nullptr || size < QUORVEL_CONTEXT_HEADER_SIZE) return kBadArgument;
    std::memset(ctx, 0, size);
    std::memcpy(ctx, &kMark, sizeof kMark);
    return kDone;
}

std::uint32_t Quorvel_IsContextInit(void* ctx) {
    if (ctx == nullptr) return 1;
    return std::memcmp(ctx, &kMark, sizeof kMark) == 0 ? 0 : 1;
}

std::uint32_t Quorvel_ContextSetMap(void* ctx, std::uint32_t node) {
    if (ctx == nullptr || node >= kNodes) return kBadArgument;
    unsigned char& byte = mapOf(ctx)[node / 8];
    byte = static_cast<unsigned char>(byte | bitOf(node));
    return kDone;
}

std::uint32_t Quorvel_IsContextSetMap(void* ctx, std::uint32_t node) {
    if (ctx == nullptr || node >= kNodes) return 0;
    return (mapOf(ctx)[node / 8] & bitOf(node)) != 0 ? 1 : 0;
}

std::uint32_t Quorvel_ContextClearMap(void* ctx, std::uint32_t node) {
    if (ctx == nullptr || node >= kNodes) return kBadArgument;
    unsigned char& byte = mapOf(ctx)[node / 8];
    byte = static_cast<unsigned char>(byte & ~bitOf(node));
    return kDone;
}

std::uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    if (ctx == nullptr) return kBadArgument;
    std::memset(mapOf(ctx), 0, kMapSize);
    return kDone;
}
