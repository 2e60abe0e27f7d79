// The setters of groups of three elements: masks, elements and the mirror of group 7. What group 1
// does to the alert bit and to ledA is alert_test.cpp's.
#include <array>

#include "device/led_setter_fixture.h"

namespace
{

struct Element {
    size_t byte;
    uint16_t bit;
    bool one_way = false; // set whenever it is selected, never cleared
};

struct Register {
    uint32_t read;
    uint32_t write;
};

constexpr Register kRegisterA{0x6B0F, 0x6B10};
constexpr Register kRegisterB{0x6B11, 0x6B12};
constexpr Register kRegisterC{0x6B4F, 0x6B50};

// A group; its elements in the order of the mask bits that select them.
struct Group {
    const char* name;
    DeviceCommandCode command;
    size_t mask;
    Register word;
    std::array<Element, 3> elements;
    bool asks_for_inhibit = true;
};

constexpr Group kGroups[] = {
    {"Group1", 29, 14, kRegisterB, {{{15, 0x0040}, {16, 0x0010}, {17, 0x0020, true}}}},
    {"LineFlags", 31, 18, kRegisterC, {{{19, 0x0004}, {20, 0x0001}, {21, 0x0002}}}, false},
    {"Group3", 33, 24, kRegisterA, {{{25, 0x0004}, {26, 0x0001}, {27, 0x0002}}}},
    {"Group4", 35, 28, kRegisterA, {{{29, 0x0040}, {31, 0x0020}, {30, 0x0010}}}},
    {"Group5", 37, 32, kRegisterA, {{{33, 0x0400}, {35, 0x0200}, {34, 0x0100}}}},
    {"Group6", 39, 36, kRegisterA, {{{37, 0x4000}, {39, 0x2000}, {38, 0x1000}}}},
    {"Group7", 41, 40, kRegisterB, {{{41, 0x0004}, {42, 0x0001}, {43, 0x0002}}}},
};

bool selected(unsigned mask, unsigned bit)
{
    return mask == 0 || ((mask >> bit) & 1U) == 1U;
}

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

    [[nodiscard]] bool is_group1() const { return group.command == 29; }
    [[nodiscard]] bool is_group7() const { return group.command == 41; }

    // The register in which group 1 has no event.
    [[nodiscard]] uint16_t without_event(uint16_t word) const
    {
        const Bytes bytes = record.bytes();
        if (!is_group1() || bytes[15] == 0) {
            return word;
        }
        const bool complete = bytes[16] == 1 && bytes[17] == 1;
        return static_cast<uint16_t>(complete ? word & ~0x0080U : word | 0x0080U);
    }

    // What the elements that the mask selects make of the register.
    [[nodiscard]] uint32_t word_after(uint32_t word) const
    {
        const Bytes bytes = record.bytes();
        const unsigned mask = static_cast<uint8_t>(bytes[group.mask]);
        for (unsigned n = 0; n < 3; ++n) {
            const Element& element = group.elements[n];
            if (!selected(mask, n)) {
                continue;
            }
            if (element.one_way || bytes[element.byte] == 1) {
                word |= element.bit;
            } else {
                word &= ~uint32_t{element.bit};
            }
        }
        return word;
    }

    void expect_word(uint16_t before)
    {
        const uint16_t word = without_event(before);
        board.fpga.words[group.word.read] = word;
        EXPECT_EQ(run(group.command), 0);
        const uint32_t other = is_group1() ? kAlertBits : 0;
        EXPECT_EQ(board.fpga.words[group.word.read] & ~other, word_after(word) & ~other)
            << std::hex << word;
    }

    // The elements, first to third, by their bytes' order in the record.
    void elements_put(unsigned first, unsigned second, unsigned third)
    {
        record.put(group.mask + 1, first);
        record.put(group.mask + 2, second);
        record.put(group.mask + 3, third);
    }

    const Group& group = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Led, GroupOfThree, testing::ValuesIn(kGroups),
                         [](const auto& row) { return row.param.name; });

