#include "device/commands/device_word.h"

#include "device/access/bit_flag.h"

namespace
{

constexpr uint16_t kGroupFlag = 0x01C4;

// The device's code 1, 2, 3 is bit 1, 2, 3 at the caller's side; 0 has no meaning.
constexpr uint16_t kWord48Code = 0x0003;

constexpr uint32_t kRegister44 = 0x0044;
constexpr uint16_t kRegister44Flag = 0x0001;

// One request, after which the device is closed only if it succeeded: a failed request of these two
// commands leaves the descriptor open, which is kept as the system has it.
template <class Request> int32_t request_leaveOpen(FpgaAccess access, Request request)
{
    const Fpga fpga = fpga_open(access);
    if (fpga.descriptor < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const int32_t status = request(fpga);
    if (status == DEVICE_OK) {
        fpga_close(fpga);
    }
    return status;
}

} // namespace

int32_t read_group_flag(uint8_t* flag)
{
    return wordFlag_read(kGroupFlagWord.read, kGroupFlag, flag);
}

int32_t write_group_flag(const uint8_t* flag)
{
    return command_changeWord(kGroupFlagWord, bits_set(kGroupFlag, *flag == 1));
}

// Hands back the request's own result.
int32_t read_device_word_40(uint16_t* word)
{
    return fpga_run(FpgaAccess::kRead,
                    [word](Fpga fpga) { return fpga_request(fpga, kWord40Read, word); });
}

int32_t read_device_word_21(uint16_t* word)
{
    return request_leaveOpen(FpgaAccess::kRead,
                             [word](Fpga fpga) { return record_read(fpga, kWord21Read, word); });
}

int32_t write_device_word_22(const uint16_t* word)
{
    return request_leaveOpen(FpgaAccess::kWrite,
                             [word](Fpga fpga) { return record_write(fpga, kWord22Write, word); });
}

int32_t read_device_word_48(uint16_t* code)
{
    uint16_t word = 0;
    const int32_t status = command_readWord(kWord48.read, word);
    if (status != DEVICE_OK) {
        return status;
    }
    const unsigned held = word & kWord48Code;
    if (held == 0) {
        return DEVICE_UNMAPPED;
    }
    *code = static_cast<uint16_t>(1U << held);
    return DEVICE_OK;
}

int32_t write_device_word_49(const uint16_t* code)
{
    for (unsigned held = 1; held <= kWord48Code; ++held) {
        if (*code == 1U << held) {
            return command_writeValue(kWord48.write, held);
        }
    }
    return DEVICE_BAD_ARGUMENT;
}

// Opened for writing, although the request reads.
int32_t read_device_word_4e(uint16_t* word)
{
    return fpga_run(FpgaAccess::kWrite,
                    [word](Fpga fpga) { return record_read(fpga, kWord4ERead, word); });
}

int32_t read_reg44_flag(uint16_t* flag)
{
    return registerFlag_read(kRegister44, kRegister44Flag, flag);
}

int32_t write_reg44_flag(const uint16_t* flag)
{
    return command_changeRegister(kRegister44, bits_set(kRegister44Flag, *flag == 1));
}
