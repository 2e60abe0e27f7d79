#include "device/commands/driver.h"

#include "device/access/fpga.h"

static_assert(sizeof(KeyBytes) == 5);
static_assert(sizeof(PairWords) == 8);

namespace
{

constexpr uint16_t kControlBit7 = 0x0080;

struct KeyBytesRequest {
    KeyBytes key;
    uint8_t spare[7];
};
static_assert(sizeof(KeyBytesRequest) == 12);

} // namespace

// Works in the caller's word.
int32_t write_control_bit7_clear(uint16_t* word)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    record_read(fpga, kDriverControlRead, word);
    if (fpga_good(fpga)) {
        *word = bitChange_apply(bits_assign(kControlBit7, false), *word);
    }
    record_write(fpga, kDriverControlWrite, word);
    return fpga_close(fpga);
}

int32_t write_key_bytes(const KeyBytes* record)
{
    const KeyBytesRequest request{*record, {}};
    return command_writeRecord(kKeyBytesWrite, &request);
}

// The driver's result is the state, a failure as well.
int32_t read_driver_state(uint16_t* state)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    const int result = value_issue(fpga, kDriverStateRead, 0, DEVICE_OK);
    if (fpga_good(fpga)) {
        *state = static_cast<uint16_t>(result);
    }
    return fpga_close(fpga);
}
