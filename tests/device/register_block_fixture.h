// The register blocks 0xE0..0xF2 and 0x16E..0x176, and their neighbours.
#pragma once

#include "device/register_fixture.h"

const Registers kHeldBlocks = {
    {0x00DE, 0x0101}, {0x00E0, 0x1122}, {0x00E2, 0x3344}, {0x00E4, 0x5566}, {0x00E6, 0x7788},
    {0x00E8, 0x99AA}, {0x00EA, 0xBBCC}, {0x00EC, 0xDDEE}, {0x00EE, 0xFF10}, {0x00F0, 0xA5A2},
    {0x00F2, 0xFAED}, {0x00F4, 0x0202}, {0x016C, 0x0303}, {0x016E, 0xB4C2}, {0x0170, 0x2132},
    {0x0172, 0x4354}, {0x0174, 0x6576}, {0x0176, 0x8798}, {0x0178, 0x0404}};

class RegisterBlockTest : public RegisterTest
{
  protected:
    RegisterBlockTest() { held_put(); }
    void held_put() { board.fpga.registers = kHeldBlocks; }

    // The proof of a write, and that what it has written is written again.
    void prove_block(DeviceCommandCode command, const Bytes& record, const Course& course)
    {
        prove_registers({command, record, kHeldBlocks, course, record});
        expect_calls(command, record, course, record);
    }

    // The calls of a write.
    void expect_written(DeviceCommandCode command, const Bytes& record, const Course& course)
    {
        held_put();
        expect_calls(command, record, course, record);
    }
};
