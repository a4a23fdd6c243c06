/* The WLAN manager's client calls (libwlcsm) as the plug-in uses them: declarations only.
 *
 * `radio` and `sub` are 0-based: radio N's main interface is wlN (sub 0), its others wlN.1 to wlN.7. Calls differ in
 * the value that they return for success; each comment states it. */
#ifndef WLCSM_H
#define WLCSM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes that every buffer taking a manager variable must have. */
#define WLCSM_VALUE_SIZE 1024

/* Read a manager variable as NUL-terminated text (a station record as bytes). Return non-zero for success. */
int32_t wlcsm_mngr_get(uint32_t radio, uint32_t sub, const char* name, char* value);
int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value);

/* Writes a manager variable; a null value clears it. Returns 0 for success. */
int32_t wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value);

/* Returns the non-volatile variable's text, owned by the client until the thread's next call, or null when absent. */
char* wlcsm_nvram_get(const char* name);
/* Returns 0 for success. */
int32_t wlcsm_nvram_set(const char* name, const char* value);

/* Commands: non-zero for success. */
int32_t wlcsm_mngr_save_nvram(uint32_t a, uint32_t b, uint32_t c);
int32_t wlcsm_mngr_wifi_hal_started(uint32_t a, uint32_t b, uint32_t c);
int32_t wlcsm_mngr_start_stop_services(uint32_t index, uint32_t a, uint32_t b, uint32_t command);
int32_t wlcsm_mngr_restart(uint32_t radio, uint32_t a, uint32_t b, uint32_t c);

/* Channel switches: `channel`, or a chanspec text. Return 0 for success. */
int32_t wlcsm_mngr_send_csa(uint32_t radio, uint32_t channel);
int32_t wlcsm_mngr_send_csa2(uint32_t radio, const char* text);

/* Station, SSID and per-station statistics information. Return 0 for success. */
int32_t wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* record);
int32_t wlcsm_mngr_ssid_info(uint32_t radio, uint32_t sub, void* buffer);
int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t radio, uint32_t sub, const char* mac, uint32_t direction, uint32_t w1,
                                         uint32_t w2);

/* Seconds since the system started, and since the radio's recorded start time. */
uint32_t wlcsm_get_systemUpSecs(void);
uint32_t wlcsm_get_wlUpSecs(uint32_t radio);

/* Channel scans and statistics. Return 0 for success. */
int32_t wlcsm_mngr_ci_scan_start(uint32_t radio, uint32_t channel, uint32_t dwell, uint32_t fourth);
int32_t wlcsm_mngr_ci_scanresults(uint32_t radio, void* record);
int32_t wlcsm_mngr_chanim_stats(uint32_t radio, void* record);
int32_t wlcsm_mngr_channelstats(uint32_t radio, void* record);
int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t radio, void* record, uint32_t length);

#ifdef __cplusplus
}
#endif

#endif
