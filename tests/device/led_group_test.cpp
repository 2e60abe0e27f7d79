// The setters of groups of three elements: masks, elements and the mirror of group 7. What group 1
// does to the alert bit and to ledA is led_alert_test.cpp's.
#include "device/led_setter_fixture.h"

namespace
{

// Switch port 4 before and after a WR_LED_GROUP_7 that turns its first element on, its second off
// and its third on.
const Bytes kPortAsked = hex("04 00 00 00 00 00 00 00");
const Bytes kPortBefore = hex("04 11 12 13 14 15 16 17");
const Bytes kPortAfter = hex("04 11 01 00 01 15 16 17");

class GroupOfThree : public LedSetterTest, public testing::WithParamInterface<Group>
{
  protected:
    // Group 1 moves its alert bit and ledA by the way. Its first element off, or its elements and
    // the alert bit in accord, brings about no event of the user log.
    static constexpr uint16_t kAlertBits = 0x3080;

    [[nodiscard]] bool is_group1() const { return group.command == WR_LED_GROUP_1; }

    // The register in which group 1 has no event.
    [[nodiscard]] uint16_t without_event(uint16_t word) const
    {
        const Bytes bytes = record();
        if (!is_group1() || bytes[15] == 0) {
            return word;
        }
        const bool complete = bytes[16] == 1 && bytes[17] == 1;
        return static_cast<uint16_t>(complete ? word & ~0x0080U : word | 0x0080U);
    }

    void expect_word(uint16_t before)
    {
        const uint16_t word = without_event(before);
        uint32_t& panel = board.fpga.words[group.panel.read];
        panel = word;
        files_fail(group.command);
        EXPECT_EQ(run(group.command), 0);
        const uint32_t other = is_group1() ? kAlertBits : 0;
        EXPECT_TRUE((panel & ~other) == (group_word(group, word, record()) & ~other))
            << hex_number(word) << ": " << hex_number(panel);
    }

    // Mask and elements, first to third, by their bytes' order in the record.
    void group_put(unsigned mask, unsigned first, unsigned second, unsigned third)
    {
        put_byte(group.mask, mask);
        put_byte(group.mask + 1, first);
        put_byte(group.mask + 2, second);
        put_byte(group.mask + 3, third);
    }

    const Group& group = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Led, GroupOfThree, testing::ValuesIn(kGroups), setter_name<Group>);

TEST_P(GroupOfThree, ReadsTheRegisterChangesTheSelectedElementsAndWritesItBack)
{
    for (const unsigned mask : {0U, 8U, 1U, 2U, 4U}) { // all, none, one
        const auto prepare = [this, mask] {
            void* const memory = record_fill(0);
            group_put(mask, 1, 0, 1);
            board.fpga.words[group.panel.read] = 0x0FFF;
            board.fpga.switch_ports[kMirrorPort] = kPortBefore;
            return memory;
        };
        prepare();
        Course panel{opens_to_write(), word_read(group.panel.read),
                     value_write(group.panel.write, group_word(group, 0x0FFF, record()))};
        if (group.command == WR_LED_GROUP_7) {
            Bytes port = kPortBefore;
            port[4] = selects(mask, 0) ? '\1' : port[4];
            port[3] = selects(mask, 1) ? '\0' : port[3];
            port[2] = selects(mask, 2) ? '\1' : port[2];
            panel.push_back(record_read(0x6B72, kPortAsked));
            panel.push_back(record_write(0x6B73, port));
        }
        panel.push_back(closes());
        prove(group.command, prepare, course_of_setter(group.command, panel));
    }
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_P(GroupOfThree, AppliesTheElementsThatEachMaskSelects)
{
    board.recording = false;
    for (unsigned mask = 0; mask < 256 && !HasFailure(); ++mask) {
        for (unsigned pattern = 0; pattern < 27; ++pattern) {
            record_fill(pattern % 2); // neighbours that must not count
            group_put(mask, pattern % 3, pattern / 3 % 3, pattern / 9);
            const Bytes before = record();
            for (const unsigned word : {0x0000U, 0xFFFFU, 0x5AC3U}) {
                expect_word(static_cast<uint16_t>(word));
            }
            ASSERT_EQ(record(), before);
        }
    }
    board.recording = true;
}

TEST_P(GroupOfThree, KeepsTheOtherBitsOfEveryRegisterValue)
{
    for_every_word([this](uint16_t word) {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 8U}) {
            for (const unsigned flag : {0U, 1U}) {
                group_put(mask, flag, 1 - flag, flag);
                expect_word(word);
            }
        }
    });
}

TEST_P(GroupOfThree, TakesEveryElementValueButOneForOff)
{
    board.recording = false;
    for (unsigned value = 0; value < 256; ++value) {
        group_put(0, value, value, value);
        for (const unsigned word : {0x0000U, 0xFFFFU}) {
            expect_word(static_cast<uint16_t>(word));
        }
    }
    board.recording = true;
}

// The mirror of group 7 ---------------------------------------------------------------------

