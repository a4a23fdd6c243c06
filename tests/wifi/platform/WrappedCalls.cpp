#include <pthread.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

#include "tests/wifi/platform/RealCalls.h"
#include "tests/wifi/platform/Rendering.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

// Present in address-sanitized programs.
extern "C" void __asan_handle_no_return() __attribute__((weak));

// The linker redirects these C-library calls of the whole program to here. Outside a test they pass through.

using quorvel::scripted::out;
using quorvel::scripted::Platform;
using quorvel::scripted::ReadStep;
using quorvel::scripted::renderAll;

namespace {

Platform& platform() {
    return Platform::instance();
}

int failed(int error) {
    errno = error;
    return -1;
}

const char* policyName(int policy) {
    switch (policy) {
        case SCHED_RR:
            return "SCHED_RR";
        case SCHED_FIFO:
            return "SCHED_FIFO";
        case SCHED_OTHER:
            return "SCHED_OTHER";
        default:
            return "?";
    }
}

// Whether this allocation fails. Checked only while a test has scripted a failure.
bool allocationFails(const char* name, const std::string& arguments) {
    static thread_local bool inside = false;
    if (inside || !platform().armed(name)) {
        return false;
    }
    inside = true;
    const auto forced = platform().enter(name, arguments);
    inside = false;
    return forced.has_value();
}

// A thread that ends here skips the destructors of its frames; the address sanitizer must know.
struct ForgetFrames {
    ForgetFrames() = default;
    ForgetFrames(const ForgetFrames&) = delete;
    ForgetFrames& operator=(const ForgetFrames&) = delete;
    ~ForgetFrames() {
        if (__asan_handle_no_return != nullptr) {
            __asan_handle_no_return();
        }
    }
};

ssize_t readSocket(const char* name, int descriptor, void* buffer, std::size_t size) {
    const auto forced = platform().enter(name, renderAll(out(buffer), size));
    if (forced) {
        return forced->fails ? failed(EIO) : static_cast<ssize_t>(forced->result);
    }
    bool ended = false;
    const std::optional<ReadStep> step = platform().nextRead(ended);
    if (ended) {
        const ForgetFrames forget;
        pthread_exit(nullptr);
    }
    if (!step) {
        const ForgetFrames forget;
        return __real_read(descriptor, buffer, size);
    }
    if (step->bytes.empty()) {
        errno = step->error;
        return step->result;
    }
    const std::size_t given = step->bytes.size() < size ? step->bytes.size() : size;
    std::memcpy(buffer, step->bytes.data(), given);
    return static_cast<ssize_t>(given);
}

}  // namespace

