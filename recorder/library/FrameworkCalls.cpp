// The host framework's calls, recorded.
#include <atomic>

#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/Replacements.h"

namespace quorvel::recorder::replacement {

namespace {

constexpr uint32_t kHeaderSize = QUORVEL_CONTEXT_HEADER_SIZE;
constexpr uint32_t kAuxiliarySize = 16;
constexpr uint32_t kConfigurationSize = 64;

// How often the library's lock was taken.
std::atomic<uint32_t> turns{0};

template <typename... Values>
void record(ImportNumber import, Values... values) {
    queue.append<RecordKind::kPlatform>(numberInRecord(import), values...);
}

constexpr ResultNumber result(uint32_t value) {
    return {value};
}

constexpr BytesAfter after(const void* bytes, uint32_t size) {
    return {bytes, size};
}

}  // namespace

uint32_t Quorvel_ContextInit(void* ctx, uint32_t size) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_ContextInit)(ctx, size);
    record(kImport_Quorvel_ContextInit, Handle{ctx}, Number{size}, result(code),
           after(code == 0 ? ctx : nullptr, size));
    return code;
}

uint32_t Quorvel_IsContextInit(void* ctx) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_IsContextInit)(ctx);
    record(kImport_Quorvel_IsContextInit, Handle{ctx}, result(code));
    return code;
}

uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_ContextSetMap)(ctx, node);
    record(kImport_Quorvel_ContextSetMap, Handle{ctx}, Number{node}, result(code), after(ctx, kHeaderSize));
    return code;
}

uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_IsContextSetMap)(ctx, node);
    record(kImport_Quorvel_IsContextSetMap, Handle{ctx}, Number{node}, result(code));
    return code;
}

uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_ContextClearMap)(ctx, node);
    record(kImport_Quorvel_ContextClearMap, Handle{ctx}, Number{node}, result(code), after(ctx, kHeaderSize));
    return code;
}

uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    const uint32_t code = QUORVEL_ORIGINAL(Quorvel_ContextZeroSetMap)(ctx);
    record(kImport_Quorvel_ContextZeroSetMap, Handle{ctx}, result(code), after(ctx, kHeaderSize));
    return code;
}

uint32_t QuorvelOsCreateMutex(const char* name, void** handle) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelOsCreateMutex)(name, handle);
    record(kImport_QuorvelOsCreateMutex, Text{name}, result(code), HandleAfter{*handle});
    return code;
}

uint32_t QuorvelOsMutexLock(void* handle) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelOsMutexLock)(handle);
    // Which thread got the lock first does not show in the order of the records.
    const uint32_t turn = turns.fetch_add(1, std::memory_order_relaxed);
    record(kImport_QuorvelOsMutexLock, Handle{handle}, result(code), NumberAfter{turn});
    return code;
}

uint32_t QuorvelOsMutexUnlock(void* handle) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelOsMutexUnlock)(handle);
    record(kImport_QuorvelOsMutexUnlock, Handle{handle}, result(code));
    return code;
}

uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelUtilGetCfg)(section, key, auxiliary, value);
    record(kImport_QuorvelUtilGetCfg, Text{section}, Text{key}, result(code), after(auxiliary, kAuxiliarySize),
           after(value, kConfigurationSize));
    return code;
}

uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelUtilGetSpawnInfoFromCfg)(section, info);
    record(kImport_QuorvelUtilGetSpawnInfoFromCfg, Text{section}, result(code), after(info, sizeof *info));
    return code;
}

uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelOsSpawnProcess)(info, process);
    record(kImport_QuorvelOsSpawnProcess, Bytes{info, sizeof *info}, result(code), after(process, sizeof *process));
    return code;
}

uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments) {
    const uint32_t code = QUORVEL_ORIGINAL(QuorvelOsTerminateProcess)(info, arguments);
    record(kImport_QuorvelOsTerminateProcess, Bytes{info, sizeof *info}, Text{arguments}, result(code));
    return code;
}

int32_t QuorvelUtilGetPidByName(const char* name) {
    const int32_t process = QUORVEL_ORIGINAL(QuorvelUtilGetPidByName)(name);
    record(kImport_QuorvelUtilGetPidByName, Text{name}, result(static_cast<uint32_t>(process)));
    return process;
}

}  // namespace quorvel::recorder::replacement
