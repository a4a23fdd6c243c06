// Replacements of secrets: text of the same length and class, the same for the same secret, made with a key
// that nobody keeps.
#pragma once

#include <cstdint>

#include "recorder/secrets/Siphash.h"

namespace quorvel::recorder {

class Disguise {
  public:
    explicit constexpr Disguise(const SipKey& key) : key_(key) {}

    /// Replaces digits by digits and letters by letters of the same case; a text of 10, 26 or 64 hexadecimal digits
    /// stays one. Blanks and punctuation stay. What a beginning becomes does not depend on what follows it, so that a
    /// shortened secret becomes the shortened replacement.
    void text(char* bytes, uint32_t size) const;

    /// Replaces a MAC address by a locally administered one whose hexadecimal digits are all decimal, so that it is the
    /// same in both cases. Zero, broadcast and group addresses stay.
    void mac(uint8_t (&octets)[6]) const;

    /// Replaces every MAC address in a text, six pairs of hexadecimal digits with ':' or '-' between them.
    void macsIn(char* bytes, uint32_t size) const;

  private:
    SipKey key_;
};

}  // namespace quorvel::recorder
