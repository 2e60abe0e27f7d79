/*
 * The indicators of the front panel, of which ledF is the line mode and group 2 the line flags. On
 * /dev/fpga; the LED state file /tmp/led_rewrite_inh and the save lock are used as said below.
 *
 * LED rewrite inhibit. While one of the fixed display patterns is shown, the LED state file exists.
 * It holds the LedStateRecord that the panel is to return to, and the setters below only merge
 * their bytes into it, under the save lock: then they return 1 and leave the panel alone. A
 * setter that cannot update the file drives the panel; a save lock that cannot be had stops
 * nothing. The setters of the line mode and the line flags are never deferred.
 */
#ifndef MAINT_COMMANDS_LED_H
#define MAINT_COMMANDS_LED_H

#include <stdint.h>

#include "maint/typed_call.h"

#include "maint/led_state.h"

/* Result of a setter whose change went into the LED state file only. */
enum { LED_CHANGE_RECORDED = 1 };

/*
 * Setters of one indicator; of the record only the named byte counts.
 *
 *   WR_LED_B (0x0015) ledB
 *   WR_LED_C (0x0019) ledC
 *   WR_LED_D (0x0017) ledD
 *   WR_LED_E (0x0013) ledE
 *                     1: low bit of the pair alone; 2: high bit, the low one as it was; any other
 *                     value: neither
 *   WR_LED_A (0x0011) ledA
 *                     1: low bit of the pair alone; 3: high bit alone; 2: both, and the alert bit
 *                     is cleared; any other value: neither
 *
 * Results: 0 written to the panel; 1 recorded; -1 device not opened; -2 register not read;
 * -4 register not written (WR_LED_C: -1).
 */
MAINT_COMMAND_IN(WR_LED_B, maint_wr_led_b, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_C, maint_wr_led_c, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_D, maint_wr_led_d, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_E, maint_wr_led_e, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_A, maint_wr_led_a, LedStateRecord)

/*
 * Setters of a group of three elements; of the record only the named group counts.
 *
 *   WR_LED_GROUP_3 (0x0021), WR_LED_GROUP_7 (0x0029)
 *                     mask bits 0, 1, 2 select the first, second, third element
 *   WR_LED_GROUP_4 (0x0023), WR_LED_GROUP_5 (0x0025), WR_LED_GROUP_6 (0x0027)
 *                     mask bits 0, 1, 2 select the first, third, second element
 *   WR_LED_GROUP_7    then copies the selected elements to the link, speed and duplex bytes of
 *                     switch port 4
 *   WR_LED_GROUP_1 (0x001D)
 *                     mask bits 0 and 1 select the first and the second element; mask bit 2 turns
 *                     the third on, whatever its byte says: nothing but WR_LED_RESTORE turns it
 *                     off. The group also drives the alert bit, ledA, and bit 6 of device word 03,
 *                     which is set when ledA becomes 3, cleared when ledA becomes 2, and else left:
 *                     first element 0: alert off, a ledA of 2 or 3 becomes 2;
 *                     first element not 0, the others both 1, alert on: alert off, user log event
 *                     256, a ledA of 2 or 3 becomes 2;
 *                     first element not 0, the others not both 1, alert off: alert on, user log
 *                     event 257, a ledA other than 0 becomes 3.
 *                     The alert bit is bit 7 of LED register B; bit and ledA count as the panel
 *                     shows them. The event (userLog_put, whose failures are reported and change no
 *                     result) and ledA are handled even while the inhibit defers the rest: ledA as
 *                     the pattern's value demands, in the LED state file. The alert
 *                     bit and device word 03 are not written then, so that each repeated command
 *                     logs its event again, an alert that ends keeps its bit, and bit 6 is set by a
 *                     WR_LED_RESTORE with a ledA of 3 but not cleared by any.
 *
 * In the LED state file a group is always recorded whole, whatever the mask says.
 *
 * Results: 0 written to the panel; 1 recorded; -1 device not opened; -2 register, switch port or
 * device word 03 not read; -4 one of them not written. When WR_LED_GROUP_7 fails at the switch
 * port, or WR_LED_GROUP_1 at the device word, the panel has been changed. WR_LED_GROUP_1 opens and
 * reads the device while the inhibit is on, too: when the device cannot be opened or read it
 * returns -1 or -2 although the group has been recorded. The second run of a failed WR_LED_GROUP_1
 * starts from what the first one left: an event is logged once more when the register was not
 * written; when it was, the event's change does not reach device word 03, and 0 is returned.
 */
MAINT_COMMAND_IN(WR_LED_GROUP_3, maint_wr_led_group_3, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_GROUP_7, maint_wr_led_group_7, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_GROUP_4, maint_wr_led_group_4, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_GROUP_5, maint_wr_led_group_5, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_GROUP_6, maint_wr_led_group_6, LedStateRecord)
MAINT_COMMAND_IN(WR_LED_GROUP_1, maint_wr_led_group_1, LedStateRecord)

