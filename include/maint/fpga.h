/*
 * The one entry to all device commands.
 */
#ifndef MAINT_FPGA_H
#define MAINT_FPGA_H

#include <stdint.h>

#include "maint/api.h"
#include "maint/device_commands.h"

MAINT_C_BEGIN

/*
 * Results that all commands share; each command's comment says which it can return, and where a
 * code of its own stands for something else.
 */
enum {
    DEVICE_OK = 0,
    DEVICE_OPEN_FAILED = -1,  /* the device or file cannot be opened; unknown command */
    DEVICE_READ_FAILED = -2,  /* a read request, a reading that the command rests on (such as the
                                 PHY's status), or the read of /tmp/serialno failed */
    DEVICE_UNMAPPED = -3,     /* the device answered with a value that has no meaning here; a
                                 documented fallback may have been stored */
    DEVICE_WRITE_FAILED = -4, /* a write request failed; what was written before it stays */
    DEVICE_BAD_ARGUMENT = -5  /* the argument is out of range: nothing has been opened or changed
                                 unless the command's comment says so; not retried */
};

/*
 * Bytes of the longest record known, RuleEntry. Some commands hand the caller's pointer to the
 * driver ("passed through" or "filled by the driver" in their comments). Then the driver alone
 * decides how much it fills. Give such a command a record of this size where you are in doubt: it
 * has room for all that is known.
 *
 * The library does the same. Where it runs such a command from within, it gives it a cleared record
 * of this size. Where it issues the same request by itself, it asks for a word or a bitmap of known
 * width, and 2 or 4 bytes are enough.
 */
enum { DEVICE_RECORD_MAX = 496 };

/*
 * Runs one device command.
 *   command   number of the command
 *   argument  the command's own record, in and out as its comment says; must not be null unless the
 *             comment says that it is not used. The record is the caller's and holds partial
 *             results when a command fails.
 *
 * A command opens its device, issues its requests and closes the device before it returns (two
 * commands leave it open when they fail: maint/commands/device_word.h).
 * A failed command is run once more, with the same argument, and then its result stands; usleep(1)
 * follows each of the failed runs. A bad argument (-5) and RD_DEVICE_WORD_40 are never run twice.
 *
 * May be called from any thread. Commands are not locked against each other: two callers, threads
 * or processes, that change bits of one register at the same moment can lose a change.
 *
 * Returns the command's result: 0, or another non-negative value that the command's comment names;
 * a negative code on failure; -1 for a number that is no command.
 */
MAINT_API int32_t Fpga_Register_Set(DeviceCommandCode command, void* argument);

MAINT_C_END

#endif
