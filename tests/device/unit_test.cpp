// The serial number.
#include "device/command_test.h"

namespace
{

constexpr const char* kSerialFile = "/tmp/serialno";

using Unit = CommandTest;

TEST_F(Unit, ReadsTheSerialNumber)
{
    board.file_put(kSerialFile, "A12345678");
    prove_record(RD_SERIAL_NUMBER, untouched(9),
                 {{"open /tmp/serialno O_RDONLY", -1},
                  {"read /tmp/serialno 9", -2},
                  {"close /tmp/serialno", kIgnored}},
                 "A12345678");
}

TEST_F(Unit, SerialNumberFileOfEveryLength)
{
    const Bytes content = "123456789ABC";
    for (size_t length = 0; length <= content.size(); ++length) {
        SCOPED_TRACE(length);
        board.restart();
        board.file_put(kSerialFile, content.substr(0, length));
        // A short file leaves what it had.
        const Bytes got = content.substr(0, std::min<size_t>(length, 9));
        expect_run(RD_SERIAL_NUMBER, untouched(9), length < 9 ? -3 : 0,
                   got + untouched(9 - got.size()));
        EXPECT_EQ(board.calls.size(), length < 9 ? 8U : 3U);
    }
}

TEST_F(Unit, MissingSerialNumberFile)
{
    expect_run(RD_SERIAL_NUMBER, untouched(9), -1, untouched(9));
    EXPECT_FALSE(board.file_exists(kSerialFile));
}

} // namespace
