// The own unit's identity: device information and identity registers.
#include "device/command_test.h"

namespace
{

class UnitIdentity : public CommandTest
{
  protected:
    void expect_info(const char* words, const Bytes& reported)
    {
        board.fpga.device_info = hex(words);
        expect_run(RD_DEVICE_INFO, untouched(8), 0, reported);
    }
};

TEST_F(UnitIdentity, DeviceInfoIsReadInOneRequest)
{
    board.fpga.device_info = hex("12 34 56 78 AB CD EF 01");
    prove_record(RD_DEVICE_INFO, untouched(8),
                 {opens_to_read(), record_read(0x6B01, zeros(8)), closes()},
                 hex("34 12 78 56") + "cdab");
    expect_kept(RD_DEVICE_INFO, untouched(8));
}

TEST_F(UnitIdentity, DeviceInfoHasItsBytesExchangedAndTheThirdWordSpelt)
{
    expect_info("12 34 56 78 AB CD EF 01", hex("34 12 78 56") + "cdab");
    expect_info("00 FF 01 02 0A 90 33 44", hex("FF 00 02 01") + "900a");
    for (unsigned value = 0; value < 256; ++value) {
        char digits[4];
        snprintf(digits, sizeof digits, "%02x", value);
        expect_info((std::string("01 02 03 04 ") + digits + " 5F 07 08").c_str(),
                    hex("02 01 04 03") + "5f" + digits);
        expect_info((std::string("01 02 03 04 5F ") + digits + " 07 08").c_str(),
                    hex("02 01 04 03") + digits + "5f");
    }
}

TEST_F(UnitIdentity, IdRegistersAreReadOnOneDescriptorInTheirLowHalves)
{
    board.fpga.registers = {{0x0180, 0x1234}, {0x0182, 0xFFFF}, {0x0184, 0x0000}, {0x0186, 0x8001},
                            {0x0188, 0x7FFE}, {0x018A, 0x00FF}, {0x018C, 0xFF00}, {0x018E, 0x5555}};
    board.fpga.register_high = 0xBEEF;
    prove_record(RD_ID_REGISTERS, untouched(14),
                 {opens_to_read(), register_read(0x0180), register_read(0x0182),
                  register_read(0x0184), register_read(0x0186), register_read(0x0188),
                  register_read(0x018A), register_read(0x018C), closes()},
                 hex("34 12 FF FF 00 00 01 80 FE 7F FF 00 00 FF"));
}

TEST_F(UnitIdentity, IdRegistersAreKeptFromTheFailedOneOn)
{
    const Bytes values = hex("11 01 22 02 33 03 44 04 55 05 66 06 77 07");
    board.fpga.registers = {{0x0180, 0x0111}, {0x0182, 0x0222}, {0x0184, 0x0333}, {0x0186, 0x0444},
                            {0x0188, 0x0555}, {0x018A, 0x0666}, {0x018C, 0x0777}};
    board.fail_from(1);
    expect_run(RD_ID_REGISTERS, untouched(14), -1, untouched(14));
    for (size_t good = 0; good < 7; ++good) {
        SCOPED_TRACE(good);
        board.restart();
        fail_in_both_runs(1 + good + 1, 1);
        expect_run(RD_ID_REGISTERS, untouched(14), -2,
                   values.substr(0, 2 * good) + untouched(14 - 2 * good));
    }
}

} // namespace