class Group7Mirror : public LedSetterTest
{
  protected:
    void* prepare(unsigned mask)
    {
        board.fpga.words[0x6B11] = 0xFFF8;
        board.fpga.switch_ports = {{kMirrorPort, kPortBefore}};
        return put(zeros(40) + byte(mask) + hex("01 00 01"));
    }
};

TEST_F(Group7Mirror, CopiesTheElementsToSwitchPort4AfterTheRegister)
{
    prove(
        WR_LED_GROUP_7, [this] { return prepare(0); },
        without_inhibit({opens_to_write(), word_read(0x6B11), value_write(0x6B12, 0xFFFE),
                         record_read(0x6B72, kPortAsked), record_write(0x6B73, kPortAfter),
                         closes()}));
    EXPECT_EQ(board.fpga.switch_ports.at(kMirrorPort), kPortAfter);
    EXPECT_EQ(board.fpga.switch_ports.size(), 1U);
}

TEST_F(Group7Mirror, ChangesOneByteOfThePortForEachSelectedElement)
{
    constexpr size_t kPortBytes[] = {4, 3, 2};
    board.recording = false;
    for (unsigned mask = 0; mask < 256; ++mask) {
        for (unsigned pattern = 0; pattern < 27; ++pattern) {
            prepare(mask);
            Bytes expected = kPortBefore;
            const unsigned elements[] = {pattern % 3, pattern / 3 % 3, pattern / 9};
            for (unsigned n = 0; n < 3; ++n) {
                put_byte(41 + n, elements[n]);
                if (selects(mask, n)) {
                    expected[kPortBytes[n]] = elements[n] == 1 ? '\1' : '\0';
                }
            }
            files_fail(WR_LED_GROUP_7);
            EXPECT_EQ(run(WR_LED_GROUP_7), 0);
            ASSERT_EQ(board.fpga.switch_ports.at(kMirrorPort), expected) << "mask " << mask;
        }
    }
    board.recording = true;
}

// The port's number is the driver's from the read on.
TEST_F(Group7Mirror, WritesThePortThatTheDriverReturned)
{
    prepare(0);
    board.fpga.answered = [](uint32_t request, char* port) {
        if (request == 0x6B72) {
            port[0] = 9;
        }
    };
    EXPECT_EQ(run(WR_LED_GROUP_7), 0);
    EXPECT_EQ(board.fpga.switch_ports,
              (std::map<uint8_t, Bytes>{{kMirrorPort, kPortBefore},
                                        {9, hex("09 11 01 00 01 15 16 17")}}));
}

TEST_F(Group7Mirror, LeavesTheRegisterChangedWhenThePortFails)
{
    const struct {
        size_t call; // behind those of the inhibit
        int32_t result;
        uint32_t word;
    } runs[] = {
        {1, -1, 0xFFF8}, {2, -2, 0xFFF8}, {3, -4, 0xFFF8}, {4, -2, 0xFFFE}, {5, -4, 0xFFFE}};
    for (const auto& [call, result, word] : runs) {
        prepare(0);
        board.restart();
        fail_in_both_runs(kNotInhibited.size() + call, call == 1 ? 0 : 1);
        EXPECT_EQ(run(WR_LED_GROUP_7), result);
        EXPECT_EQ(board.fpga.words[0x6B11], word);
        EXPECT_EQ(board.fpga.switch_ports.at(kMirrorPort), kPortBefore);
    }
}

// The register alone ------------------------------------------------------------------------

TEST_F(LedSetterTest, Group1SetsItsThirdBitWhateverTheThirdElementSays)
{
    for (const unsigned mask : {0U, 4U, 0xFFU}) {
        for (const unsigned third : {0U, 1U, 2U}) {
            put_byte(14, mask);
            put_byte(17, third);
            for (const unsigned word : {0x0000U, 0x0020U}) {
                board.fpga.words[0x6B11] = word;
                EXPECT_EQ(run(WR_LED_GROUP_1), 0);
                EXPECT_EQ(board.fpga.words[0x6B11], 0x0020U);
            }
        }
    }
}

TEST_F(LedSetterTest, Groups4To6TakeTheirThirdElementByTheSecondMaskBit)
{
    const struct {
        DeviceCommandCode command;
        size_t mask;
        uint32_t by_bit1; // third element alone on
        uint32_t by_bit2;
    } groups[] = {
        {WR_LED_GROUP_3, 24, 0x0000, 0x0002},
        {WR_LED_GROUP_4, 28, 0x0020, 0x0000},
        {WR_LED_GROUP_5, 32, 0x0200, 0x0000},
        {WR_LED_GROUP_6, 36, 0x2000, 0x0000},
    };
    for (const auto& [command, mask, by_bit1, by_bit2] : groups) {
        record_fill(0);
        put_byte(mask + 3, 1);
        for (const auto& [bit, expected] : {std::pair{2U, by_bit1}, std::pair{4U, by_bit2}}) {
            board.fpga.words[0x6B0F] = 0;
            put_byte(mask, bit);
            EXPECT_EQ(run(command), 0);
            EXPECT_EQ(board.fpga.words[0x6B0F], expected) << command_name(command);
        }
    }
}

} // namespace
