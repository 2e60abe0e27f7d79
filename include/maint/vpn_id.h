/*
 * The VPN identity of the device, a number in the configuration /conf/config.
 */
#ifndef MAINT_VPN_ID_H
#define MAINT_VPN_ID_H

#include <stdint.h>

#include "maint/api.h"

MAINT_C_BEGIN

/*
 * Reads the identity. Where it stands depends on the flag that RD_VLANT_MAP_ENABLE reports:
 *   1                the key PPPOEOFF_VPN_ID and the index in at least two digits, such as
 *                    PPPOEOFF_VPN_ID03, PPPOEOFF_VPN_ID100 or PPPOEOFF_VPN_ID-1
 *   any other value  the key OWN_VPN_ID
 * Keys are looked up as GetIniFileString does, under the save lock (blocking), before the first
 * site section: a key also matches as the beginning of a longer one.
 *   index  used only while the flag is 1; which indexes exist is the caller's affair
 *   id     out: the identity, on success only. White space, a sign and the decimal digits up to the
 *          first other character count; without a digit the identity is 0. The number is a signed
 *          one: a negative value is stored as its 32-bit two's complement, and a number beyond
 *          -2147483648 .. 2147483647 as the nearer of the two.
 *
 * Returns 0;
 *   -1  the flag cannot be read (one line in the system log; nothing on the console, unless the log
 *       itself fails)
 *   -2  flag 1: the key has no value that GetIniFileString finds
 *   -3  flag 1: the value is empty
 *   -4  otherwise: as -2
 *   -5  otherwise: as -3
 */
MAINT_API int32_t Get_Conf_VpnId(int32_t index, uint32_t* id);

MAINT_C_END

#endif
