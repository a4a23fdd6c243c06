// SipHash-2-4, the keyed hash of short inputs by Aumasson and Bernstein.
#pragma once

#include <cstdint>

namespace quorvel::recorder {

struct SipKey {
    uint64_t low;
    uint64_t high;
};

/// Returns the 64-bit hash of `size` bytes under `key`.
constexpr uint64_t siphash(const SipKey& key, const uint8_t* bytes, uint32_t size) {
    uint64_t v0 = key.low ^ 0x736f6d6570736575U;
    uint64_t v1 = key.high ^ 0x646f72616e646f6dU;
    uint64_t v2 = key.low ^ 0x6c7967656e657261U;
    uint64_t v3 = key.high ^ 0x7465646279746573U;
    const auto rotated = [](uint64_t value, unsigned by) { return value << by | value >> (64 - by); };
    const auto round = [&] {
        v0 += v1;
        v1 = rotated(v1, 13) ^ v0;
        v0 = rotated(v0, 32);
        v2 += v3;
        v3 = rotated(v3, 16) ^ v2;
        v0 += v3;
        v3 = rotated(v3, 21) ^ v0;
        v2 += v1;
        v1 = rotated(v1, 17) ^ v2;
        v2 = rotated(v2, 32);
    };
    const auto compress = [&](uint64_t word) {
        v3 ^= word;
        round();
        round();
        v0 ^= word;
    };
    uint64_t word = 0;
    uint32_t i = 0;
    for (; i < size; ++i) {
        word |= static_cast<uint64_t>(bytes[i]) << (8 * (i % 8));
        if (i % 8 != 7) continue;
        compress(word);
        word = 0;
    }
    compress(word | static_cast<uint64_t>(size & 0xFF) << 56);
    v2 ^= 0xFF;
    round();
    round();
    round();
    round();
    return v0 ^ v1 ^ v2 ^ v3;
}

}  // namespace quorvel::recorder
