// The unit on one screen, and its panel.
#include "board/share.h"
#include "sim/device_state.h"
#include "tools/json_value.h"
#include "tools/maintctl_unit_fixture.h"

namespace
{

using Rows = std::map<std::string, std::string>; // by label

class Show : public MaintctlUnit
{
  protected:
    // The rows of a status that fits its screen.
    static std::vector<std::string> rows_of(const Shown& shown)
    {
        std::vector<std::string> rows = lines_of(shown.out);
        EXPECT_EQ(shown.err, "");
        EXPECT_EQ(rows.size(), 23U); // the prompt has the last one
        for (const std::string& row : rows) {
            EXPECT_LE(row.size(), 80U) << row;
            for (const char character : row) {
                EXPECT_TRUE(character >= ' ' && character <= '~') << row;
            }
        }
        return rows;
    }

    static Rows labelled(const Shown& shown)
    {
        Rows rows;
        for (const std::string& row : rows_of(shown)) {
            rows[row.substr(0, row.find_last_not_of(' ', 11) + 1)] = row.substr(12);
        }
        return rows;
    }

    // A missing thing's meaning is there as a whole, or as much of it as the row has room for.
    static void expect_meaning(const std::string& label, const std::string& text,
                               const JsonValue& error)
    {
        const size_t at = text.find(": ");
        ASSERT_NE(at, std::string::npos) << label;
        const std::string shown = text.substr(at + 2);
        const std::string& whole = error["error"].text;
        if (shown != whole) {
            EXPECT_EQ(12 + text.size(), 80U) << label << ": " << text;
            EXPECT_EQ(shown, whole.substr(0, shown.size() - 3) + "...");
        }
    }

    // Runs status, and expects these rows to be missing something (their texts contain that), the
    // others to be as they are when nothing is missing, and JSON to say the same.
    void expect_missing(const Rows& good, const Rows& missing, int status)
    {
        const Shown shown = verb_run(status_show);
        EXPECT_EQ(shown.status, status);
        for (const auto& [label, text] : labelled(shown)) {
            const auto row = missing.find(label);
            if (row == missing.end()) {
                EXPECT_EQ(text, good.at(label)) << label;
            } else {
                EXPECT_NE(text.find(row->second), std::string::npos)
                    << label << ": " << text << ", not " << row->second;
            }
        }
        const Shown json = verb_run(status_show, true);
        EXPECT_EQ(json.status, status);
        const JsonValue errors = status_of(json)["errors"];
        ASSERT_FALSE(errors.items.empty());
        EXPECT_EQ(status, -errors.items[0]["result"].number);
        for (const auto& [label, text] : missing) {
            bool named = false;
            for (const JsonValue& error : errors.items) {
                const std::string name = error["command"].text;
                named = named || text.find(name) != std::string::npos ||
                        (label == "identity" && name == "Get_Conf_VpnId");
                EXPECT_EQ(error["error"].type, JsonValue::kText);
            }
            EXPECT_TRUE(named) << text;
        }
    }