extern "C" {

int __wrap_system(const char* command) {
    if (!platform().active()) {
        return __real_system(command);
    }
    const auto forced = platform().enter("system", renderAll(command));
    if (forced) {
        return forced->fails ? -1 : static_cast<int>(forced->result);
    }
    const auto action = platform().commandAction(command == nullptr ? "" : command);
    return action ? (*action)() : 0;
}

std::FILE* __wrap_popen(const char* command, const char* mode) {
    if (!platform().active()) {
        return __real_popen(command, mode);
    }
    if (platform().enter("popen", renderAll(command, mode))) {
        errno = ENOMEM;
        return nullptr;
    }
    return platform().openCommand(command);
}

int __wrap_pclose(std::FILE* stream) {
    const auto closed = platform().closeStream(stream, "pclose");
    return closed ? *closed : __real_pclose(stream);
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    // GoogleTest reads captured output back from a file of its own.
    if (!platform().active() || std::strstr(path, "gtest_captured_stream") != nullptr) {
        return __real_fopen(path, mode);
    }
    if (platform().enter("fopen", renderAll(path, mode))) {
        errno = ENOENT;
        return nullptr;
    }
    return platform().openFile(path, mode);
}

int __wrap_fclose(std::FILE* stream) {
    const auto closed = platform().closeStream(stream, "fclose");
    return closed ? *closed : __real_fclose(stream);
}

unsigned int __wrap_sleep(unsigned int seconds) {
    if (!platform().active()) {
        return __real_sleep(seconds);
    }
    (void)platform().enter("sleep", renderAll(seconds));
    platform().slept(static_cast<double>(seconds));
    return 0;
}

int __wrap_usleep(useconds_t microseconds) {
    if (!platform().active()) {
        return __real_usleep(microseconds);
    }
    (void)platform().enter("usleep", renderAll(microseconds));
    platform().slept(static_cast<double>(microseconds) / 1e6);
    return 0;
}

int __wrap_nanosleep(const struct timespec* duration, struct timespec* rest) {
    if (!platform().active()) {
        return __real_nanosleep(duration, rest);
    }
    (void)platform().enter("nanosleep", renderAll(duration->tv_sec, duration->tv_nsec));
    platform().slept(static_cast<double>(duration->tv_sec) + static_cast<double>(duration->tv_nsec) / 1e9);
    return 0;
}

int __wrap_sched_setscheduler(pid_t process, int policy, const struct sched_param* parameters) {
    if (!platform().active()) {
        return __real_sched_setscheduler(process, policy, parameters);
    }
    const std::string arguments = renderAll(process) + ", " + policyName(policy) + ", " +
                                  renderAll(parameters == nullptr ? -1 : parameters->sched_priority);
    const auto forced = platform().enter("sched_setscheduler", arguments);
    if (!forced) {
        return 0;
    }
    return forced->fails ? failed(EPERM) : static_cast<int>(forced->result);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument) {
    if (!platform().active()) {
        return __real_pthread_create(thread, attributes, body, argument);
    }
    const std::string rendered = attributes == nullptr ? "default" : "attributes";
    const auto forced = platform().enter("pthread_create", rendered);
    if (forced) {
        return forced->fails ? EAGAIN : static_cast<int>(forced->result);
    }
    const int result = __real_pthread_create(thread, attributes, body, argument);
    if (result == 0) {
        platform().noteThread(static_cast<unsigned long>(*thread));
    }
    return result;
}

int __wrap_pthread_cancel(pthread_t thread) {
    const auto handle = static_cast<unsigned long>(thread);
    if (!platform().active()) {
        return __real_pthread_cancel(thread);
    }
    const bool known = platform().knowsThread(handle);
    const auto forced = platform().enter("pthread_cancel", known ? "listener" : "unknown");
    if (forced) {
        return forced->fails ? ESRCH : static_cast<int>(forced->result);
    }
    return known || platform().cancelReal() ? __real_pthread_cancel(thread) : ESRCH;
}

int __wrap_socket(int family, int type, int protocol) {
    if (!platform().active()) {
        return __real_socket(family, type, protocol);
    }
    const auto forced = platform().enter("socket", renderAll(family, type, protocol));
    if (forced) {
        return forced->fails ? failed(EMFILE) : static_cast<int>(forced->result);
    }
    return platform().makeSocket();
}

int __wrap_connect(int descriptor, const struct sockaddr* address, socklen_t length) {
    if (!platform().active()) {
        return __real_connect(descriptor, address, length);
    }
    std::string path;
    if (address != nullptr && address->sa_family == AF_UNIX) {
        const char* text = reinterpret_cast<const char*>(address) + offsetof(struct sockaddr_un, sun_path);
        path.assign(text, strnlen(text, length - offsetof(struct sockaddr_un, sun_path)));
    }
    const auto forced = platform().enter("connect", renderAll(path.c_str(), length));
    if (forced) {
        return forced->fails ? failed(ECONNREFUSED) : static_cast<int>(forced->result);
    }
    return platform().connectSocket(path, length);
}

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    if (!platform().active() || !platform().ownsSocket(descriptor)) {
        return __real_read(descriptor, buffer, size);
    }
    return readSocket("read", descriptor, buffer, size);
}

ssize_t __wrap_recv(int descriptor, void* buffer, std::size_t size, int flags) {
    if (!platform().active() || !platform().ownsSocket(descriptor)) {
        return __real_recv(descriptor, buffer, size, flags);
    }
    return readSocket("recv", descriptor, buffer, size);
}

int __wrap_close(int descriptor) {
    if (!platform().active()) {
        return __real_close(descriptor);
    }
    if (!platform().ownsSocket(descriptor)) {
        const int result = __real_close(descriptor);
        if (result != 0 && errno == EBADF) {
            (void)platform().enter("close", "stale");
            errno = EBADF;
        }
        return result;
    }
    (void)platform().enter("close", "socket");
    platform().forgetSocket(descriptor);
    return __real_close(descriptor);
}

void* __wrap_malloc(std::size_t size) {
    if (platform().allocationsArmed() && allocationFails("malloc", renderAll(size))) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = __real_malloc(size);
    platform().noteAllocated(block);
    return block;
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (platform().allocationsArmed() && allocationFails("calloc", renderAll(count, size))) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = __real_calloc(count, size);
    platform().noteAllocated(block);
    return block;
}

void* __wrap_realloc(void* memory, std::size_t size) {
    if (platform().allocationsArmed() && allocationFails("realloc", renderAll(size))) {
        errno = ENOMEM;
        return nullptr;
    }
    platform().noteFreed(memory);
    void* const block = __real_realloc(memory, size);
    platform().noteAllocated(block);
    return block;
}

void __wrap_free(void* memory) {
    platform().noteFreed(memory);
    __real_free(memory);
}

}  // extern "C"

namespace quorvel::scripted {

void keepWrappedCalls() {}

}  // namespace quorvel::scripted
