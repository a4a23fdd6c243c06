/* The call of the simulation's client library beside the platform's: it steers the simulated surroundings. */
#ifndef WLCSM_CONTROL_H
#define WLCSM_CONTROL_H

#ifdef __cplusplus
extern "C" {
#endif

/* Hands `requestJson`, a NUL-terminated JSON object of at most 60 KiB such as {"op":"state"}, to the WLAN manager's
 * control operation and returns its answer, a JSON object of any length as NUL-terminated text that the caller frees
 * with free(). The answer holds "ok": true, or "ok": false and "error": a text that says what to change. Returns null
 * when the argument is null or too long, when there is no manager, or when it does not answer in time. Requests and
 * answers are described in gateway/manager/README.md. Safe to call from any thread. */
char* wlcsm_control(const char* requestJson);

#ifdef __cplusplus
}
#endif

#endif