    static JsonValue status_of(const Shown& shown)
    {
        const std::vector<std::string> lines = lines_of(shown.out);
        EXPECT_EQ(lines.size(), 1U);
        return json_parse(lines.at(0))["status"];
    }
};

TEST_F(Show, AUnit)
{
    const Shown shown = verb_run(status_show);
    EXPECT_EQ(shown.out,
              "serial      AB1234567\n"
              "device      12 34 56 78, text 1a2b\n"
              "registers   0xa000 0xa001 0xa002 0xa003 0xa004 0xa005 0xa006\n"
              "clock       2006-03-01 Wed 09:05:07\n"
              "clock state 0x89abcdef\n"
              "own unit    3\n"
              "identity    103, by PPPOEOFF_VPN_ID03\n"
              "present     1-3 5 9 31\n"
              "marked      9\n"
              "bandwidth   limit 5: register 1600 (64000 / 40)\n"
              "line        mode on, flags 0 1 1\n"
              "MTU limit   1372, frame size 1464\n"
              "sizes       1500 1454 1400, data 1474 1428 1374, line 1492 1446 1392\n"
              "port flags  1 0 0 1 0 0 0 0 0 1\n"
              "port codes  0-7 .134.2..  8-15 .?......  16-23 ........  24-31 .......?\n"
              "port 0      up    100 Mb/s  full duplex  autonegotiation off  extra 1\n"
              "port 1      up    100 Mb/s  half duplex  autonegotiation on   extra 0\n"
              "port 2      down                         autonegotiation on   extra 0\n"
              "port 3      up     10 Mb/s  full duplex  autonegotiation on   extra 1\n"
              "port 4      down  100 Mb/s  half duplex  autonegotiation off  extra 0\n"
              "port 5      up     10 Mb/s  half duplex  autonegotiation off  extra 0\n"
              "port 6      up    100 Mb/s  full duplex  autonegotiation on   extra 0\n"
              "panel       A* B~ C* D~ E* F*   1 **.  2 .**  3 **.  4 ..*  5 ...  6 ***  7 ...\n");
    EXPECT_EQ(shown.err, "");
    EXPECT_EQ(shown.status, 0);
}

TEST_F(Show, AUnitInJson)
{
    const Shown shown = verb_run(status_show, true);
    EXPECT_EQ(
        shown.out,
        R"({"status":{"serial_number":"AB1234567",)"
        R"("device_info":{"bytes":[18,52,86,120],"text":"1a2b"},)"
        R"("id_registers":{"value":[40960,40961,40962,40963,40964,40965,40966]},)"
        R"("clock":{"year":2006,"month":3,"day":1,"hour":9,"minute":5,"second":7,"weekday":3},)"
        R"("clock_state":2309737967,"own_id":3,"vpn_map":1,"vpn_id":103,)"
        R"("present":[1,2,3,5,9,31],"marked":[9],"bandwidth":{"limit":5,"register":1600},)"
        R"("line":{"mode":1,"flags":[0,1,1]},"mtu_limit":{"limit":1372,"frame_size":1464},)"
        R"("mtu_datasize":{"size":[1500,1454,1400],"data_size":[1474,1428,1374],)"
        R"("line_size":[1492,1446,1392]},"port_flags":[1,0,0,1,0,0,0,0,0,1],)"
        R"("port_codes":[0,1,3,4,0,2,0,0,0,null,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,null],)"
        R"("phys":[{"port":0,"link":1,"autoneg":0,"speed100":1,"full_duplex":1,"extra":1},)"
        R"({"port":1,"link":1,"autoneg":1,"speed100":1,"full_duplex":0,"extra":0},)"
        R"({"port":2,"link":0,"autoneg":1,"speed100":null,"full_duplex":null,"extra":0},)"
        R"({"port":3,"link":1,"autoneg":1,"speed100":0,"full_duplex":1,"extra":1},)"
        R"({"port":4,"link":0,"autoneg":0,"speed100":1,"full_duplex":0,"extra":0},)"
        R"({"port":5,"link":1,"autoneg":0,"speed100":0,"full_duplex":0,"extra":0},)"
        R"({"port":6,"link":1,"autoneg":1,"speed100":1,"full_duplex":1,"extra":0}],)"
        R"("panel":{"ledA":1,"ledB":2,"ledC":1,"ledD":2,"ledE":1,"ledF":1,)"
        R"("group1":[1,1,0],"group2":[0,1,1],"group3":[1,1,0],"group4":[0,0,1],)"
        R"("group5":[0,0,0],"group6":[1,1,1],"group7":[0,0,0]},"errors":[]}})"
        "\n");
    EXPECT_EQ(shown.status, 0);
    status_of(shown);
}

// The longest values, and bytes of any kind.
TEST_F(Show, AUnitWithLongValues)
{
    board.file_put(kSerial, "\x1B[2J\n\xFF\"\\x");
    board.file_put(kDatasize, Bytes(20, '\xFF'));
    board.file_put(kConfig, "OWN_VPN_ID='-1'\n");
    board.rtc.time = {99999, 99999, 99999, 31, 11, 99999, 0, 0, 0};
    auto& words = board.fpga.words;
    words[0x6B03] = 0xEFFF;
    words[0x6B29] = 30;
    words[0x6B3B] = 0xB6DB6DB6; // pairs of units, as many as there can be
    words[0x6B8D] = 0xB6DB6DB6;
    words[0x6B11] = 0x2000;
    words[0x6B4F] = 0;
    board.fpga.registers[0x12] = 21333;
    board.fpga.registers[0x56] = 0xFFFF;
    board.fpga.phys[9][1] = 0;
    const Shown shown = verb_run(status_show);
    const Rows rows = labelled(shown);
    EXPECT_EQ(rows.at("serial"), "?[2J??\"\\x");
    EXPECT_EQ(rows.at("own unit"), "30");
    EXPECT_EQ(rows.at("identity"), "4294967295, by OWN_VPN_ID");
    EXPECT_EQ(rows.at("present"), "1-2 4-5 7-8 10-11 13-14 16-17 19-20 22-23 25-26 28-29 31");
    EXPECT_EQ(rows.at("marked"), "1-2 4-5 7-8 10-11 13-14 16-17 19-20 22-23 25-26 28-29 31");
    EXPECT_EQ(rows.at("bandwidth"), "limit 0: register 21333 (64000 / 3)");
    EXPECT_EQ(rows.at("line"), "mode off, flags 0 0 0");
    EXPECT_EQ(rows.at("MTU limit"), "65535, frame size 23");
    EXPECT_EQ(rows.at("sizes"),
              "65535 65535 65535, data 65535 65535 65535, line 65535 65535 65535");
    EXPECT_EQ(rows.at("panel"),
              "A! B. C. D. E. F.   1 ...  2 ...  3 **.  4 ..*  5 ...  6 ***  7 ...");
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(status_of(verb_run(status_show, true))["serial_number"].text, "\x1B[2J\n\xFF\"\\x");
}

// At each speed of port 0, each limit's value.
TEST_F(Show, EachLimitWithItsValue)
{
    static constexpr unsigned kValues[] = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                           1066,  914,   800,  711,  640,  320,  213,
                                           160,   128,   106,  91,   80,   71,   64};
    for (unsigned id = 0; id < std::size(kValues); ++id) {
        board.fpga.registers[0x12] = static_cast<uint16_t>(kValues[id]);
        const JsonValue status = status_of(verb_run(status_show, true));
        EXPECT_EQ(status["bandwidth"]["limit"].number, id);
        EXPECT_EQ(status["bandwidth"]["register"].number, kValues[id]);
    }
    board.fpga.phys[9][0] = 0;
    board.fpga.registers[0x12] = 640;
    EXPECT_EQ(status_of(verb_run(status_show, true))["bandwidth"]["limit"].number, 11);
}

