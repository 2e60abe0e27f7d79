// Serial number and port state.
#include <algorithm>

#include "device/caller_record.h"
#include "device/device_test.h"
#include "maint/commands/unit.h"

namespace
{

constexpr const char* kSerialFile = "/tmp/serialno";

class Unit : public DeviceTest
{
  protected:
    CallerRecord record;

    // The record of the port state: port, code.
    void* port_put(uint16_t port, uint16_t code)
    {
        record = CallerRecord(le16(port) + le16(code));
        return record.pointer();
    }

    void expect_code(uint16_t port, uint16_t code) const
    {
        EXPECT_EQ(record.bytes(), untouched_after(le16(port) + le16(code)));
    }

    int32_t state_run(uint16_t port, uint16_t code)
    {
        return Fpga_Register_Set(RD_PORT_STATE_CODE, port_put(port, code));
    }
};

TEST_F(Unit, ReadsTheSerialNumber)
{
    prove(RD_SERIAL_NUMBER,
          [this] {
              board.file_put(kSerialFile, "A12345678");
              record = CallerRecord();
              return record.pointer();
          },
          {{"open /tmp/serialno O_RDONLY", -1},
           {"read /tmp/serialno 9", -2},
           {"close /tmp/serialno", kIgnored}});
    EXPECT_EQ(record.bytes(), untouched_after("A12345678"));
}

TEST_F(Unit, SerialNumberFileOfEveryLength)
{
    const Bytes content = "123456789ABC";
    for (size_t length = 0; length <= content.size(); ++length) {
        SCOPED_TRACE(length);
        board.restart();
        board.file_put(kSerialFile, content.substr(0, length));
        record = CallerRecord();
        EXPECT_EQ(Fpga_Register_Set(RD_SERIAL_NUMBER, record.pointer()), length < 9 ? -3 : 0);
        // A short file leaves what it had.
        EXPECT_EQ(record.bytes(), untouched_after(content.substr(0, std::min<size_t>(length, 9))));
        EXPECT_EQ(board.calls.size(), length < 9 ? 8U : 3U);
    }
}

TEST_F(Unit, MissingSerialNumberFile)
{
    EXPECT_EQ(Fpga_Register_Set(RD_SERIAL_NUMBER, record.pointer()), -1);
    EXPECT_EQ(record.bytes(), untouched_after(""));
    EXPECT_FALSE(board.file_exists(kSerialFile));
}

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

TEST_F(Unit, ReadsThePortState)
{
    prove(
        RD_PORT_STATE_CODE,
        [this] {
            board.fpga.words[0x6B3B] = 0x8;
            board.fpga.port_entries[24] = 0x1100;
            return port_put(3, 0x7777);
        },
        state_course(3));
    expect_code(3, 3);
}

TEST_F(Unit, FailedReadingsGiveCodeZero)
{
    board.fpga.words[0x6B3B] = 0x8;
    board.fpga.port_entries[24] = 0x1100;
    const Course course = state_course(3);
    for (const std::set<size_t>& failing : {std::set<size_t>{1, 3}, {2, 6}, {4, 9}, {5, 12}}) {
        board.restart();
        board.fail_calls(failing);
        EXPECT_EQ(state_run(3, 0x7777), -1);
        expect_code(3, 0);
    }
}

TEST_F(Unit, CodeThatIsKeptIsZeroAfterAFailedFirstRun)
{
    board.fpga.words[0x6B3B] = 0x8;
    board.fpga.port_entries[24] = 0x0100;
    board.restart();
    board.fail_call(2);
    EXPECT_EQ(state_run(3, 0x7777), 0);
    expect_code(3, 0);
}

TEST_F(Unit, PortOutsideTheBitmapGivesCodeZeroWithoutItsEntryBeingRead)
{
    board.fpga.words[0x6B3B] = 0x4;
    board.restart();
    EXPECT_EQ(state_run(3, 0x7777), 0);
    expect_code(3, 0);
    EXPECT_EQ(board.calls.size(), 3U);
    EXPECT_EQ(board.calls[1], "ioctl 6B3B 00 00 00 00");
}

TEST_F(Unit, TheDriverMayFill496BytesForTheBitmap)
{
    board.fpga.words[0x6B3B] = 0x8;
    board.fpga.port_entries[24] = 0x1100;
    board.fpga.filled[0x6B3B] = 496;
    EXPECT_EQ(state_run(3, 0x7777), 0);
    expect_code(3, 3);
    EXPECT_EQ(state_run(5, 0x7777), 0);
    expect_code(5, 0);
}

TEST_F(Unit, BitOfThePortIsItsLowByte)
{
    board.fpga.words[0x6B3B] = 0xFFFFFFFF;
    for (uint32_t port = 0; port <= 0xFFFF; port += port < 600 ? 1 : 509) {
        board.fpga.port_entries[static_cast<uint16_t>(8 * port)] = 0x2000;
        EXPECT_EQ(state_run(static_cast<uint16_t>(port), 0x7777), 0);
        expect_code(static_cast<uint16_t>(port), (port & 0xFF) < 32 ? 2 : 0);
        board.restart();
    }
    for (unsigned port = 0; port < 32; ++port) {
        board.fpga.words[0x6B3B] = 1U << port;
        for (uint16_t asked = 0; asked < 32; ++asked) {
            EXPECT_EQ(state_run(asked, 0x7777), 0);
            expect_code(asked, asked == port ? 2 : 0);
            board.restart();
        }
    }
}

TEST_F(Unit, PortStateOfEveryStatusWord)
{
    board.fpga.words[0x6B3B] = 0x8;
    for_every_word([this](uint16_t status) {
        board.fpga.port_entries[24] = status;
        ASSERT_EQ(state_run(3, 0x7777), 0);
        uint16_t code = 0x7777; // as the caller left it
        if ((status & 0xE000) != 0) {
            code = 2;
        } else if ((status & 0x1000) != 0) {
            switch ((status >> 8) & 3) {
            case 0:
                code = 1;
                break;
            case 1:
                code = 3;
                break;
            case 3:
                code = 4;
                break;
            default:
                break;
            }
        }
        expect_code(3, code);
    });
}

TEST_F(Unit, PortStateExamples)
{
    struct Example {
        uint16_t port;
        uint32_t map;
        uint16_t status;
        uint16_t code;
    };
    for (const Example& example : {Example{3, 0x8, 0x1100, 3}, Example{3, 0x8, 0x2000, 2},
                                   Example{3, 0x8, 0x0100, 0x7777}, Example{3, 0x4, 0x1100, 0},
                                   Example{40, 0xFFFFFFFF, 0x1100, 0}, Example{3, 0x8, 0x1000, 1},
                                   Example{3, 0x8, 0x1300, 4}, Example{3, 0x8, 0x1200, 0x7777}}) {
        board.fpga.words[0x6B3B] = example.map;
        board.fpga.port_entries[static_cast<uint16_t>(8 * example.port)] = example.status;
        EXPECT_EQ(state_run(example.port, 0x7777), 0);
        expect_code(example.port, example.code);
    }
}

} // namespace
