// A new unit answers: every command that only reads gets through on it.
#include "sim/new_unit.h"

#include "device/command_facts.h"
#include "device/device_test.h"
#include "sim/state_text.h"

namespace
{

class NewUnit : public DeviceTest
{
  protected:
    NewUnit()
    {
        newUnit_put(state, {30, 20, 10, 21, 10, 126, 6, 324, 0}, 1);
        board.fpga = state.fpga;
        board.rtc = state.rtc;
    }

    UnitState state;
};

TEST_F(NewUnit, HasTheItemsThatItIsMadeOf)
{
    const std::string text = "\n" + stateText_make(state);
    for (const char* item :
         {"word.0x6B29=0x0001", "word.0x6B3B=0x0000000E", "word.0x6B3D=0x00000000",
          "register.0x0012=0x0040", "device_info=00010203a1200000", "phy.0.1=0x782D",
          "phy.6.5=0x45E1", "id_value.30=0x000C", "address.3=0103a8c0",
          "unit_words.3.1=0x0000,0x0150", "port_entry.24=0x1000", "counter.94.33=0",
          "switch_port.4=0400010101000000", "rtc.runs=1", "rtc.time=2026-11-21T10:20:30"}) {
        EXPECT_NE(text.find("\n" + std::string(item) + "\n"), std::string::npos) << item;
    }
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n') - 1, 456);
}

TEST_F(NewUnit, HasNothingOfBefore)
{
    UnitState before;
    std::string fault;
    ASSERT_TRUE(stateText_put(before, "register.0x0999=1", 0, fault)) << fault;
    ASSERT_TRUE(stateText_put(before, "fail.0x6B42=1,1,EIO", 0, fault)) << fault;
    newUnit_put(before, state.rtc.time, 1);
    EXPECT_EQ(stateText_make(before), stateText_make(state));
    EXPECT_EQ(before.rtc_since, 1); // its clock runs from now on
}

// Records whose first numbers are identifiers, ports or indexes that the unit has.
const Bytes kRecords[] = {le32(1) + le32(2), le16(1) + le16(2), le32(1) + le32(1),
                          le32(2) + le32(1), le16(0) + le16(0) + le16(1)};

TEST_F(NewUnit, AnswersEveryCommandThatReads)
{
    for (const UnitFile& file : newUnit_files()) {
        board.file_put(file.path, file.bytes);
    }
    size_t count = 0;
    for (const CommandFacts& facts : commandFacts_get()) {
        if (!std::string(facts.name).starts_with("RD_")) {
            continue;
        }
        int32_t result = DEVICE_BAD_ARGUMENT;
        for (const Bytes& fields : kRecords) {
            Bytes record = fields + zeros(kRecordMax);
            result = std::max(result, Fpga_Register_Set(facts.named, record.data()));
        }
        EXPECT_GE(result, 0) << facts.name;
        ++count;
    }
    EXPECT_GT(count, 80U);
}

// The working log is not there yet: the first start of the unit is a cold one.
TEST_F(NewUnit, HasFilesForAllButTheLog)
{
    std::set<std::string> paths;
    for (const UnitFile& file : newUnit_files()) {
        paths.insert(file.path);
    }
    EXPECT_EQ(paths,
              (std::set<std::string>{"/conf/config", "/conf/statistics", "/conf/user.log",
                                     "/tmp/serialno", "/tmp/mtu_datasize", "/tmp/vornapppoe.mtu",
                                     "/tmp/ks8995_nor.dat", "/tmp/ks8995_pri.dat"}));
}

TEST_F(NewUnit, HasFilesThatAUnitInUseHas)
{
    std::map<std::string, std::string> files;
    for (const UnitFile& file : newUnit_files()) {
        files[file.path] = file.bytes;
    }
    const std::string config = files["/conf/config"];
    for (const char* line : {"OWN_VPN_ID='12'", "WAN_TYPE='5'", "SELECT_MTU='PPPOE_MTU'",
                             "PPPOE_MTU='1454'", "PPPOEOFF_VPN_ID01='12'", "PPPOEOFF_VPN_ID09='12'",
                             "PPPOEOFF_VPN_ID10='12'", "PPPOEOFF_VPN_ID30='12'"}) {
        EXPECT_NE(("\n" + config).find("\n" + std::string(line) + "\n"), std::string::npos) << line;
    }
    EXPECT_EQ(std::count(config.begin(), config.end(), '\n'), 35);
    EXPECT_EQ(files["/conf/statistics"], std::string(496, '\0'));
    EXPECT_EQ(files["/conf/user.log"], std::string(16, '\0'));
    EXPECT_EQ(files["/tmp/mtu_datasize"],
              std::string("\xAE\5\xAE\5\xAE\5\x94\5\x94\5\x94\5\xA6\5\xA6\5\xA6\5\0\0", 20));
    EXPECT_EQ(files["/tmp/vornapppoe.mtu"], "VORNAMRU=1454\n");
}

} // namespace
