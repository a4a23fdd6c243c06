#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace quorvel::scripted {

// The manager's record of a station as "wlStaInfo_%d" reads: bytes at their offsets, the rest zero.
class StationRecord {
  public:
    explicit StationRecord(const std::string& mac = {}) {
        text(0, mac);
    }
    StationRecord& text(std::size_t offset, const std::string& text) {
        bytes_.replace(offset, text.size(), text);
        return *this;
    }
    template <typename Number>
    StationRecord& number(std::size_t offset, Number value) {
        std::memcpy(bytes_.data() + offset, &value, sizeof value);
        return *this;
    }
    [[nodiscard]] const std::string& bytes() const {
        return bytes_;
    }

    static constexpr std::size_t kSize = 236;
    static constexpr std::size_t kRssi = 100;
    static constexpr std::size_t kReceiveRate = 108;
    static constexpr std::size_t kTransmitRate = 112;

  private:
    std::string bytes_ = std::string(kSize, '\0');
};

}  // namespace quorvel::scripted
