// Block 0xE0: registers 0x00E0 to 0x00F2.
#include <cstddef>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/register_block.h"

static_assert(sizeof(RegE0Block) == 24);
static_assert(offsetof(RegE0Block, address) == 2);
static_assert(offsetof(RegE0Block, word) == 8);
static_assert(offsetof(RegE0Block, first) == 12);
static_assert(offsetof(RegE0Block, second) == 16);
static_assert(offsetof(RegE0Block, field_3) == 20);
static_assert(offsetof(RegE0Block, field_5) == 21);

namespace
{

// The registers, and their places in the block.
constexpr uint32_t kBlock = 0x00E0;
enum Place { kAddress = 0, kE6 = 3, kE8 = 4, kEA = 5, kEC = 6, kEE = 7, kF0 = 8, kF2 = 9 };
using Block = uint16_t[10];

constexpr uint16_t kEnableReported = 0x0001; // the setter drives two bits more
constexpr uint16_t kEnableDriven = 0x0007;
constexpr uint16_t kField3Mask = 0x0700;
constexpr unsigned kField3Shift = 8;
constexpr uint8_t kField3Max = kField3Mask >> kField3Shift;
constexpr uint16_t kField5Mask = 0x001F;
constexpr uint8_t kField5Max = kField5Mask;

enum Valid : unsigned {
    kValidEnable = 0x01,
    kValidAddress = 0x02,
    kValidWord = 0x04,
    kValidFirst = 0x08,
    kValidSecond = 0x10,
    kValidField3 = 0x20,
    kValidField5 = 0x40
};

constexpr uint32_t address_of(Place place)
{
    return kBlock + kRegisterStep * place;
}

constexpr uint32_t halves_join(uint16_t high, uint16_t low)
{
    return static_cast<uint32_t>(high) << 16 | low;
}

void halves_write(Fpga& fpga, Place place, uint32_t value)
{
    register_write(fpga, address_of(place), static_cast<uint16_t>(value >> 16));
    register_write(fpga, address_of(place) + kRegisterStep, static_cast<uint16_t>(value));
}

// The last register of the block. Its fields are tested here, after everything before has been
// written.
void fields_write(Fpga& fpga, unsigned valid, const RegE0Block& record, uint16_t held)
{
    if ((valid & (kValidField3 | kValidField5)) == 0) {
        return;
    }
    BitChange change = kNoChange;
    if ((valid & kValidField3) != 0) {
        if (record.field_3 > kField3Max) {
            fpga_fail(fpga, DEVICE_BAD_ARGUMENT);
        }
        change = field_assign(kField3Mask, static_cast<unsigned>(record.field_3) << kField3Shift);
    }
    if ((valid & kValidField5) != 0) {
        if (record.field_5 > kField5Max) {
            fpga_fail(fpga, DEVICE_BAD_ARGUMENT);
        }
        change = bitChange_join(change, field_assign(kField5Mask, record.field_5));
    }
    register_write(fpga, address_of(kF2), bitChange_apply(change, held));
}

} // namespace

int32_t read_rege0_block(RegE0Block* record)
{
    Block held;
    const int32_t status = command_readRegisters(kBlock, held);
    if (status != DEVICE_OK) {
        return status;
    }
    registerBytes_unpack(held, record->address);
    record->word = held[kE6];
    record->first = halves_join(held[kE8], held[kEA]);
    record->second = halves_join(held[kEC], held[kEE]);
    record->enable = (held[kF0] & kEnableReported) != 0 ? 1 : 0;
    record->field_5 = static_cast<uint8_t>(held[kF2] & kField5Mask);
    record->field_3 = static_cast<uint8_t>((held[kF2] & kField3Mask) >> kField3Shift);
    return DEVICE_OK;
}

int32_t write_rege0_block(const RegE0Block* record)
{
    Block held;
    const int32_t status = command_readRegisters(kBlock, held);
    if (status != DEVICE_OK) {
        return status;
    }
    const unsigned valid = validMask_of(record->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if ((valid & kValidEnable) != 0) {
        const BitChange change = bits_assign(kEnableDriven, record->enable == 1);
        register_write(fpga, address_of(kF0), bitChange_apply(change, held[kF0]));
    }
    if ((valid & kValidAddress) != 0) {
        registerBytes_write(fpga, address_of(kAddress), record->address);
    }
    if ((valid & kValidWord) != 0) {
        register_write(fpga, address_of(kE6), record->word);
    }
    if ((valid & kValidFirst) != 0) {
        halves_write(fpga, kE8, record->first);
    }
    if ((valid & kValidSecond) != 0) {
        halves_write(fpga, kEC, record->second);
    }
    fields_write(fpga, valid, *record, held[kF2]);
    return fpga_close(fpga);
}
