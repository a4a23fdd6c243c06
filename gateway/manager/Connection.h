#pragma once

#include <sys/types.h>

#include <cstdint>

#include "gateway/manager/Protocol.h"

namespace quorvel::manager {

/// A client's connection to the WLAN manager. It connects when it is needed and again after a failure; it needs no C++
/// run-time library. Not safe to share between threads: callers that share it hold a lock around each call.
class Connection {
  public:
    /// Sends the request and waits for the answer, whose blocks stay valid until the next call. Returns false when
    /// there is no manager, or it did not give a valid answer within the bound: 1.5 seconds, or 200 ms when the last
    /// request already ran into it, so that a caller that reads a whole tree from a hanging manager gets through. A
    /// manager whose process is stopped is not waited for so long.
    [[nodiscard]] bool call(const Request& request, Answer& answer);

    /// Like call, for a request that is only worth making when the manager is there: it is not waited for.
    [[nodiscard]] bool callIfThere(const Request& request, Answer& answer);

    /// Says whether the next call waits for a manager that is just being started. A fresh connection does.
    void expectManager(bool expected);

    /// Performs a request with a long answer and returns the answer, allocated with malloc and NUL-terminated, or null.
    [[nodiscard]] char* callLong(const Request& request, std::int32_t& result);

    void close();

  private:
    [[nodiscard]] bool ensureConnected(long long deadline);
    [[nodiscard]] bool connectOnce();
    [[nodiscard]] bool exchange(const Request& request, Answer& answer, long long deadline);
    [[nodiscard]] bool sendAll(std::size_t size, long long deadline);
    [[nodiscard]] bool receive(std::size_t from, std::size_t to, long long deadline);

    int socket_ = -1;
    pid_t owner_ = 0;
    bool managerExpected_ = true;
    bool timedOut_ = false;
    std::uint8_t buffer_[kMaxFrame] = {};
};

}  // namespace quorvel::manager
