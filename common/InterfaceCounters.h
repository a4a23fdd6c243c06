#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::common {

/// The counters of a board's interfaces where the kernel makes it none: a file that the driver's loader creates, the
/// WLAN manager counts in, and the host process shows as /proc/net/dev. They outlive the manager, as the kernel's do.
class InterfaceCounters {
  public:
    /// Creates the file with interfaces of these names (at most 15 characters each), which have counted nothing.
    /// Returns 0 or the system's error: EEXIST when it is there already.
    [[nodiscard]] static int create(const std::string& file, const std::vector<std::string>& names);

    /// Opens the file, which may not be there yet: there are no interfaces then.
    explicit InterfaceCounters(const std::string& file);
    InterfaceCounters(const InterfaceCounters&) = delete;
    InterfaceCounters& operator=(const InterfaceCounters&) = delete;
    ~InterfaceCounters();

    [[nodiscard]] bool empty() const {
        return interfaces_.empty();
    }

    /// Counts packets that the interface has received and sent. An interface that there is not counts nothing.
    /// There is one process that counts.
    struct Traffic {
        std::uint64_t receivedBytes = 0;
        std::uint64_t receivedPackets = 0;
        std::uint64_t sentBytes = 0;
        std::uint64_t sentPackets = 0;
    };
    void count(std::string_view name, const Traffic& traffic);

    /// Returns what the kernel's /proc/net/dev would be: the loopback, and each interface behind its other end.
    [[nodiscard]] std::string networkDevices() const;

  private:
    struct Interface;
    std::span<Interface> interfaces_;
};

}  // namespace quorvel::common
