// Status inputs, control bits, enable flag and identity of the device.
#include <array>

#include "device/caller_record.h"
#include "device/device_test.h"

namespace
{

constexpr uint8_t kFlagValues[] = {0, 1, 2, 255};

class PortStatus : public DeviceTest
{
  protected:
    int32_t run(DeviceCommandCode command) { return Fpga_Register_Set(command, record.pointer()); }

    // A report that fails in both runs leaves the record as it is.
    void expect_kept(DeviceCommandCode command)
    {
        const Bytes before = record.bytes();
        board.restart();
        fail_in_both_runs(1, 0);
        EXPECT_EQ(run(command), -1);
        EXPECT_EQ(record.bytes(), before);
        board.restart();
        fail_in_both_runs(2, 1);
        EXPECT_EQ(run(command), -2);
        EXPECT_EQ(record.bytes(), before);
        board.restart();
    }

    CallerRecord record;
    const std::function<void*()> untouched_record = [this] { return record.pointer(); };
};

// Device information -----------------------------------------------------------------------

TEST_F(PortStatus, ReadsTheDeviceInfoInOneRequest)
{
    prove(RD_DEVICE_INFO, untouched_record,
          {opens_to_read(), record_read(0x6B01, hex("00 00 00 00 00 00 00 00")), closes()});
}

TEST_F(PortStatus, ExchangesTheInfoBytesAndSpellsTheThirdWord)
{
    board.fpga.device_info = hex("12 34 56 78 AB CD EF 01");
    EXPECT_EQ(run(RD_DEVICE_INFO), 0);
    EXPECT_EQ(record.bytes(), untouched_after(hex("34 12 78 56") + "cdab"));

    board.fpga.device_info = hex("00 FF 01 02 0A 90 33 44");
    EXPECT_EQ(run(RD_DEVICE_INFO), 0);
    EXPECT_EQ(record.bytes(), untouched_after(hex("FF 00 02 01") + "900a"));
}

TEST_F(PortStatus, SpellsEveryInfoByteWithTwoLowercaseDigits)
{
    for (unsigned value = 0; value < 256; ++value) {
        char digits[4];
        snprintf(digits, sizeof digits, "%02x", value);
        const Bytes byte(1, static_cast<char>(value));
        board.fpga.device_info = hex("01 02 03 04") + byte + hex("5F 07 08");
        EXPECT_EQ(run(RD_DEVICE_INFO), 0);
        EXPECT_EQ(record.bytes(), untouched_after(hex("02 01 04 03") + "5f" + digits));
        board.fpga.device_info = hex("01 02 03 04 5F") + byte + hex("07 08");
        EXPECT_EQ(run(RD_DEVICE_INFO), 0);
        EXPECT_EQ(record.bytes(), untouched_after(hex("02 01 04 03") + digits + "5f"));
    }
}

TEST_F(PortStatus, KeepsTheInfoRecordWhenTheReadFails)
{
    expect_kept(RD_DEVICE_INFO);
}

// Status word ------------------------------------------------------------------------------

TEST_F(PortStatus, ReadsTheStatusWordInOneRequest)
{
    prove(RD_STATUS_WORD_FLAG, untouched_record, {opens_to_read(), word_read(0x6B02), closes()});
    prove(RD_STATUS_INPUTS, untouched_record, {opens_to_read(), word_read(0x6B02), closes()});
}

TEST_F(PortStatus, ReportsBit8OfEveryStatusWord)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B02] = word;
        record.put(0, kUntouched);
        EXPECT_EQ(run(RD_STATUS_WORD_FLAG), 0);
        EXPECT_EQ(record.bytes(), untouched_after((word & 0x0100) != 0 ? hex("01") : hex("00")));
    });
}

TEST_F(PortStatus, ReportsTheActiveLowInputsOfEveryStatusWord)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B02] = word;
        EXPECT_EQ(run(RD_STATUS_INPUTS), 0);
        Bytes inputs;
        for (const unsigned bit : {0x10U, 0x20U, 0x40U, 0x80U}) {
            inputs += (word & bit) == 0 ? '\1' : '\0';
        }
        EXPECT_EQ(record.bytes(), untouched_after(inputs));
    });
}

TEST_F(PortStatus, KeepsTheRecordWhenTheStatusWordCannotBeRead)
{
    expect_kept(RD_STATUS_WORD_FLAG);
    expect_kept(RD_STATUS_INPUTS);
}

// Control bits -----------------------------------------------------------------------------

TEST_F(PortStatus, ReadsTheControlBitsInOneRequest)
{
    prove(RD_CONTROL_BITS, untouched_record, {opens_to_read(), word_read(0x6B07), closes()});
    expect_kept(RD_CONTROL_BITS);
}

