#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstring>

namespace quorvel::common {

/// The most bytes that the path of a UNIX socket has.
inline constexpr std::size_t kMaxSocketPath = sizeof sockaddr_un::sun_path - 1;

/// The address of a UNIX socket by its path. It needs no C++ run-time library.
class UnixAddress {
  public:
    /// Takes a NUL-terminated path. One that is longer than kMaxSocketPath gives an address that is not valid().
    explicit UnixAddress(const char* path) : valid_(std::strlen(path) <= kMaxSocketPath) {
        address_.sun_family = AF_UNIX;
        if (valid_) std::memcpy(address_.sun_path, path, std::strlen(path));
    }

    [[nodiscard]] bool valid() const {
        return valid_;
    }
    [[nodiscard]] const sockaddr* get() const {
        return reinterpret_cast<const sockaddr*>(&address_);
    }
    [[nodiscard]] static constexpr socklen_t size() {
        return sizeof(sockaddr_un);
    }
    [[nodiscard]] const char* path() const {
        return address_.sun_path;
    }

  private:
    sockaddr_un address_ = {};
    bool valid_;
};

}  // namespace quorvel::common
