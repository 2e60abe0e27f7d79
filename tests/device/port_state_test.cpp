// The code of a port's state.
#include "device/command_test.h"

namespace
{

constexpr uint32_t kHeld = 0x7777; // the code that the caller had

Bytes state_of(uint32_t port, uint32_t code)
{
    return le16(port) + le16(code);
}

class PortState : public CommandTest
{
  protected:
    void expect_code(uint32_t port, uint32_t code, int32_t result = 0)
    {
        expect_run(RD_PORT_STATE_CODE, state_of(port, kHeld), result, state_of(port, code));
    }

    uint32_t& map = board.fpga.words[0x6B3B];
    std::map<uint16_t, uint16_t>& entries = board.fpga.port_entries;
};

// The port's bitmap, then the port's entry.
Course state_course(uint16_t port)
{
    return {opens_to_read(-1),
            map_read(0x6B3B, -1),
            closes(),
            opens_to_read(-1),
            record_read(0x6B60, le16(8U * port) + le16(0) + le16(0) + le16(0), -1),
            closes()};
}

TEST_F(PortState, ReadsThePortState)
{
    entries[24] = 0x1100;
    map = 0x8;
    prove_record(RD_PORT_STATE_CODE, state_of(3, kHeld), state_course(3), state_of(3, 3));
}

TEST_F(PortState, FailedReadingsGiveCodeZero)
{
    map = 0x8;
    entries[24] = 0x1100;
    for (const std::set<size_t>& failing : {std::set<size_t>{1, 3}, {2, 6}, {4, 9}, {5, 12}}) {
        board.restart();
        board.fail_calls(failing);
        expect_code(3, 0, -1);
    }
}

TEST_F(PortState, CodeThatIsKeptIsZeroAfterAFailedFirstRun)
{
    map = 0x8;
    entries[24] = 0x0100;
    board.fail_call(2);
    expect_code(3, 0);
}

TEST_F(PortState, PortOutsideTheBitmapGivesCodeZeroWithoutItsEntryBeingRead)
{
    map = 0x4;
    expect_code(3, 0);
    EXPECT_EQ(board.calls.size(), 3U);
    EXPECT_EQ(board.calls[1], "ioctl 6B3B 00 00 00 00");
}

TEST_F(PortState, TheDriverMayFill496BytesForTheBitmap)
{
    map = 0x8;
    entries[24] = 0x1100;
    board.fpga.filled[0x6B3B] = 496;
    expect_code(3, 3);
    expect_code(5, 0);
}

TEST_F(PortState, BitOfThePortIsItsLowByte)
{
    map = 0xFFFFFFFF;
    for (uint32_t port = 0; port <= 0xFFFF; port += port < 600 ? 1 : 509) {
        entries[static_cast<uint16_t>(8 * port)] = 0x2000;
        expect_code(static_cast<uint16_t>(port), (port & 0xFF) < 32 ? 2 : 0);
        board.restart();
    }
    for (unsigned port = 0; port < 32; ++port) {
        map = 1U << port;
        for (uint16_t asked = 0; asked < 32; ++asked) {
            expect_code(asked, asked == port ? 2 : 0);
            board.restart();
        }
    }
}

TEST_F(PortState, EveryValueOfTheEntry)
{
    map = 0x8;
    for_every_word([this](uint16_t status) {
        entries[24] = status;
        const std::array<uint32_t, 4> by_bits_8_and_9{1, 3, kHeld, 4};
        expect_code(3, (status & 0xE000) != 0   ? 2
                       : (status & 0x1000) != 0 ? by_bits_8_and_9[(status >> 8) & 3U]
                                                : kHeld);
    });
}

TEST_F(PortState, Examples)
{
    const struct {
        uint16_t port;
        uint32_t map;
        uint16_t status;
        uint32_t code;
    } examples[] = {
        {3, 0x8, 0x1100, 3}, {3, 0x8, 0x2000, 2},         {3, 0x8, 0x0100, kHeld},
        {3, 0x4, 0x1100, 0}, {40, 0xFFFFFFFF, 0x1100, 0}, {3, 0x8, 0x1000, 1},
        {3, 0x8, 0x1300, 4}, {3, 0x8, 0x1200, kHeld},
    };
    for (const auto& example : examples) {
        SCOPED_TRACE(hex_number(example.status));
        map = example.map;
        entries[static_cast<uint16_t>(8 * example.port)] = example.status;
        expect_code(example.port, example.code);
    }
}

} // namespace
