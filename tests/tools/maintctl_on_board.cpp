// maintctl on the simulated board, as a program of its own: for tests that need a process or a
// terminal, and for documents. Each run has a new board. The environment says what it is:
//   MAINTCTL_STATE     number of the devices' state (sim/device_state.h), with files of some content;
//                      not set: a unit that is new and works (sane_unit.h)
//   MAINTCTL_MISSING   devices that cannot be opened, of "fpga rtc"
//   MAINTCTL_REFUSED   requests that the driver refuses, in hexadecimal: "6B42 6B3B"
//   MAINTCTL_NO_FILES  set: none of the files that commands read is there
//   MAINTCTL_LINES     set: the output goes out line by line, as on a terminal
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "board/board.h"
#include "sim/device_state.h"
#include "tools/maintctl/maintctl.h"
#include "tools/sane_unit.h"

namespace
{

std::string setting(const char* name)
{
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

void files_put(const Board& board)
{
    board.file_put("/conf/config", "OWN_VPN_ID='12'\nWAN_TYPE='5'\n");
    board.file_put("/conf/statistics", Bytes(496, '\x01'));
    board.file_put("/conf/user.log", Bytes(16, '\0'));
    board.file_put("/conf/system.log", Bytes("\0\0\0\0\0\0\0\0\1\0\0\0", 12));
    board.file_put("/tmp/mtu_datasize", Bytes(20, '\x02'));
    board.file_put("/tmp/serialno", "A12345678");
    board.file_put("/tmp/ks8995_nor.dat", Bytes(128, '\x03'));
    board.file_put("/tmp/ks8995_pri.dat", Bytes(128, '\x04'));
}

void board_put(Board& board)
{
    const std::string state = setting("MAINTCTL_STATE");
    if (state.empty()) {
        saneUnit_putDevices(board);
    } else {
        deviceState_put(static_cast<uint32_t>(std::stoul(state)), board.fpga, board.rtc);
        board.fpga.words[0x6B29] = 1; // its own identifier
    }
    if (getenv("MAINTCTL_NO_FILES") == nullptr) {
        (state.empty() ? saneUnit_putFiles : files_put)(board);
    }
    std::istringstream missing(setting("MAINTCTL_MISSING"));
    for (std::string device; missing >> device;) {
        (device == "rtc" ? board.rtc_present : board.fpga_present) = false;
    }
    std::istringstream refused(setting("MAINTCTL_REFUSED"));
    for (uint32_t request = 0; refused >> std::hex >> request;) {
        board.fpga.results[request] = -1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    int none = 0;
    testing::InitGoogleTest(&none, static_cast<char**>(nullptr));
    setenv("TZ", "UTC0", 1);
    if (getenv("MAINTCTL_LINES") != nullptr) {
        setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    }
    Board board;
    board_put(board);
    board.recording = false;
    return maintctl_run(argc, argv, stdout, stderr);
}