TEST_F(PortStatus, ReportsTwoBitsOfEveryControlWord)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B07] = word;
        EXPECT_EQ(run(RD_CONTROL_BITS), 0);
        const Bytes bits{(word & 2) != 0 ? '\1' : '\0', (word & 1) != 0 ? '\1' : '\0'};
        EXPECT_EQ(record.bytes(), untouched_after(bits));
    });
}

TEST_F(PortStatus, WritesTheControlBitsWithoutReading)
{
    board.fpga.words[0x6B07] = 0xFFFF;
    prove(WR_CONTROL_BITS,
          [this] {
              record = CallerRecord(hex("01 00 01"));
              return record.pointer();
          },
          {opens_to_write(), value_write(0x6B08, 0x0006), closes()});
}

TEST_F(PortStatus, WritesEveryControlWordFromExactlyOnes)
{
    for (const uint8_t first : kFlagValues) {
        for (const uint8_t second : kFlagValues) {
            for (const uint8_t third : kFlagValues) {
                board.fpga.words[0x6B07] = 0xFFFF;
                record.put(0, first);
                record.put(1, second);
                record.put(2, third);
                EXPECT_EQ(run(WR_CONTROL_BITS), 0);
                EXPECT_EQ(board.fpga.words[0x6B07], (first == 1 ? 2U : 0U) |
                                                        (second == 1 ? 1U : 0U) |
                                                        (third == 1 ? 4U : 0U));
            }
        }
    }
}

// Enable flag ------------------------------------------------------------------------------

TEST_F(PortStatus, ReadsTheEnableFlagInOneRequest)
{
    prove(RD_ENABLE_FLAG, untouched_record, {opens_to_read(), word_read(0x6B0B), closes()});
    expect_kept(RD_ENABLE_FLAG);
}

TEST_F(PortStatus, ReportsBit0OfEveryEnableWord)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B0B] = word;
        EXPECT_EQ(run(RD_ENABLE_FLAG), 0);
        EXPECT_EQ(record.bytes(), untouched_after((word & 1) != 0 ? hex("01") : hex("00")));
    });
}

TEST_F(PortStatus, WritesTheEnableFlagWithoutReading)
{
    board.fpga.words[0x6B0B] = 0xFFFE;
    prove(WR_ENABLE_FLAG,
          [this] {
              record.put(0, 1);
              return record.pointer();
          },
          {opens_to_write(), value_write(0x6B0C, 0x0001), closes()});
}

TEST_F(PortStatus, WritesOneOrZeroForEveryEnableByte)
{
    for (unsigned flag = 0; flag < 256; ++flag) {
        board.fpga.words[0x6B0B] = 0xFFFF;
        record.put(0, flag);
        EXPECT_EQ(run(WR_ENABLE_FLAG), 0);
        EXPECT_EQ(board.fpga.words[0x6B0B], flag == 1 ? 1U : 0U);
    }
}

// Identity registers -----------------------------------------------------------------------

TEST_F(PortStatus, ReadsTheSevenIdRegistersOnOneDescriptor)
{
    prove(RD_ID_REGISTERS, untouched_record,
          {opens_to_read(), register_read(0x0180), register_read(0x0182), register_read(0x0184),
           register_read(0x0186), register_read(0x0188), register_read(0x018A),
           register_read(0x018C), closes()});
}

TEST_F(PortStatus, ReportsTheLowHalvesOfTheIdRegisters)
{
    board.fpga.registers = {{0x0180, 0x1234}, {0x0182, 0xFFFF}, {0x0184, 0x0000}, {0x0186, 0x8001},
                            {0x0188, 0x7FFE}, {0x018A, 0x00FF}, {0x018C, 0xFF00}, {0x018E, 0x5555}};
    board.fpga.register_high = 0xBEEF;
    EXPECT_EQ(run(RD_ID_REGISTERS), 0);
    EXPECT_EQ(record.bytes(), untouched_after(hex("34 12 FF FF 00 00 01 80 FE 7F FF 00 00 FF")));
}

TEST_F(PortStatus, KeepsTheIdRegistersFromTheFailedOneOn)
{
    const Bytes values = hex("11 01 22 02 33 03 44 04 55 05 66 06 77 07");
    board.fpga.registers = {{0x0180, 0x0111}, {0x0182, 0x0222}, {0x0184, 0x0333}, {0x0186, 0x0444},
                            {0x0188, 0x0555}, {0x018A, 0x0666}, {0x018C, 0x0777}};
    for (size_t good = 0; good < 7; ++good) {
        SCOPED_TRACE(good);
        record = CallerRecord();
        board.restart();
        fail_in_both_runs(1 + good + 1, 1);
        EXPECT_EQ(run(RD_ID_REGISTERS), -2);
        EXPECT_EQ(record.bytes(), untouched_after(values.substr(0, 2 * good)));
    }
    record = CallerRecord();
    expect_kept(RD_ID_REGISTERS);
}

} // namespace
