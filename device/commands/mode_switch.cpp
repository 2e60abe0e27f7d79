#include "device/commands/mode_switch.h"

#include "device/access/fpga.h"
#include "device/access/shared_registers.h"

namespace
{

// The latched register is taken while the bit is clear; the bit is set again afterwards.
constexpr uint32_t kLatchControlRegister = 0x00D8;
constexpr uint16_t kLatchBit = 0x0020;
constexpr uint32_t kLatchedRegister = 0x00DA;
constexpr uint16_t kLatchedMask = 0x00FF;

// The three places of the mode. Its bits of the word are clear while it is on, those of the
// registers set. Both registers serve other commands, too.
constexpr FpgaWord kModeWord = kGroupFlagWord;
constexpr uint16_t kModeWordBits = 0x0003;
constexpr uint16_t kModeBits114 = 0x0007;
constexpr uint16_t kModeBits158 = 0x0005;

struct ModePlaces {
    uint16_t word = 0;
    RegisterAccessRequest reg114{kRegister114, 0};
    RegisterAccessRequest reg158{kRegister158, 0};
};

int32_t modePlaces_read(Fpga fpga, ModePlaces& places)
{
    int32_t status = word_read(fpga, kModeWord.read, places.word);
    if (status == DEVICE_OK) {
        status = record_read(fpga, kRegisterRead, &places.reg114);
    }
    if (status == DEVICE_OK) {
        status = record_read(fpga, kRegisterRead, &places.reg158);
    }
    return status;
}

int32_t modePlaces_write(Fpga fpga, const ModePlaces& places)
{
    int32_t status = value_write(fpga, kModeWord.write, places.word);
    if (status == DEVICE_OK) {
        status = record_write(fpga, kRegisterWrite, &places.reg114);
    }
    if (status == DEVICE_OK) {
        status = record_write(fpga, kRegisterWrite, &places.reg158);
    }
    return status;
}

} // namespace

int32_t read_reg_da_latched(uint32_t* value)
{
    uint16_t latched = 0;
    const int32_t status = fpga_run(FpgaAccess::kWrite, [&latched](Fpga fpga) -> int32_t {
        RegisterAccessRequest control{kLatchControlRegister, 0};
        int32_t step = record_read(fpga, kRegisterRead, &control);
        if (step != DEVICE_OK) {
            return step;
        }
        control.value &= ~uint32_t{kLatchBit};
        step = record_write(fpga, kRegisterWrite, &control);
        if (step != DEVICE_OK) {
            return step;
        }
        step = register_read(fpga, kLatchedRegister, latched);
        if (step != DEVICE_OK) {
            return step;
        }
        control.value |= kLatchBit;
        step = record_write(fpga, kRegisterWrite, &control);
        if (step != DEVICE_OK) {
            return step;
        }
        // The second value is of no use, but the read belongs to the sequence.
        uint16_t unused = 0;
        return register_read(fpga, kLatchedRegister, unused);
    });
    if (status == DEVICE_OK) {
        *value = latched & kLatchedMask;
    }
    return status;
}

int32_t read_mode_switch(uint16_t* mode)
{
    ModePlaces places;
    const int32_t status =
        fpga_run(FpgaAccess::kRead, [&places](Fpga fpga) { return modePlaces_read(fpga, places); });
    if (status == DEVICE_OK) {
        *mode = (places.word & kModeWordBits) == 0 &&
                        (places.reg114.value & kModeBits114) == kModeBits114 &&
                        (places.reg158.value & kModeBits158) == kModeBits158
                    ? 1
                    : 0;
    }
    return status;
}

int32_t write_mode_switch(const uint16_t* mode)
{
    return fpga_run(FpgaAccess::kWrite, [mode](Fpga fpga) -> int32_t {
        ModePlaces places;
        const int32_t status = modePlaces_read(fpga, places);
        if (status != DEVICE_OK) {
            return status;
        }
        if (*mode == 1) {
            places.word &= static_cast<uint16_t>(~kModeWordBits);
            places.reg114.value |= kModeBits114;
            places.reg158.value |= kModeBits158;
        } else {
            places.word |= kModeWordBits;
            places.reg114.value &= ~uint32_t{kModeBits114};
            places.reg158.value &= ~uint32_t{kModeBits158};
        }
        return modePlaces_write(fpga, places);
    });
}
