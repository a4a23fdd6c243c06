#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <map>

// Present in sanitized programs.
extern "C" void __sanitizer_set_report_fd(void* descriptor) __attribute__((weak));

namespace quorvel::scripted {

// Discards what the library prints on both standard streams.
class Silence {
  public:
    Silence() : nowhere_(open("/dev/null", O_WRONLY | O_CLOEXEC)) {
        (void)std::fflush(stdout);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            saved_[stream] = fcntl(stream, F_DUPFD_CLOEXEC, 0);
            (void)dup2(nowhere_, stream);
        }
        reportTo(saved_[STDERR_FILENO]);
    }
    ~Silence() {
        (void)std::fflush(stdout);
        reportTo(STDERR_FILENO);
        for (const auto& [stream, saved] : saved_) {
            (void)dup2(saved, stream);
            (void)close(saved);
        }
        (void)close(nowhere_);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    // Sanitizers still report on the real stream.
    static void reportTo(int descriptor) {
        if (__sanitizer_set_report_fd != nullptr) {
            __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor)));
        }
    }

    int nowhere_;
    std::map<int, int> saved_;
};

}  // namespace quorvel::scripted
