#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include <quorvel.h>
#include "tests/wifi/platform/ContextHeader.h"
#include "tests/wifi/platform/Rendering.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

// The host framework.

namespace contextheader = quorvel::contextheader;
using quorvel::scripted::context;
using quorvel::scripted::LogLine;
using quorvel::scripted::out;
using quorvel::scripted::Platform;
using quorvel::scripted::renderAll;

namespace {

Platform& platform() {
    return Platform::instance();
}

// The forced result of a call that answers 0 for success.
std::optional<std::uint32_t> forced(const char* name, const std::string& arguments) {
    const auto rule = platform().enter(name, arguments);
    if (!rule) {
        return std::nullopt;
    }
    return rule->fails ? 1U : static_cast<std::uint32_t>(rule->result);
}

bool usable(const void* ctx, std::uint32_t node) {
    return ctx != nullptr && node < contextheader::kNodes;
}

void copyText(char* target, std::size_t size, const std::string& text) {
    std::memset(target, 0, size);
    (void)text.copy(target, size - 1);
}

int theMutex = 0;

}  // namespace

extern "C" {

uint32_t Quorvel_ContextInit(void* ctx, uint32_t size) {
    if (const auto result = forced("Quorvel_ContextInit", renderAll(context(ctx), size))) {
        return *result;
    }
    if (ctx == nullptr || size < QUORVEL_CONTEXT_HEADER_SIZE) {
        return 2;
    }
    contextheader::initialise(ctx, size);
    return 0;
}

uint32_t Quorvel_IsContextInit(void* ctx) {
    if (const auto result = forced("Quorvel_IsContextInit", renderAll(context(ctx)))) {
        return *result;
    }
    return ctx != nullptr && contextheader::isInitialised(ctx) ? 0 : 1;
}

uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node) {
    if (const auto result = forced("Quorvel_ContextSetMap", renderAll(context(ctx), node))) {
        return *result;
    }
    if (!usable(ctx, node)) {
        return 1;
    }
    contextheader::set(ctx, node);
    return 0;
}

uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    if (const auto result = forced("Quorvel_IsContextSetMap", renderAll(context(ctx), node))) {
        return *result;
    }
    return usable(ctx, node) && contextheader::isSet(ctx, node) ? 1 : 0;
}

uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node) {
    if (const auto result = forced("Quorvel_ContextClearMap", renderAll(context(ctx), node))) {
        return *result;
    }
    if (!usable(ctx, node)) {
        return 1;
    }
    contextheader::clear(ctx, node);
    return 0;
}

uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    if (const auto result = forced("Quorvel_ContextZeroSetMap", renderAll(context(ctx)))) {
        return *result;
    }
    if (ctx == nullptr) {
        return 1;
    }
    contextheader::clearAll(ctx);
    return 0;
}

void Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format, ...) {
    char text[16384];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    LogLine logLine;
    logLine.level = level;
    logLine.file = file == nullptr ? "" : file;
    logLine.function = function == nullptr ? "" : function;
    logLine.line = line;
    logLine.format = format;
    logLine.text = text;
    platform().log(std::move(logLine));
}

uint32_t QuorvelOsCreateMutex(const char* name, void** handle) {
    if (const auto result = forced("QuorvelOsCreateMutex", renderAll(name, out(handle)))) {
        return *result;
    }
    *handle = &theMutex;
    return 0;
}

uint32_t QuorvelOsMutexLock(void* handle) {
    const char* which = handle == &theMutex ? "\"WiFi\"" : "?";
    if (const auto result = forced("QuorvelOsMutexLock", which)) {
        return *result;
    }
    return handle == &theMutex ? platform().lock() : 1;
}

// A forced unlock failure still frees the lock, so that the test's end stays clean.
uint32_t QuorvelOsMutexUnlock(void* handle) {
    const char* which = handle == &theMutex ? "\"WiFi\"" : "?";
    const auto result = forced("QuorvelOsMutexUnlock", which);
    const std::uint32_t unlocked = handle == &theMutex ? platform().unlock() : 1;
    return result ? *result : unlocked;
}

uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value) {
    if (const auto result = forced("QuorvelUtilGetCfg", renderAll(section, key))) {
        return *result;
    }
    EXPECT_EQ(std::string(auxiliary, 16), std::string(16, '\0')) << "asked for " << key;
    EXPECT_EQ(std::string(value, 64), std::string(64, '\0')) << "asked for " << key;
    const auto text = platform().configuration(section, key);
    if (!text) {
        return 1;
    }
    copyText(auxiliary, 16, "text");
    copyText(value, 64, *text);
    return 0;
}

uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info) {
    if (const auto result = forced("QuorvelUtilGetSpawnInfoFromCfg", renderAll(section))) {
        return *result;
    }
    const auto found = platform().spawnInfo(section);
    if (!found) {
        // A failed look-up may leave anything in the record.
        std::memset(info, 0xA5, sizeof *info);
        return 1;
    }
    *info = *found;
    return 0;
}

uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process) {
    platform().noteSpawned(*info, *process);
    if (const auto result = forced("QuorvelOsSpawnProcess", renderAll(info->program, info->arguments))) {
        return *result;
    }
    std::memset(process, 0x5A, sizeof *process);
    return 0;
}

uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments) {
    platform().noteTerminated(*info);
    const char* which = arguments == info->arguments ? "arguments of the record" : "other arguments";
    if (const auto result = forced("QuorvelOsTerminateProcess",
                                   renderAll(info->program, static_cast<const char*>(arguments)) + ", " + which)) {
        return *result;
    }
    return 0;
}

int32_t QuorvelUtilGetPidByName(const char* name) {
    const auto rule = platform().enter("QuorvelUtilGetPidByName", renderAll(name));
    if (rule) {
        return rule->fails ? 0 : static_cast<std::int32_t>(rule->result);
    }
    return platform().process(name);
}

}  // extern "C"

namespace quorvel::scripted {

void keepHostCalls() {}

}  // namespace quorvel::scripted
