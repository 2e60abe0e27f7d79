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
         {"word.0x6B29=0x0001", "word.0x6B3B=0x0000000E", "register.0x0012=0x0040",
          "device_info=00010203a1200000", "phy.0.1=0x782D", "phy.6.5=0x45E1", "id_value.30=0x000C",
          "address.3=0103a8c0", "unit_words.3.1=0x0000,0x0150", "port_entry.24=0x1000",
          "counter.94.33=0", "switch_port.4=0400010101000000", "rtc.runs=1",
          "rtc.time=2026-11-21T10:20:30"}) {
        EXPECT_NE(text.find("\n" + std::string(item) + "\n"), std::string::npos) << item;
    }
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n') - 1, 456);
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

} // namespace
