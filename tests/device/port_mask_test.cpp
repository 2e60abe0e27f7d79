// The port mask.
#include "device/caller_memory_fixture.h"

namespace
{

class PortMasks : public CallerMemoryTest
{
};

TEST_F(PortMasks, TheMaskIsFilledInTheCallersRecord)
{
    board.fpga.words[0x6B8D] = 0x89ABCDEF;
    prove_filled(RD_PORT_MASK, 0x6B8D, hex("AA BB CC DD 11 22 33 44"),
                 hex("AA BB CC DD EF CD AB 89"), 4);
}

struct MaskChange {
    const char* port; // and value
    uint32_t held;
    uint32_t written;
};

// Set, and held already; cleared.
constexpr MaskChange kMaskChanges[] = {{"03 00 01 00", 0x81234567, 0x8123456F},
                                       {"04 00 01 00", 0x80000011, 0x80000011},
                                       {"04 00 01 00", 0x80000001, 0x80000011},
                                       {"01 00 02 00", 0xFFFFFFFF, 0xFFFFFFFD}};

TEST_F(PortMasks, APortsBitIsSetOrClearedInTheCallersMask)
{
    for (const auto& [port, held, written] : kMaskChanges) {
        SCOPED_TRACE(hex_number(held));
        device_put = [this, held = held] { board.fpga.words[0x6B8D] = held; };
        const Bytes before = hex(port) + hex("11 22 33 44");
        prove_changed(WR_PORT_MASK_BIT, before, record_read(0x6B8D, hex("11 22 33 44")),
                      value_write(0x6B8E, written, kElsewhere), record_read(0x6B8D, le32(written)),
                      hex(port) + le32(written));
        EXPECT_EQ(board.fpga.words[0x6B8D], held) << "its write failed";
        EXPECT_EQ(run(WR_PORT_MASK_BIT, before), 0);
        EXPECT_EQ(board.fpga.words[0x6B8D], written);
    }
}

TEST_F(PortMasks, EveryPortHasItsBit)
{
    board.recording = false;
    for (uint32_t port = 1; port <= 29; ++port) {
        for (const uint32_t value : {0U, 1U, 2U, 255U, 256U, 257U, 0x8001U, 0xFFFFU}) {
            for (const uint32_t mask : {0U, 0xFFFFFFFFU, 0xA5A5A5A5U, 0x5A5A5A5AU}) {
                const uint32_t bit = uint32_t{1} << port;
                const uint32_t expected = value == 1 ? mask | bit : mask & (0xFFFFFFFF - bit);
                board.fpga.words[0x6B8D] = mask;
                const Bytes asked = le16(port) + le16(value);
                ASSERT_EQ(record_after(WR_PORT_MASK_BIT, asked + le32(0x44332211)),
                          asked + le32(expected));
                ASSERT_EQ(board.fpga.words[0x6B8D], expected);
            }
        }
    }
}

TEST_F(PortMasks, OnlyTheValueOneSetsABit)
{
    for_every_word([&](uint16_t value) {
        board.fpga.words[0x6B8D] = 0x00FF00FF;
        ASSERT_EQ(run(WR_PORT_MASK_BIT, le16(7) + le16(value) + le32(0)), 0);
        ASSERT_EQ(board.fpga.words[0x6B8D], value == 1 ? 0x00FF00FFU : 0x00FF007FU);
    });
}

TEST_F(PortMasks, NoOtherPortHasABit)
{
    for (const uint32_t port : {0U, 30U, 31U, 32U, 33U, 255U, 256U, 257U, 0x8001U, 0xFFFFU}) {
        expect_refused(WR_PORT_MASK_BIT, le16(port) + le16(1) + le32(0x44332211));
    }
    for_every_word([&](uint16_t port) {
        ASSERT_EQ(run(WR_PORT_MASK_BIT, le16(port) + le16(1) + le32(0)),
                  port >= 1 && port <= 29 ? 0 : -5);
    });
}

} // namespace