// What is missing is named in its place, and everything else is shown as before.
TEST_F(Show, WhatIsMissingInItsPlace)
{
    const Rows good = labelled(verb_run(status_show));
    struct Case {
        std::function<void()> take;
        Rows missing;
        int status;
    };
    const auto refuse = [&](uint32_t request) {
        return [&, request] { board.fpga.results[request] = -1; };
    };
    Rows phys;
    for (const char* port : {"port 1", "port 2", "port 3", "port 4", "port 5", "port 6"}) {
        phys[port] = "RD_PHY_STATUS -2";
    }
    const std::vector<Case> cases{
        {[&] { board.file_remove(kSerial); },
         {{"serial", "RD_SERIAL_NUMBER -1, /tmp/serialno: the file cannot be opened"}},
         1},
        {[&] { board.file_put(kSerial, "12345678"); }, {{"serial", "RD_SERIAL_NUMBER -3"}}, 3},
        {[&] { board.file_remove(kDatasize); },
         {{"sizes", "RD_MTU_DATASIZE -1, /tmp/mtu_datasize"}},
         1},
        {[&] { board.rtc_present = false; },
         {{"clock", "RD_RTC_TIME -1, /dev/rtc: the device cannot be opened"},
          {"clock state", "RD_RTC_STATUS -1, /dev/rtc"}},
         1},
        {[&] { board.rtc.result = -1; },
         {{"clock", "RD_RTC_TIME -2"}, {"clock state", "RD_RTC_STATUS -2"}},
         2},
        {[&] { board.file_put(kConfig, "IPSEC_ENABLE='3'\n"); },
         {{"identity", "PPPOEOFF_VPN_ID03 -2: no such key"}},
         2},
        {[&] {
             board.file_put(kConfig, "IPSEC_ENABLE='3'\nOWN_VPN_ID=''\n");
             board.fpga.words[0x6B03] = 0;
         },
         {{"identity", "OWN_VPN_ID -5: the key is empty"}},
         5},
        {[&] { board.fpga.registers[0x12] = 1; }, {{"bandwidth", "RD_BANDWIDTH -3"}}, 3},
        {[&] { board.fpga.phys[1][1] = 0x0004; },
         {{"port 1", "up    speed is not negotiated (RD_PHY_STATUS -2)"}},
         2},
        {[&] { board.fpga.words[0x6B29] = 0; },
         {{"own unit", "0"},
          {"identity", "PPPOEOFF_VPN_ID00 -2"},
          {"line", "RD_LED_STATE -5"},
          {"panel", "RD_LED_STATE -5"}},
         2},
        {refuse(0x6B01), {{"device", "RD_DEVICE_INFO -2: the device's answer"}}, 2},
        {refuse(0x6B42),
         {{"registers", "RD_ID_REGISTERS -2"},
          {"bandwidth", "RD_BANDWIDTH -2"},
          {"MTU limit", "RD_MTU_LIMIT -2"}},
         2},
        {refuse(0x6B29),
         {{"own unit", "RD_DEVICE_WORD_29 -2"},
          {"identity", "RD_DEVICE_WORD_29 -2"},
          {"marked", "RD_UNIT_STATUS_MAP -2"},
          {"line", "RD_DEVICE_WORD_29 -2"},
          {"panel", "RD_DEVICE_WORD_29 -2"}},
         2},
        {refuse(0x6B03), {{"identity", "RD_VLANT_MAP_ENABLE -2"}}, 2},
        {refuse(0x6B3B),
         {{"present", "RD_DEVICE_WORD_3B -2"},
          {"marked", "RD_UNIT_STATUS_MAP -2"},
          {"port codes", "RD_PORT_STATE_CODE -1"}},
         2},
        {refuse(0x6B8D), {{"marked", "RD_UNIT_STATUS_MAP -2"}}, 2},
        {refuse(0x6B60), {{"port codes", "RD_PORT_STATE_CODE -1"}}, 1},
        {refuse(0x6B09), {{"port flags", "RD_PORT_FLAGS -2"}}, 2},
        {refuse(0x6B87), phys, 2},
        {refuse(0x6B98), {{"bandwidth", "RD_BANDWIDTH -2"}, {"port 0", "RD_PHY_STATUS -2"}}, 2},
        {refuse(0x6B0F), {{"line", "RD_LED_STATE -2"}, {"panel", "RD_LED_STATE -2"}}, 2},
        {refuse(0x6B11), {{"line", "RD_LED_STATE -2"}, {"panel", "RD_LED_STATE -2"}}, 2},
        {refuse(0x6B4F), {{"line", "RD_LED_STATE -2"}, {"panel", "RD_LED_STATE -2"}}, 2},
        {refuse(0x6B51), {{"line", "RD_LED_STATE -2"}, {"panel", "RD_LED_STATE -2"}}, 2},
    };
    for (const Case& trial : cases) {
        unit_put();
        board.rtc_present = true;
        trial.take();
        SCOPED_TRACE(trial.missing.begin()->second);
        Rows missing = trial.missing;
        if (missing.count("own unit") != 0 && missing["own unit"] == "0") {
            missing.erase("own unit"); // it is read, and is no identifier
            Rows other = good;
            other["own unit"] = "0";
            other["marked"] = "3 9"; // unit 3 is another one then
            expect_missing(other, missing, trial.status);
        } else {
            expect_missing(good, missing, trial.status);
        }
    }
}

