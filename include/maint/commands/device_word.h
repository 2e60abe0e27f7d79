/*
 * Commands that move one word of the device. All on /dev/fpga; what the words mean is the device's.
 * A failed report stores nothing unless the driver does.
 *
 * Passed through: the driver itself fills or reads what the argument points to. How much that is,
 * is the driver's, whose documentation counts; the types below are what is known of it here.
 *   RD_DEVICE_WORD_27 (0x0036)  uint16_t out
 *   RD_DEVICE_WORD_29 (0x0038)  uint16_t out: the unit's own identifier
 *   RD_DEVICE_WORD_21 (0x0040)  uint16_t out; see below
 *   RD_DEVICE_WORD_03 (0x0042)  uint16_t out
 *   RD_DEVICE_WORD_3B (0x0046)  uint32_t out: bitmap, bit n for unit or port n
 *   RD_DEVICE_WORD_4E (0x0056)  uint16_t out; opens the device for writing
 *   WR_DEVICE_WORD_41 (0x003F)  uint16_t in
 *   WR_DEVICE_WORD_22 (0x0041)  uint16_t in; see below
 * Results: 0; -1 device not opened; -2 (RD) or -4 (WR) request failed. A failed request of
 * RD_DEVICE_WORD_21 and WR_DEVICE_WORD_22 leaves the device open, and as the command is then run
 * again, up to two descriptors for each call.
 *
 *   RD_DEVICE_WORD_40 (0x003E)  uint16_t out. Result: the driver's own, whatever it is, or -1 when
 *                               the device is not opened; never retried.
 *
 * Sent by value:
 *   WR_DEVICE_WORD_28 (0x0037)  uint16_t in
 *   WR_DEVICE_WORD_2A (0x0039)  uint16_t in
 *   WR_DEVICE_WORD_04 (0x0043)  uint16_t in: replaces the whole word that RD_DEVICE_WORD_03 reads
 * Results: 0; -1 device not opened; -4 request failed.
 *
 * One-hot code:
 *   RD_DEVICE_WORD_48 (0x0044)  uint16_t out: 2, 4 or 8. Results: 0; -1; -2; -3 the device holds
 *                               none of them (nothing is stored).
 *   WR_DEVICE_WORD_49 (0x0045)  uint16_t in: 2, 4 or 8. Results: 0; -1; -4; -5 any other value.
 *
 * Flags; setters keep the other bits:
 *   RD_GROUP_FLAG (0x003A)      uint8_t out: 1 if any of bits 2, 6, 7, 8 of the group word is set
 *   WR_GROUP_FLAG (0x003B)      uint8_t in: 1 sets these four bits, any other value clears them
 *   RD_REG44_FLAG (0x009C)      uint16_t out: bit 0 of register 0x0044
 *   WR_REG44_FLAG (0x009D)      uint16_t in: 1 sets the bit, any other value clears it
 * Results: 0; -1 device not opened; -2 read failed; -4 write failed.
 */
#ifndef MAINT_COMMANDS_DEVICE_WORD_H
#define MAINT_COMMANDS_DEVICE_WORD_H

#endif
