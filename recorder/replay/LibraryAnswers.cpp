// The C library in a replay: what leaves the process is answered from the recording.
#include <cerrno>
#include <cstdarg>

#include "recorder/library/Replacements.h"
#include "recorder/replay/Answer.h"
#include "recorder/replay/FormatValues.h"
#include "recorder/replay/Invoke.h"
#include "recorder/replay/Player.h"

namespace quorvel::recorder {

uint32_t replayedCallback(uint32_t ap, uint32_t event, void* station) {
    constexpr size_t kStationSize = 124;
    (void)player->answer(RecordKind::kCallback, "callback",
                         {numberValue(ap), numberValue(event), bytesValue(station, kStationSize)});
    return 0;  // the library ignores it
}

namespace replacement {

namespace {

int resultOf(const Answer& answer, int otherwise) {
    errno = answer.error();
    return static_cast<int>(answer.result(static_cast<uint32_t>(otherwise)));
}

Value signedValue(int value) {
    return numberValue(static_cast<uint32_t>(value));
}

int printed(const char* function, std::vector<Value> values, const char* format, std::va_list list) {
    values.push_back(nameValue(format));
    appendFormatValues(values, format, list);
    const Record* const record = player->answer(RecordKind::kPlatform, function, std::move(values));
    if (record == nullptr) return -1;
    const auto results = record->valuesOf(ValueRole::kResult);
    return results.empty() ? -1 : static_cast<int>(results.front()->number);
}

}  // namespace

int system(const char* command) {
    return resultOf(Answer("system", {textValue(command)}), -1);
}

FILE* popen(const char* command, const char* mode) {
    return static_cast<FILE*>(Answer("popen", {textValue(command), textValue(mode)}).address());
}

int pclose(FILE* stream) {
    return resultOf(Answer("pclose", {handleValue(stream)}), -1);
}

FILE* fopen(const char* path, const char* mode) {
    return static_cast<FILE*>(Answer("fopen", {textValue(path), textValue(mode)}).address());
}

int fclose(FILE* stream) {
    return resultOf(Answer("fclose", {handleValue(stream)}), EOF);
}

char* fgets(char* text, int size, FILE* stream) {
    const Answer answer("fgets", {signedValue(size), handleValue(stream)});
    const char* const line = answer.text();
    if (line == nullptr || size <= 0) return nullptr;
    (void)std::snprintf(text, static_cast<size_t>(size), "%s", line);
    return text;
}

void rewind(FILE* stream) {
    const Answer answer("rewind", {handleValue(stream)});
    errno = answer.error();
}

int fprintf(FILE* stream, const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    const int count = printed("fprintf", {handleValue(stream)}, format, list);
    va_end(list);
    return count;
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
    return Answer("fwrite", {bytesValue(bytes, size * count), handleValue(stream)}).result(0);
}

int fflush(FILE* stream) {
    return resultOf(Answer("fflush", {handleValue(stream)}), EOF);
}

int printf(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    const int count = printed("printf", {}, format, list);
    va_end(list);
    return count;
}

int puts(const char* text) {
    return resultOf(Answer("puts", {textValue(text)}), EOF);
}

int socket(int domain, int type, int protocol) {
    return resultOf(Answer("socket", {signedValue(domain), signedValue(type), signedValue(protocol)}), -1);
}

int connect(int descriptor, const sockaddr* address, socklen_t length) {
    return resultOf(Answer("connect", {signedValue(descriptor), bytesValue(address, length)}), -1);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    const Answer answer("read", {signedValue(descriptor), numberValue(static_cast<uint32_t>(size))});
    answer.fill(0, buffer, size);
    return resultOf(answer, 0);
}

int close(int descriptor) {
    return resultOf(Answer("close", {signedValue(descriptor)}), -1);
}

unsigned sleep(unsigned seconds) {
    return Answer("sleep", {numberValue(seconds)}).result(0);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* /*attributes*/, void* (*start)(void*), void* argument) {
    const int code = resultOf(Answer("pthread_create", {}), EAGAIN);
    if (code != 0) return code;
    // The thread's handle only has to be one; it is never used here.
    *thread = pthread_self();
    player->startThread(start, argument);
    return 0;
}

int pthread_cancel(pthread_t /*thread*/) {
    const int code = resultOf(Answer("pthread_cancel", {}), ESRCH);
    player->cancelThread();
    return code;
}

int sched_setscheduler(pid_t process, int policy, const sched_param* parameters) {
    return resultOf(Answer("sched_setscheduler",
                           {signedValue(process), signedValue(policy), signedValue(parameters->sched_priority)}),
                    -1);
}

}  // namespace replacement
}  // namespace quorvel::recorder
