/* The calls that a host process makes beyond those of the plug-in (quorvel.h): the reader's side of the log. */
#ifndef QUORVEL_HOST_CONTROL_H
#define QUORVEL_HOST_CONTROL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the text of the last error (level 0) that the calling thread logged, without its newline; "" when there was
 * none since the last clearing. Valid until the thread logs again. */
const char* QuorvelHost_LastError(void);

/* Forgets the calling thread's last error. */
void QuorvelHost_ClearLastError(void);

/* Lets lines up to `level` (0 errors to 3 tracing) through from now on. Before the first call the environment variable
 * QUORVEL_LOG_LEVEL counts, 0 when it is unset or no number from 0 to 3. */
void QuorvelHost_SetLogLevel(uint32_t level);

/* Takes one whole line, newline included and NUL-terminated. Calls are never concurrent. The sink must not log. */
typedef void (*QuorvelHostLogSink)(uint32_t level, const char* line, void* user);

/* Hands lines to `sink` with `user` from now on; a null sink goes back to where QUORVEL_LOG_FILE says: "stderr" (also
 * when unset), a file path that lines are appended to, or "" for nowhere. */
void QuorvelHost_SetLogSink(QuorvelHostLogSink sink, void* user);

#ifdef __cplusplus
}
#endif

#endif
