// A unit that is typed in, and what maintctl's verbs show of it.
#pragma once

#include <cstdlib>

#include "board/board_test.h"
#include "tools/maintctl/library_calls.h"
#include "tools/maintctl/session.h"

struct Shown {
    std::string out;
    std::string err;
    int status;
};

// Runs a verb, without a terminal.
inline Shown verb_run(int (*verb)(const Session&), bool json = false, bool trace = false,
                      bool colours = false)
{
    char* out_text = nullptr;
    char* err_text = nullptr;
    size_t out_length = 0;
    size_t err_length = 0;
    Session session{};
    session.out = open_memstream(&out_text, &out_length);
    session.err = open_memstream(&err_text, &err_length);
    session.json = json;
    session.trace = trace;
    session.colours = colours;
    const LibraryCalls calls{.console = session.err};
    libraryCalls_set(&calls);
    const int status = verb(session);
    EXPECT_EQ(libraryCalls_get(), &calls); // as it was before
    libraryCalls_set(nullptr);
    fclose(session.out);
    fclose(session.err);
    Shown shown{{out_text, out_length}, {err_text, err_length}, status};
    free(out_text);
    free(err_text);
    return shown;
}

inline std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin);
        if (end == std::string::npos) {
            ADD_FAILURE() << "a line without an end: " << text.substr(begin);
            lines.push_back(text.substr(begin));
            break;
        }
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

class MaintctlUnit : public BoardTest
{
  protected:
    static constexpr const char* kConfig = "/conf/config";
    static constexpr const char* kSerial = "/tmp/serialno";
    static constexpr const char* kDatasize = "/tmp/mtu_datasize";

    void SetUp() override { unit_put(); }

    // Unit 3, with everything in order.
    void unit_put()
    {
        board.fpga = FpgaModel();
        board.rtc = RtcModel();
        auto& words = board.fpga.words;
        auto& registers = board.fpga.registers;
        board.file_put(kSerial, "AB1234567");
        board.file_put(kConfig, "OWN_VPN_ID='7'\n"
                                "PASSWORD='secret'\n"
                                "PPPOEOFF_VPN_ID03='103'\n"
                                "PPPOEOFF_VPN_ID05='105'\n"
                                "PPPOEOFF_VPN_ID09='x'\n"
                                "IPSEC_ENABLE='3'\n"
                                "SELECT_MTU='LAN_MTU'\n"
                                "LAN_MTU='1454 bytes'\n");
        board.file_put(kDatasize, le16(1500) + le16(1454) + le16(1400) + le16(1474) + le16(1428) +
                                      le16(1374) + le16(1492) + le16(1446) + le16(1392) + le16(9));
        board.fpga.device_info = hex("34 12 78 56 2b 1a 00 00");
        for (uint16_t n = 0; n < 7; ++n) {
            registers[0x180 + 2U * n] = static_cast<uint16_t>(0xA000 + n);
        }
        board.rtc.time = {7, 5, 9, 1, 2, 106, 0, 0, 0};
        board.rtc.status = 0x89ABCDEF;
        words[0x6B29] = 3;          // own identifier
        words[0x6B03] = 0x1000;     // identities by index
        words[0x6B3B] = 0x8000022E; // present: 1-3 5 9 31
        words[0x6B8D] = 1U << 9;    // marked
        words[0x6B3D] = 0;          //
        board.fpga.id_values = {{1, 0}, {2, 0}, {5, 105}};
        board.fpga.port_entries = {
            {8, 0x1000}, {16, 0x1100}, {24, 0x1300}, {40, 0x2000}, {72, 0x1200}};
        registers[0x12] = 1600;
        registers[0x56] = 1372;
        words[0x6B09] = 0x1101; // port flags: bits 8, 0, 12
        words[0x6B0F] = 0x7025; // groups 6, 5, 4, 3
        words[0x6B11] = 0x1000 | 0x0800 | 0x0100 | 0x0050;
        words[0x6B4F] = 0x0200 | 0x0040 | 0x0010 | 0x0003;
        words[0x6B51] = 0;
        auto& phys = board.fpga.phys;
        phys[9] = {};
        phys[9][0] = 0x2100; // port 0: 100 Mb/s, full duplex, fixed
        phys[9][1] = 0x0004;
        phys[9][31] = 0x2000;
        phys[1][0] = 0x1000; // negotiated 100 half
        phys[1][1] = 0x0024;
        phys[1][4] = 0x01E1;
        phys[1][5] = 0x0081;
        phys[2][0] = 0x1000; // nothing connected
        phys[3][0] = 0x1008; // negotiated 10 full
        phys[3][1] = 0x0024;
        phys[3][4] = 0x01E1;
        phys[3][5] = 0x0041;
        phys[4][0] = 0x2000; // fixed, down
        phys[5][0] = 0x0000; // fixed 10 half, up
        phys[5][1] = 0x0004;
        phys[8] = {};
        phys[8][0] = 0x1000;
        phys[8][1] = 0x0024;
        phys[8][4] = 0x01E1;
        phys[8][5] = 0x01E1;
    }
};
