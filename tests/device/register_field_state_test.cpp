// Commands of register fields whose values stand for states.
#include "device/register_fixture.h"

namespace
{

class RegisterState : public RegisterTest
{
};

constexpr uint16_t kStateWords[] = {0x0000, 0xFFFF, 0xA5C3, 0x3000, 0xCFFF};

// Eight flags of 0xF4 -----------------------------------------------------------------------

TEST_F(RegisterState, TheFlagsOfF4StartWithBit7)
{
    read_every_value(RD_REGF4_FLAGS, 0xF4, untouched(8), [](uint16_t word) {
        return byte(word >> 7 & 1) + byte(word >> 6 & 1) + byte(word >> 5 & 1) +
               byte(word >> 4 & 1) + byte(word >> 3 & 1) + byte(word >> 2 & 1) +
               byte(word >> 1 & 1) + byte(word & 1);
    });
}

// A select bit of 0x168 ---------------------------------------------------------------------

constexpr uint16_t kSelects[] = {0x0100, 0x0200, 0x0400, 0x0800};

TEST_F(RegisterState, TheIndexSelectsOneOfBits8To11)
{
    for (uint32_t index = 0; index < 4; ++index) {
        const uint16_t bit = kSelects[index];
        read_every_value(RD_REG168_SELECT, 0x168, le16(index) + le16(0xA5A5), [=](uint16_t word) {
            return le16(index) + le16((word & bit) != 0 ? 1 : 0);
        });
        for (const uint32_t value : {0U, 1U, 2U, 255U, 0x0101U}) {
            write_over_every_value(
                WR_REG168_SELECT, 0x168, le16(index) + le16(value), [=](uint16_t word) {
                    return static_cast<uint16_t>(value == 1 ? word | bit : word & ~bit);
                });
        }
    }
}

TEST_F(RegisterState, AnIndexAbove3IsRefused)
{
    for (const DeviceCommandCode command : {RD_REG168_SELECT, WR_REG168_SELECT}) {
        refuse_all_but(
            command, [](uint16_t index) { return le16(index) + le16(1); },
            [](uint16_t index) { return index <= 3; });
        for (const uint32_t index : {4U, 0x0100U, 0xFFFFU}) {
            expect_refused(command, le16(index) + le16(1));
        }
    }
}

TEST_F(RegisterState, ASelectBitReadsBackAsWritten)
{
    for (uint32_t index = 0; index < 4; ++index) {
        for (const uint32_t value : {1U, 0U, 1U, 0xFFFFU}) {
            EXPECT_EQ(run(WR_REG168_SELECT, le16(index) + le16(value)), 0);
            expect_run(RD_REG168_SELECT, le16(index) + untouched(2), 0,
                       le16(index) + le16(value == 1 ? 1 : 0));
        }
    }
}

// The states of 0x158, 0xFE and 0x16C ----------------------------------------------------------

struct StateRow {
    DeviceCommandCode get;
    DeviceCommandCode set;
    uint32_t address;
    size_t size; // of the caller's state
    uint16_t field;
    uint16_t bits[3]; // written for 0 and what is not named, for 1, for 2
};

constexpr StateRow kStates[] = {
    {RD_REG158_STATE, WR_REG158_STATE, 0x158, 1, 0x3000, {0x0000, 0x1000, 0x2000}},
    {RD_REGFE_MODE, WR_REGFE_MODE, 0x0FE, 2, 0x000F, {0x000F, 0x0008, 0x0000}},
    {RD_REG16C_ENABLE, WR_REG16C_ENABLE, 0x16C, 1, 0x0003, {0x0003, 0x0000, 0x0003}},
};

uint16_t with_state(const StateRow& row, uint16_t word, uint32_t state)
{
    return static_cast<uint16_t>((word & ~row.field) |
                                 row.bits[state == 1 || state == 2 ? state : 0]);
}

Bytes state_bytes(const StateRow& row, uint32_t state)
{
    return le32(state).substr(0, row.size);
}

TEST_F(RegisterState, AStateReplacesItsBitsAndKeepsTheOthers)
{
    for (const StateRow& row : kStates) {
        for (const uint32_t state : {0U, 1U, 2U, 3U, 255U}) {
            write_over_every_value(row.set, row.address, state_bytes(row, state),
                                   [&](uint16_t word) { return with_state(row, word, state); });
        }
    }
}

TEST_F(RegisterState, EveryStateOtherThanTheNamedIsWrittenAsZeroIs)
{
    for (const StateRow& row : kStates) {
        for (const uint16_t word : kStateWords) {
            const uint32_t last = row.size == 1 ? UINT8_MAX : UINT16_MAX;
            const uint32_t step = row.size == 1 ? 1 : kLoopShare.wordStep;
            for (uint32_t state = 0; state <= last; state += step) {
                at(row.address) = word;
                board.recording = false;
                ASSERT_EQ(run(row.set, state_bytes(row, state)), 0);
                ASSERT_EQ(at(row.address), with_state(row, word, state))
                    << command_name(row.set) << " " << hex_number(state);
            }
        }
    }
}

TEST_F(RegisterState, TheStateOf158IsTwoForBit13AndElseBit12)
{
    read_every_value(RD_REG158_STATE, 0x158, untouched(1), [](uint16_t word) {
        constexpr unsigned kStateOfField[] = {0, 1, 2, 2};
        return byte(kStateOfField[word >> 12 & 3]);
    });
}

TEST_F(RegisterState, TheModeOfFEIsMappedFromItsNibble)
{
    read_every_value(RD_REGFE_MODE, 0xFE, untouched(2), [](uint16_t word) {
        constexpr uint32_t kModeOfNibble[] = {2, 2, 2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0};
        return le16(kModeOfNibble[word & 0xF]);
    });
}

TEST_F(RegisterState, TheEnableOf16CIsOneWhenBothBitsAreClear)
{
    read_every_value(RD_REG16C_ENABLE, 0x16C, untouched(1), [](uint16_t word) {
        constexpr unsigned kEnableOfField[] = {1, 0, 0, 0};
        return byte(kEnableOfField[word & 3]);
    });
}

TEST_F(RegisterState, AStateReadsBackAsWritten)
{
    for (const StateRow& row : kStates) {
        for (const uint32_t state : {0U, 1U, 2U, 3U, 0U, 255U}) {
            const bool kept = state < 2 || (state == 2 && row.address != 0x16C);
            EXPECT_EQ(run(row.set, state_bytes(row, state)), 0);
            expect_run(row.get, untouched(row.size), 0, state_bytes(row, kept ? state : 0));
        }
    }
}

} // namespace