/*
 * WR_LINE_MODE (0x001B), in: ledF. 1 sets bit 4 and clears bit 5 of the line control word; 2 sets
 * bit 5 and keeps bit 4; any other value clears both. Not deferred while the LED rewrite inhibit is
 * on, nor changed by its end.
 *
 * WR_LINE_FLAGS (0x001F), in: group2. Elements 0, 1, 2 drive bits 2, 0, 1 of the line control word;
 * mask bits 0, 1, 2 select them in that order. Not deferred while the LED rewrite inhibit is on,
 * whose end brings back the flags saved at its beginning.
 *
 * Results: 0; -1 device not opened; -2 word not read; -4 word not written.
 */
MAINT_COMMAND_IN(WR_LINE_MODE, maint_wr_line_mode, LedStateRecord)
MAINT_COMMAND_IN(WR_LINE_FLAGS, maint_wr_line_flags, LedStateRecord)

/*
 * RD_LED_STATE (0x000E): ownId and targetId in, indicators and elements out; valid masks and
 * reserved bytes are not touched. The own identifier is a word that RD_DEVICE_WORD_29 reads; the
 * driver may fill more. The panel of unit 3, with maint/commands/device_word.h:
 *
 *     uint16_t own[DEVICE_RECORD_MAX / 2] = {0};
 *     LedStateRecord state = {0};
 *     int32_t result = maint_rd_device_word_29(own);
 *     if (result == DEVICE_OK) {
 *         state.ownId = own[0];
 *         state.targetId = 3;
 *         result = maint_rd_led_state(&state);
 *     }
 *
 * An ownId left 0 is refused with -5. Another unit is shown dark (every element and ledC to
 * ledF 0) when the hardware says so or when its VPN identity is not the configured one, which is
 * looked up in /conf/config under the save lock; an identity that cannot be read is no mismatch.
 * The look-up reports as Get_Conf_VpnId does (maint/vpn_id.h): a line in the system log when the
 * device's flag cannot be read, and a message when the configuration is missing.
 * Results: 0; -1 device not opened; -2 a read failed (what was read before it is filled); -5 an
 * identifier outside 1..30.
 */
MAINT_COMMAND(RD_LED_STATE, maint_rd_led_state, LedStateRecord)

/*
 * WR_LED_PATTERN_1 (0x0097), WR_LED_PATTERN_2 (0x0095), WR_LED_PATTERN_3 (0x0094): start the
 * inhibit and show a fixed pattern; the argument is not used and may be null. The panel is saved to
 * the LED state file first, unless the file is there already. ledF and the groups are not touched;
 * bit 7 of device word 03 is set.
 *
 *                ledA  ledB  ledC  ledD  ledE
 *   pattern 1      1     1     1     2     1
 *   pattern 2      1     2     1     1     2
 *   pattern 3      2     2     2     1     2
 *
 * A setter that runs at the same moment may have found no inhibit yet; the restore undoes its
 * change.
 * Results: 0; -1 panel not saved (its registers are as they were), or device not opened; -2 a read,
 * -4 a write failed, with the registers written before changed. Once the panel is saved, the
 * inhibit is on, also when the command then fails: it ends with WR_LED_RESTORE. A state file that
 * was made but could not be written whole stays and counts as saved: the second run of the failed
 * command draws the pattern and returns 0. WR_LED_RESTORE then fails with -1, and the setters drive
 * the panel, until the file is removed.
 */
MAINT_COMMAND_ALONE(WR_LED_PATTERN_1, maint_wr_led_pattern_1)
MAINT_COMMAND_ALONE(WR_LED_PATTERN_2, maint_wr_led_pattern_2)
MAINT_COMMAND_ALONE(WR_LED_PATTERN_3, maint_wr_led_pattern_3)

/*
 * WR_LED_RESTORE (0x0096), out: ends the inhibit; hands the saved state to the caller as it stands
 * in the file (44 bytes, identifiers and masks included, also when a later step fails), applies it
 * to the panel and removes the file. Every element is applied, so that line flags set meanwhile are
 * lost; ledF and the alert bit are left alone, and so is an indicator whose saved value is above
 * its range. Bit 7 of device word 03 is cleared; a ledA of 3 sets its bit 6.
 * Switch port 4 is not brought up to date with group 7.
 * Results: 0, also when no inhibit was on (nothing is touched) and when the file cannot be removed
 * (the inhibit then stays on); -1 file or device not opened or file of less than 44 bytes; -2 a
 * read, -4 a write failed, of a register or of device word 03. On failure the inhibit stays on,
 * with what was restored before.
 */
MAINT_COMMAND(WR_LED_RESTORE, maint_wr_led_restore, LedStateRecord)

#endif
