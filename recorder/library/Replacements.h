// The recorder's functions that take the place of the platform's, by the library that has them.
#pragma once

#include <fcntl.h>
#include <pthread.h>
#include <quorvel.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <wlcsm.h>

#include <cstdio>

namespace quorvel::recorder::replacement {

// NOLINTBEGIN(readability-identifier-naming): called as the platform calls them.
uint32_t Quorvel_ContextInit(void* ctx, uint32_t size);
uint32_t Quorvel_IsContextInit(void* ctx);
uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node);
uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node);
uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node);
uint32_t Quorvel_ContextZeroSetMap(void* ctx);
void Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format, ...);
uint32_t QuorvelOsCreateMutex(const char* name, void** handle);
uint32_t QuorvelOsMutexLock(void* handle);
uint32_t QuorvelOsMutexUnlock(void* handle);
uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value);
uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info);
uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process);
uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments);
int32_t QuorvelUtilGetPidByName(const char* name);

int32_t wlcsm_mngr_get(uint32_t radio, uint32_t sub, const char* name, char* value);
int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value);
int32_t wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value);
char* wlcsm_nvram_get(const char* name);
int32_t wlcsm_nvram_set(const char* name, const char* value);
int32_t wlcsm_mngr_save_nvram(uint32_t a, uint32_t b, uint32_t c);
int32_t wlcsm_mngr_wifi_hal_started(uint32_t a, uint32_t b, uint32_t c);
int32_t wlcsm_mngr_start_stop_services(uint32_t index, uint32_t a, uint32_t b, uint32_t command);
int32_t wlcsm_mngr_restart(uint32_t radio, uint32_t a, uint32_t b, uint32_t c);
int32_t wlcsm_mngr_send_csa(uint32_t radio, uint32_t channel);
int32_t wlcsm_mngr_send_csa2(uint32_t radio, const char* text);
int32_t wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* record);
int32_t wlcsm_mngr_ssid_info(uint32_t radio, uint32_t sub, void* buffer);
int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t radio, uint32_t sub, const char* mac, uint32_t direction, uint32_t w1,
                                         uint32_t w2);
uint32_t wlcsm_get_systemUpSecs(void);
uint32_t wlcsm_get_wlUpSecs(uint32_t radio);
int32_t wlcsm_mngr_ci_scan_start(uint32_t radio, uint32_t channel, uint32_t dwell, uint32_t fourth);
int32_t wlcsm_mngr_ci_scanresults(uint32_t radio, void* record);
int32_t wlcsm_mngr_chanim_stats(uint32_t radio, void* record);
int32_t wlcsm_mngr_channelstats(uint32_t radio, void* record);
int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t radio, void* record, uint32_t length);

int system(const char* command);
FILE* popen(const char* command, const char* mode);
int pclose(FILE* stream);
FILE* fopen(const char* path, const char* mode);
int fclose(FILE* stream);
char* fgets(char* text, int size, FILE* stream);
void rewind(FILE* stream);
int fprintf(FILE* stream, const char* format, ...);
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream);
int fflush(FILE* stream);
int printf(const char* format, ...);
int puts(const char* text);
int socket(int domain, int type, int protocol);
int connect(int descriptor, const sockaddr* address, socklen_t length);
ssize_t read(int descriptor, void* buffer, size_t size);
int close(int descriptor);
unsigned sleep(unsigned seconds);
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);
int pthread_cancel(pthread_t thread);
int sched_setscheduler(pid_t process, int policy, const sched_param* parameters);
// NOLINTEND(readability-identifier-naming)

}  // namespace quorvel::recorder::replacement
