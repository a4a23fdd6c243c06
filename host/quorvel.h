/* The host framework's calls (libquorvel) as the plug-in uses them: declarations only.
 *
 * Every call that returns uint32_t answers 0 for success unless its comment says otherwise. */
#ifndef QUORVEL_H
#define QUORVEL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes at the start of every object context that belong to the host: initialisation mark and set map. */
#define QUORVEL_CONTEXT_HEADER_SIZE 132

/* Marks the context of `size` bytes (header included) initialised, clears its set map and zeroes its fields.
 * Returns 0, or non-zero when ctx is null or size is below the header's. */
uint32_t Quorvel_ContextInit(void* ctx, uint32_t size);

/* Returns 0 when the context is initialised, non-zero when it is not. */
uint32_t Quorvel_IsContextInit(void* ctx);

/* Sets the bit of `node` in the set map. */
uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node);

/* Returns non-zero when the bit of `node` is set, 0 otherwise. */
uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node);

/* Clears the bit of `node`. */
uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node);

/* Clears the whole set map and leaves the initialisation mark. */
uint32_t Quorvel_ContextZeroSetMap(void* ctx);

/* Writes one log line. `level`: 0 error, 1 warning, 2 traffic and notable events, 3 tracing; `file` is the source path
 * without extension. */
void Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 5, 6)))
#endif
    ;

/* Creates (or opens) the mutex called `name` and stores its handle. */
uint32_t QuorvelOsCreateMutex(const char* name, void** handle);
uint32_t QuorvelOsMutexLock(void* handle);
uint32_t QuorvelOsMutexUnlock(void* handle);

/* Reads `key` of `section` from the host configuration. `auxiliary` has 16 bytes, `value` 64. */
uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value);

/* The data with which the host's process service starts or finds a process. */
typedef struct SpawnInfo {
    char program[64];    /* path, NUL-terminated */
    char arguments[256]; /* one argument text, NUL-terminated */
    uint32_t option320;  /* the host's own; 1 for a daemon started without configuration */
    uint8_t option324;   /* the host's own; 1 for a daemon started without configuration */
    uint8_t reserved325[7];
    uint8_t option332; /* the host's own; 0 for a daemon started without configuration */
    uint8_t option333; /* the host's own; 0 for a daemon started without configuration */
    uint8_t reserved334[10];
} SpawnInfo;

/* The record that the host's spawn call fills. */
typedef struct ProcessRecord {
    uint8_t bytes[16];
} ProcessRecord;

/* Reads the process entry of `section` into `info`. */
uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info);
uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process);
/* Ends the process that was started from `info`; `arguments` is info's argument text. */
uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments);

/* Returns the id of the running process or task called `name`, or 0 or less when there is none. */
int32_t QuorvelUtilGetPidByName(const char* name);

#ifdef __cplusplus
}
#endif

#endif