TEST_F(Show, WithoutAnything)
{
    board.fpga_present = false;
    board.rtc_present = false;
    for (const char* path : {kSerial, kConfig, kDatasize}) {
        board.file_remove(path);
    }
    const Shown shown = verb_run(status_show);
    for (const auto& [label, text] : labelled(shown)) {
        EXPECT_EQ(text.rfind("RD_", 0), 0U) << label << ": " << text;
    }
    EXPECT_EQ(shown.status, 1);
    const JsonValue status = status_of(verb_run(status_show, true));
    size_t cut = 0;
    for (const auto& [label, text] : labelled(shown)) {
        for (const JsonValue& error : status["errors"].items) {
            if (text.rfind(error["command"].text + " ", 0) == 0) {
                expect_meaning(label, text, error);
                cut += text.find("...") != std::string::npos ? 1 : 0;
            }
        }
    }
    EXPECT_GT(cut, 0U);
    for (const auto& [key, value] : status.members) {
        EXPECT_TRUE(value.type == JsonValue::kNull || value.type == JsonValue::kArray) << key;
    }
    EXPECT_EQ(status["errors"].items.size(), 15U); // one for all ports of a kind
    EXPECT_FALSE(board.file_exists("/conf/system.log"));
}

// Whatever the device holds, and whichever call fails: the screen is never larger, and JSON is JSON.
TEST_F(Show, AnyUnitFitsTheScreen)
{
    for (uint32_t number = 0; number < share_of(400); ++number) {
        deviceState_put(number, board.fpga, board.rtc);
        rows_of(verb_run(status_show));
        status_of(verb_run(status_show, true));
        verb_run(panel_show);
    }
    unit_put();
    board.restart();
    verb_run(status_show);
    const size_t calls = board.call_count();
    ASSERT_GT(calls, 400U);
    for (size_t n = 1; n <= calls; n += kLoopShare.roundsPerRound) {
        board.restart();
        board.fail_from(n);
        rows_of(verb_run(status_show));
        board.restart();
    }
}

