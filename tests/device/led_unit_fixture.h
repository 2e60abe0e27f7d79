// What the tests that ask for other units start from: maps of units, and the identity of each, in
// the hardware and in the configuration.
#pragma once

#include "device/device_word_03.h"
#include "device/led_panel_words.h"

constexpr uint32_t kUnitMapD = 0x6B3D;
constexpr uint32_t kUnitMapE = 0x6B3B;
constexpr uint32_t kUnitMapR = 0x6B8D;
constexpr uint16_t kIdentity = 100; // of unit n: 100 + n

// The question for one unit's identity, with so many lines read of the configuration.
inline Trace match_calls(uint32_t unit, size_t lines)
{
    const Course questions{opens_to_read(),
                           record_read(0x6B4C, le32(unit) + zeros(6) + hex("01 00 00 00 00 00")),
                           opens_to_read(), word_read(kDeviceWord03), closes()};
    return calls_of(questions) + lookup_calls(kConfig, lines) + calls_of({closes()});
}

class UnitTest : public LedTest
{
  protected:
    void SetUp() override
    {
        log_clear(board);
        board.fpga.words[kDeviceWord03] = kMapEnabled;
        Bytes keys;
        for (uint32_t unit = 0; unit <= 34; ++unit) {
            char key[48];
            snprintf(key, sizeof key, "PPPOEOFF_VPN_ID%02u='%u'\n", unit, kIdentity + unit);
            keys += key;
            identity_put(unit, static_cast<uint16_t>(kIdentity + unit));
        }
        board.file_put(kConfig, keys);
    }

    // What the hardware holds for a unit; the configured identity is 100 + unit.
    void identity_put(uint32_t unit, uint16_t value) { board.fpga.id_values[unit] = value; }
    void identity_put_other(uint32_t unit) { identity_put(unit, 1); }
};
