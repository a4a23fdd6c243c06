// The host framework in a replay: each call is answered from the recording.
#include <cstdarg>

#include "recorder/library/Replacements.h"
#include "recorder/replay/Answer.h"
#include "recorder/replay/FormatValues.h"
#include "recorder/replay/Player.h"

namespace quorvel::recorder::replacement {

namespace {

constexpr size_t kHeaderSize = QUORVEL_CONTEXT_HEADER_SIZE;
constexpr size_t kAuxiliarySize = 16;
constexpr size_t kConfigurationSize = 64;
constexpr uint32_t kFailed = 1;

}  // namespace

uint32_t Quorvel_ContextInit(void* ctx, uint32_t size) {
    const Answer answer("Quorvel_ContextInit", {handleValue(ctx), numberValue(size)});
    answer.fill(0, ctx, size);
    return answer.result(kFailed);
}

uint32_t Quorvel_IsContextInit(void* ctx) {
    return Answer("Quorvel_IsContextInit", {handleValue(ctx)}).result(kFailed);
}

uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node) {
    const Answer answer("Quorvel_ContextSetMap", {handleValue(ctx), numberValue(node)});
    answer.fill(0, ctx, kHeaderSize);
    return answer.result(kFailed);
}

uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    return Answer("Quorvel_IsContextSetMap", {handleValue(ctx), numberValue(node)}).result(0);
}

uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node) {
    const Answer answer("Quorvel_ContextClearMap", {handleValue(ctx), numberValue(node)});
    answer.fill(0, ctx, kHeaderSize);
    return answer.result(kFailed);
}

uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    const Answer answer("Quorvel_ContextZeroSetMap", {handleValue(ctx)});
    answer.fill(0, ctx, kHeaderSize);
    return answer.result(kFailed);
}

void Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    std::vector<Value> values{numberValue(level), numberValue(line), nameValue(file), nameValue(function),
                              nameValue(format)};
    appendFormatValues(values, format, list);
    va_end(list);
    (void)player->answer(RecordKind::kLog, "Quorvel_LogPrint", std::move(values));  // a log line has no answer
}

uint32_t QuorvelOsCreateMutex(const char* name, void** handle) {
    const Answer answer("QuorvelOsCreateMutex", {textValue(name)});
    *handle = answer.storedAddress();
    return answer.result(kFailed);
}

uint32_t QuorvelOsMutexLock(void* handle) {
    return Answer("QuorvelOsMutexLock", {handleValue(handle)}).result(kFailed);
}

uint32_t QuorvelOsMutexUnlock(void* handle) {
    return Answer("QuorvelOsMutexUnlock", {handleValue(handle)}).result(kFailed);
}

uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value) {
    const Answer answer("QuorvelUtilGetCfg", {textValue(section), textValue(key)});
    answer.fill(0, auxiliary, kAuxiliarySize);
    answer.fill(1, value, kConfigurationSize);
    return answer.result(kFailed);
}

uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info) {
    const Answer answer("QuorvelUtilGetSpawnInfoFromCfg", {textValue(section)});
    answer.fill(0, info, sizeof *info);
    return answer.result(kFailed);
}

uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process) {
    const Answer answer("QuorvelOsSpawnProcess", {bytesValue(info, sizeof *info)});
    answer.fill(0, process, sizeof *process);
    return answer.result(kFailed);
}

uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments) {
    return Answer("QuorvelOsTerminateProcess", {bytesValue(info, sizeof *info), textValue(arguments)}).result(kFailed);
}

int32_t QuorvelUtilGetPidByName(const char* name) {
    return static_cast<int32_t>(Answer("QuorvelUtilGetPidByName", {textValue(name)}).result(0));
}

}  // namespace quorvel::recorder::replacement