// Nothing is changed, and no line is left in the system log.
TEST_F(Show, ChangesNothing)
{
    board.file_put("/conf/system.log", "log");
    board.file_remove(kDatasize);
    board.file_remove(kConfig);
    for (uint32_t number = 0; number < share_of(200); ++number) {
        deviceState_put(number, board.fpga, board.rtc);
        const FpgaModel before = board.fpga;
        const auto clock = board.rtc.time;
        verb_run(status_show);
        verb_run(panel_show);
        EXPECT_EQ(board.fpga.words, before.words);
        EXPECT_EQ(board.fpga.registers, before.registers);
        EXPECT_EQ(board.fpga.phys, before.phys);
        EXPECT_EQ(board.fpga.written, before.written);
        EXPECT_EQ(board.fpga.counters, before.counters);
        EXPECT_EQ(board.rtc.time, clock);
    }
    EXPECT_EQ(board.file_get("/conf/system.log"), "log");
    EXPECT_EQ(board.console, "");
}

// Of a verb, too, each call is shown.
TEST_F(Show, WithItsCalls)
{
    for (const auto verb : {status_show, panel_show}) {
        const Shown shown = verb_run(verb, false, true);
        EXPECT_EQ(shown.out, verb_run(verb).out);
        EXPECT_TRUE(shown.err.starts_with("open(\"/tmp/serialno\"") ||
                    shown.err.starts_with("open(\"/dev/fpga\""))
            << shown.err;
        EXPECT_NE(shown.err.find("\nioctl(/dev/fpga, 0x6B4F "), std::string::npos) << shown.err;
        EXPECT_TRUE(shown.err.ends_with(" us\n"));
    }
}

TEST_F(Show, ColoursWhenAsked)
{
    const Shown plain = verb_run(status_show);
    EXPECT_EQ(plain.out.find('\x1B'), std::string::npos);
    board.file_remove(kSerial);
    const Shown shown = verb_run(status_show, false, false, true);
    EXPECT_NE(shown.out.find("\x1B[31mRD_SERIAL_NUMBER -1, /tmp/serialno: the file cannot be "
                             "opened\x1B[0m\n"),
              std::string::npos);
    EXPECT_NE(shown.out.find("port 0      \x1B[32mup  \x1B[0m  100"), std::string::npos);
    EXPECT_NE(shown.out.find("port 4      \x1B[2mdown\x1B[0m  100"), std::string::npos);
    EXPECT_NE(shown.out.find("line        mode \x1B[32mon\x1B[0m, flags"), std::string::npos);
    EXPECT_NE(shown.out.find("B\x1B[33m~\x1B[0m C"), std::string::npos);
    // The colours alone make the difference.
    std::string without = shown.out;
    for (size_t at = without.find('\x1B'); at != std::string::npos; at = without.find('\x1B')) {
        without.erase(at, without.find('m', at) - at + 1);
    }
    EXPECT_EQ(without, verb_run(status_show).out);
}

