// The port flags word.
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/shared_words.h"
#include "device/commands/port.h"

static_assert(sizeof(PortFlags) == 12);

namespace
{

constexpr uint16_t kPortFlags[] = {0x0100, 0x0002, 0x0004, 0x0001, 0x0008,
                                   0x0010, 0x0020, 0x0040, 0x0080, 0x1000};
constexpr uint16_t kPortFlagsForced = 0x10F0; // while status bit 8 is set

} // namespace

int32_t read_port_flags(PortFlags* record)
{
    return flags_store(command_readWord(kPortFlagsWord), kPortFlags, record->flags);
}

int32_t write_port_flags(const PortFlags* record)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if ((word_read(fpga, kStatusWordRead) & kStatusBit8) != 0) {
        word_write(fpga, kPortFlagsWord, kPortFlagsForced);
    } else {
        word_change(fpga, kPortFlagsWord,
                    flagFields_change(kPortFlags, record->mask, record->flags));
    }
    return fpga_close(fpga);
}
