/*
 * The save lock: a system-wide advisory lock, an exclusive flock on /tmp/Saveing, held while files
 * under /conf are saved, while the configuration is read and while the LED state file is used.
 *
 * Order of use: lock, work, unlock with the handle that lock returned. The lock excludes open
 * files, not processes: a second lock in the same process waits for the first, for ever in
 * blocking mode. These take it themselves, in blocking mode; do not call them while holding it:
 *   GetIniFileString, Get_Conf_VpnId
 *   RD_MTU_LIMIT, WR_MTU_LIMIT
 *   RD_LED_STATE, RD_UNIT_STATUS_MAP, RD_UNIT_STATUS_FLAG (for other units' identities)
 *   WR_LED_A to WR_LED_E, WR_LED_GROUP_1 and _3 to _7, WR_LED_PATTERN_1 to _3, WR_LED_RESTORE
 * The file is left in place, empty.
 */
#ifndef MAINT_SAVE_LOCK_H
#define MAINT_SAVE_LOCK_H

#include <stdint.h>
#include <stdio.h>

#include "maint/api.h"

MAINT_C_BEGIN

/* 0: wait for the lock, without a time limit. Any other value: fail at once if it is held. */
typedef uint32_t SaveLockMode;
enum { SAVE_LOCK_WAIT = 0, SAVE_LOCK_TRY = 1 };

/*
 * Takes the lock.
 *   handle  out: the open stream that holds the lock; null on failure
 * Returns 0; -1 the file cannot be opened (message 001), the lock cannot be had in blocking (002:
 * a signal can end the wait) or in non-blocking mode (003). Messages on the console only.
 */
MAINT_API int32_t fileAccess_lock(FILE** handle, SaveLockMode mode);

/*
 * Releases the lock by closing the stream.
 *   handle  from fileAccess_lock; null is refused with message 001. It is gone after any other
 *           result, and the lock is free, even if closing failed.
 * Returns 0; -1 null handle (001) or the stream cannot be closed (002). Messages on the console
 * only.
 */
MAINT_API int32_t fileAccess_unlock(FILE* handle);

MAINT_C_END

#endif
