/*
 * What the headers of the commands declare beside each description: a typed function for C and C++,
 * and for C++ the type of the command's record at compile time. Both cost nothing: the functions
 * are Fpga_Register_Set with a number and a pointer.
 *
 *     RtcDateTime now;
 *     int32_t result = maint_rd_rtc_time(&now);       C and C++
 *     maint::Command<RD_RTC_TIME>::Record now;        C++: RtcDateTime
 *
 * Where a description says that the driver fills the record, or that it is passed through, the type
 * is what is known of it, and the driver may fill more. Who is in doubt gives Fpga_Register_Set a
 * record of DEVICE_RECORD_MAX bytes (maint/fpga.h); an array of words of that size goes to the
 * typed function, too.
 */
#ifndef MAINT_TYPED_CALL_H
#define MAINT_TYPED_CALL_H

#include <stddef.h>
#include <stdint.h>

#include "maint/fpga.h"

/* NOLINTBEGIN(bugprone-macro-parentheses): types take none */
#ifdef __cplusplus

namespace maint
{

/*
 * Record    type of the command's record; void where it has none, or none of a known size
 * Argument  pointer that its typed function takes, to const where the record is only read; for a
 *           command whose argument is not used void*
 * A number that is no command has neither. These stay C++ in a program that includes the headers
 * within extern "C".
 */
extern "C++" {
template <DeviceCommandCode kCode> struct Command;
}

} // namespace maint

#define MAINT_COMMAND_TYPES(CODE, ARGUMENT, RECORD)                                                \
    extern "C++" template <> struct maint::Command<CODE> {                                         \
        using Record = RECORD;                                                                     \
        using Argument = ARGUMENT*;                                                                \
    };
#define MAINT_ONLY_READ(RECORD, argument) (const_cast<RECORD*>(argument))

#else

#define MAINT_COMMAND_TYPES(CODE, ARGUMENT, RECORD)
#define MAINT_ONLY_READ(RECORD, argument) ((RECORD*)(uintptr_t)(argument))

#endif

/* A command that may change its record. */
#define MAINT_COMMAND(CODE, FUNCTION, RECORD)                                                      \
    MAINT_COMMAND_TYPES(CODE, RECORD, RECORD)                                                      \
    static inline int32_t FUNCTION(RECORD* argument)                                               \
    {                                                                                              \
        return Fpga_Register_Set(CODE, argument);                                                  \
    }

/* A command that only reads its record. */
#define MAINT_COMMAND_IN(CODE, FUNCTION, RECORD)                                                   \
    MAINT_COMMAND_TYPES(CODE, const RECORD, RECORD)                                                \
    static inline int32_t FUNCTION(const RECORD* argument)                                         \
    {                                                                                              \
        return Fpga_Register_Set(CODE, MAINT_ONLY_READ(RECORD, argument));                         \
    }

/* A command whose argument is not used. */
#define MAINT_COMMAND_ALONE(CODE, FUNCTION)                                                        \
    MAINT_COMMAND_TYPES(CODE, void, void)                                                          \
    static inline int32_t FUNCTION(void)                                                           \
    {                                                                                              \
        return Fpga_Register_Set(CODE, NULL);                                                      \
    }
/* NOLINTEND(bugprone-macro-parentheses) */

#endif
