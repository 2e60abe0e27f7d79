/*
 * The state of every indicator of one unit: the argument of the LED and line commands and the
 * whole contents of the LED state file /tmp/led_rewrite_inh.
 */
#ifndef MAINT_LED_STATE_H
#define MAINT_LED_STATE_H

#include <stdint.h>

/*
 * A group of three on/off elements.
 *   valid    which elements a command applies, 0: all three; the order in which bits 0..2 pick the
 *            elements is the command's. Bits 3..7 select nothing: 8 alone applies no element, and
 *            the elements are written back as they were
 *   element  1: on, any other value: off
 */
typedef struct LedGroup {
    uint8_t valid;      /* 0 */
    uint8_t element[3]; /* 1 */
} LedGroup;

/*
 * 44 bytes. Three-state indicators: 0 off, 1 on, 2 the further pattern. Reports hold 0 or 1 in the
 * elements and never touch the valid masks.
 */
typedef struct LedStateRecord {
    uint32_t ownId;      /* 0: the unit's own identifier, 1..30; RD_DEVICE_WORD_29 reads it */
    uint32_t targetId;   /* 4: the unit that is read, 1..30; ownId for the local panel */
    uint8_t ledA;        /* 8: four states, 0..3 */
    uint8_t ledB;        /* 9: three states */
    uint8_t ledC;        /* 10: three states */
    uint8_t ledD;        /* 11: three states */
    uint8_t ledE;        /* 12: three states */
    uint8_t ledF;        /* 13: three states; the line mode */
    LedGroup group1;     /* 14 */
    LedGroup group2;     /* 18: the line flags */
    uint8_t reserved[2]; /* 22: 0 in a saved state, never read */
    LedGroup group3;     /* 24 */
    LedGroup group4;     /* 28 */
    LedGroup group5;     /* 32 */
    LedGroup group6;     /* 36 */
    LedGroup group7;     /* 40 */
} LedStateRecord;

#endif