TEST_F(Show, ThePanel)
{
    const Shown shown = verb_run(panel_show);
    EXPECT_EQ(shown.out,
              "Front panel of unit 3\n"
              "+-----------------------------------------------------------------------+\n"
              "|    A          B          C          D          E          F           |\n"
              "|   (*)        (~)        (*)        (~)        (*)        (*)          |\n"
              "|   on         pattern    on         pattern    on         on           |\n"
              "|                                                                       |\n"
              "|     1         2         3         4         5         6         7     |\n"
              "|   * * .     . * *     * * .     . . *     . . .     * * *     . . .   |\n"
              "+-----------------------------------------------------------------------+\n"
              ". off   * on   ~ pattern   ! alert   F: line mode   2: line flags\n");
    EXPECT_EQ(shown.status, 0);
    board.fpga.words[0x6B29] = 30;
    board.fpga.words[0x6B0F] = 0x0200;
    board.fpga.words[0x6B11] = 0x2000 | 0x0400 | 0x0004;
    board.fpga.words[0x6B4F] = 0x0100 | 0x0080 | 0x0020 | 0x0004;
    EXPECT_EQ(verb_run(panel_show).out,
              "Front panel of unit 30\n"
              "+-----------------------------------------------------------------------+\n"
              "|    A          B          C          D          E          F           |\n"
              "|   (!)        (*)        (.)        (*)        (~)        (~)          |\n"
              "|   alert      on         off        on         pattern    pattern      |\n"
              "|                                                                       |\n"
              "|     1         2         3         4         5         6         7     |\n"
              "|   . . .     * . .     . . .     . . .     . . *     . . .     * . .   |\n"
              "+-----------------------------------------------------------------------+\n"
              ". off   * on   ~ pattern   ! alert   F: line mode   2: line flags\n");
    const Shown coloured = verb_run(panel_show, false, false, true);
    EXPECT_NE(coloured.out.find("(\x1B[31m!\x1B[0m)"), std::string::npos);
    EXPECT_NE(coloured.out.find("\x1B[2moff\x1B[0m"), std::string::npos);
}

TEST_F(Show, ThePanelInJson)
{
    const Shown shown = verb_run(panel_show, true);
    EXPECT_EQ(shown.status, 0);
    const JsonValue panel = json_parse(lines_of(shown.out).at(0));
    EXPECT_EQ(panel["command"].text, "RD_LED_STATE");
    EXPECT_EQ(panel["result"].number, 0);
    EXPECT_EQ(panel["fields"]["ownId"].number, 3);
    EXPECT_EQ(panel["record"].text.substr(16, 12), "010201020101"); // ledA to ledF
}

TEST_F(Show, NoPanel)
{
    board.fpga_present = false;
    EXPECT_EQ(verb_run(panel_show).out,
              "Front panel: RD_DEVICE_WORD_29 -1, /dev/fpga: the device cannot be opened\n");
    EXPECT_EQ(verb_run(panel_show).status, 1);
    const Shown json = verb_run(panel_show, true);
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json_parse(lines_of(json.out).at(0))["command"].text, "RD_DEVICE_WORD_29");
    board.fpga_present = true;
    board.fpga.words[0x6B29] = 31;
    const Shown refused = verb_run(panel_show);
    EXPECT_EQ(refused.out.rfind("Front panel: RD_LED_STATE -5: ", 0), 0U) << refused.out;
    EXPECT_EQ(refused.status, 5);
    board.fpga.words[0x6B29] = 3;
    board.fpga.results[0x6B4F] = -1;
    EXPECT_EQ(verb_run(panel_show).status, 2);
}

} // namespace