TEST_P(GroupOfThree, ReadsTheRegisterChangesTheSelectedElementsAndWritesItBack)
{
    const unsigned mask_all = 0;
    const unsigned mask_none = 8;
    for (const unsigned mask : {mask_all, mask_none, 1U, 2U, 4U}) {
        const auto prepare = [this, mask] {
            record.put(group.mask, mask);
            elements_put(1, 0, 1);
            board.fpga.words[group.word.read] = 0x0FFF;
            board.fpga.switch_ports[4] = kPortBefore;
            return record.pointer();
        };
        prepare();
        Course panel{opens_to_write(), word_read(group.word.read),
                     value_write(group.word.write, word_after(0x0FFF))};
        if (is_group7()) {
            Bytes port = kPortBefore;
            port[4] = selected(mask, 0) ? '\1' : port[4];
            port[3] = selected(mask, 1) ? '\0' : port[3];
            port[2] = selected(mask, 2) ? '\1' : port[2];
            panel.push_back(record_read(0x6B72, kPortAsked));
            panel.push_back(record_write(0x6B73, port));
        }
        panel.push_back(closes());
        prove(group.command, prepare, group.asks_for_inhibit ? without_inhibit(panel) : panel);
    }
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_P(GroupOfThree, AppliesTheElementsThatEachMaskSelects)
{
    board.recording = false;
    for (unsigned mask = 0; mask < 256 && !HasFailure(); ++mask) {
        for (unsigned pattern = 0; pattern < 27; ++pattern) {
            record_fill(pattern % 2); // neighbours that must not count
            record.put(group.mask, mask);
            elements_put(pattern % 3, pattern / 3 % 3, pattern / 9);
            const Bytes before = record.bytes();
            for (const unsigned word : {0x0000U, 0xFFFFU, 0x5AC3U}) {
                if (group.asks_for_inhibit) {
                    files_fail();
                }
                expect_word(static_cast<uint16_t>(word));
            }
            ASSERT_EQ(record.bytes(), before);
        }
    }
    board.recording = true;
}

TEST_P(GroupOfThree, KeepsTheOtherBitsOfEveryRegisterValue)
{
    for_every_word([this](uint16_t word) {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 8U}) {
            for (const unsigned flag : {0U, 1U}) {
                record.put(group.mask, mask);
                elements_put(flag, 1 - flag, flag);
                if (group.asks_for_inhibit) {
                    files_fail();
                }
                expect_word(word);
            }
        }
    });
}

TEST_P(GroupOfThree, TakesEveryElementValueButOneForOff)
{
    board.recording = false;
    for (unsigned value = 0; value < 256; ++value) {
        elements_put(value, value, value);
        for (const unsigned word : {0x0000U, 0xFFFFU}) {
            if (group.asks_for_inhibit) {
                files_fail();
            }
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
        record.put(40, mask);
        record.put(41, 1);
        record.put(42, 0);
        record.put(43, 1);
        board.fpga.words[0x6B11] = 0xFFF8;
        board.fpga.switch_ports.clear();
        board.fpga.switch_ports[4] = kPortBefore;
        return record.pointer();
    }
};

TEST_F(Group7Mirror, CopiesTheElementsToSwitchPort4AfterTheRegister)
{
    prove(
        WR_LED_GROUP_7, [this] { return prepare(0); },
        without_inhibit({opens_to_write(), word_read(0x6B11), value_write(0x6B12, 0xFFFE),
                         record_read(0x6B72, kPortAsked), record_write(0x6B73, kPortAfter),
                         closes()}));
    EXPECT_EQ(board.fpga.switch_ports.at(4), kPortAfter);
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
                record.put(41 + n, elements[n]);
                if (selected(mask, n)) {
                    expected[kPortBytes[n]] = elements[n] == 1 ? '\1' : '\0';
                }
            }
            files_fail();
            EXPECT_EQ(run(WR_LED_GROUP_7), 0);
            ASSERT_EQ(board.fpga.switch_ports.at(4), expected) << "mask " << mask;
        }
    }
    board.recording = true;
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
        EXPECT_EQ(board.fpga.switch_ports.at(4), kPortBefore);
    }
}

// The register alone ------------------------------------------------------------------------

TEST_F(LedSetterTest, Group1SetsItsThirdBitWhateverTheThirdElementSays)
{
    for (const unsigned mask : {0U, 4U, 0xFFU}) {
        for (const unsigned third : {0U, 1U, 2U}) {
            record.put(14, mask);
            record.put(17, third);
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
        {33, 24, 0x0000, 0x0002},
        {35, 28, 0x0020, 0x0000},
        {37, 32, 0x0200, 0x0000},
        {39, 36, 0x2000, 0x0000},
    };
    for (const auto& [command, mask, by_bit1, by_bit2] : groups) {
        record_fill(0);
        record.put(mask + 3, 1);
        for (const auto& [bit, expected] : {std::pair{2U, by_bit1}, std::pair{4U, by_bit2}}) {
            board.fpga.words[0x6B0F] = 0;
            record.put(mask, bit);
            EXPECT_EQ(run(command), 0);
            EXPECT_EQ(board.fpga.words[0x6B0F], expected) << "command " << command;
        }
    }
}

} // namespace
