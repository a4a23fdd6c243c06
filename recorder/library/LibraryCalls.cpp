// The C library's calls that leave the process or wait, recorded. Each keeps errno as the call left it.
#include <pthread.h>

#include <cerrno>
#include <cstdlib>

#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/Replacements.h"
#include "recorder/library/Variadic.h"

namespace quorvel::recorder {

namespace {

// Set in the thread that registers a callback, and in its listener.
thread_local AssociatedDeviceCallback hostCallback = nullptr;

// A thread that the library starts, and the callback that it works for.
struct ThreadStart {
    void* (*start)(void*);
    void* argument;
    AssociatedDeviceCallback callback;
};

void* runThread(void* user) {
    const ThreadStart start = *static_cast<const ThreadStart*>(user);
    free(user);
    hostCallback = start.callback;
    queue.append<RecordKind::kThread>(0);
    void* const result = start.start(start.argument);
    queue.close();
    return result;
}

}  // namespace

void rememberCallback(AssociatedDeviceCallback callback) {
    hostCallback = callback;
}

uint32_t recordedCallback(uint32_t ap, uint32_t event, void* station) {
    constexpr uint32_t kStationSize = 124;
    queue.append<RecordKind::kCallback>(kCallbackNumber, Number{ap}, Number{event}, Bytes{station, kStationSize});
    queue.close();  // the host does what it likes meanwhile
    return hostCallback(ap, event, station);
}

namespace replacement {

namespace {

// Keeps errno while a record is appended.
class ErrorKeeper {
  public:
    ErrorKeeper() : error_(errno) {}
    ~ErrorKeeper() {
        errno = error_;
    }
    ErrorKeeper(const ErrorKeeper&) = delete;
    ErrorKeeper& operator=(const ErrorKeeper&) = delete;
    [[nodiscard]] int error() const {
        return error_;
    }

  private:
    int error_;
};

template <typename... Values>
void record(ImportNumber import, Values... values) {
    const ErrorKeeper keeper;
    queue.append<RecordKind::kPlatform>(numberInRecord(import), Error{keeper.error()}, values...);
}

constexpr ResultNumber result(int value) {
    return {static_cast<uint32_t>(value)};
}

constexpr Number number(int value) {
    return {static_cast<uint32_t>(value)};
}

// The standard streams have small numbers in place of an address.
Handle stream(const FILE* file) {
    if (file == stdout) return {reinterpret_cast<const void*>(uintptr_t{1})};
    if (file == stderr) return {reinterpret_cast<const void*>(uintptr_t{2})};
    return {file};
}

}  // namespace

int system(const char* command) {
    queue.close();  // it may wait
    const int code = QUORVEL_ORIGINAL(system)(command);
    record(kImport_system, Text{command}, result(code));
    return code;
}

FILE* popen(const char* command, const char* mode) {
    queue.close();  // it may wait
    FILE* const file = QUORVEL_ORIGINAL(popen)(command, mode);
    record(kImport_popen, Text{command}, Text{mode}, ResultHandle{file});
    return file;
}

int pclose(FILE* file) {
    queue.close();  // it may wait
    const Handle closed = stream(file);
    const int code = QUORVEL_ORIGINAL(pclose)(file);
    record(kImport_pclose, closed, result(code));
    return code;
}

FILE* fopen(const char* path, const char* mode) {
    FILE* const file = QUORVEL_ORIGINAL(fopen)(path, mode);
    record(kImport_fopen, Text{path}, Text{mode}, ResultHandle{file});
    return file;
}

int fclose(FILE* file) {
    const Handle closed = stream(file);
    const int code = QUORVEL_ORIGINAL(fclose)(file);
    record(kImport_fclose, closed, result(code));
    return code;
}

char* fgets(char* text, int size, FILE* file) {
    queue.close();  // it may wait
    char* const line = QUORVEL_ORIGINAL(fgets)(text, size, file);
    record(kImport_fgets, number(size), stream(file), ResultText{line});
    return line;
}

void rewind(FILE* file) {
    QUORVEL_ORIGINAL(rewind)(file);
    record(kImport_rewind, stream(file));
}

int fprintf(FILE* file, const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    FormatArguments::Room room;
    const FormatArguments arguments(format, list, room);
    const int code = arguments.call(QUORVEL_ORIGINAL(fprintf), file, format);
    record(kImport_fprintf, result(code), stream(file), arguments);
    va_end(list);
    return code;
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) {
    const size_t written = QUORVEL_ORIGINAL(fwrite)(bytes, size, count, file);
    record(kImport_fwrite, Bytes{bytes, static_cast<uint32_t>(size * count)}, stream(file),
           ResultNumber{static_cast<uint32_t>(written)});
    return written;
}

int fflush(FILE* file) {
    const int code = QUORVEL_ORIGINAL(fflush)(file);
    record(kImport_fflush, stream(file), result(code));
    return code;
}

int printf(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    FormatArguments::Room room;
    const FormatArguments arguments(format, list, room);
    const int code = arguments.call(QUORVEL_ORIGINAL(printf), format);
    record(kImport_printf, result(code), arguments);
    va_end(list);
    return code;
}

int puts(const char* text) {
    const int code = QUORVEL_ORIGINAL(puts)(text);
    record(kImport_puts, Text{text}, result(code));
    return code;
}

int socket(int domain, int type, int protocol) {
    const int descriptor = QUORVEL_ORIGINAL(socket)(domain, type, protocol);
    record(kImport_socket, number(domain), number(type), number(protocol), result(descriptor));
    return descriptor;
}

int connect(int descriptor, const sockaddr* address, socklen_t length) {
    queue.close();  // it may wait
    const int code = QUORVEL_ORIGINAL(connect)(descriptor, address, length);
    record(kImport_connect, number(descriptor), Bytes{address, length}, result(code));
    return code;
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    queue.close();  // it may wait
    const ssize_t taken = QUORVEL_ORIGINAL(read)(descriptor, buffer, size);
    record(kImport_read, number(descriptor), Number{static_cast<uint32_t>(size)}, result(static_cast<int>(taken)),
           BytesAfter{buffer, taken > 0 ? static_cast<uint32_t>(taken) : 0});
    return taken;
}

int close(int descriptor) {
    const int code = QUORVEL_ORIGINAL(close)(descriptor);
    record(kImport_close, number(descriptor), result(code));
    return code;
}

unsigned sleep(unsigned seconds) {
    queue.close();  // it may wait
    const unsigned left = QUORVEL_ORIGINAL(sleep)(seconds);
    record(kImport_sleep, Number{seconds}, result(static_cast<int>(left)));
    return left;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument) {
    auto* const begin = static_cast<ThreadStart*>(malloc(sizeof(ThreadStart)));
    int code = EAGAIN;
    if (begin != nullptr) {
        *begin = {start, argument, hostCallback};
        code = QUORVEL_ORIGINAL(pthread_create)(thread, attributes, runThread, begin);
        if (code != 0) free(begin);
    }
    record(kImport_pthread_create, result(code));
    return code;
}

int pthread_cancel(pthread_t thread) {
    const int code = QUORVEL_ORIGINAL(pthread_cancel)(thread);
    record(kImport_pthread_cancel, result(code));
    return code;
}

int sched_setscheduler(pid_t process, int policy, const sched_param* parameters) {
    const int code = QUORVEL_ORIGINAL(sched_setscheduler)(process, policy, parameters);
    record(kImport_sched_setscheduler, number(process), number(policy), number(parameters->sched_priority),
           result(code));
    return code;
}

}  // namespace replacement
}  // namespace quorvel::recorder
