#include "gateway/hostd/ManagerLook.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace quorvel::hostd {
namespace {

constexpr std::chrono::milliseconds kSoon{500};
constexpr std::chrono::milliseconds kSeldom{10'000};

// Returns a descriptor of the process; none where the kernel, or an emulator, has no such thing.
common::Descriptor openProcess(pid_t process) {
#ifdef SYS_pidfd_open
    return common::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
#else
    (void)process;
    return {};
#endif
}

}  // namespace

void ManagerLook::setWanted(bool wanted) {
    if (wanted && !wanted_) next_ = Steady::now();
    wanted_ = wanted;
}

void ManagerLook::happened() {
    next_ = std::min(next_, last_ + kSoon);
}

void ManagerLook::ended() {
    process_.reset();
    manager_ = 0;
    next_ = Steady::now();
}

void ManagerLook::looked(pid_t manager) {
    if (manager != manager_) {
        process_ = manager == 0 ? common::Descriptor() : openProcess(manager);
        manager_ = manager;
    }
    last_ = Steady::now();
    next_ = last_ + (process_ ? kSeldom : kSoon);
}

int ManagerLook::patience() const {
    if (!wanted_) return -1;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(next_ - Steady::now()).count() + 1;
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

}  // namespace quorvel::hostd
