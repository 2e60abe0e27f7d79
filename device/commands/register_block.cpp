#include "device/commands/register_block.h"

#include <array>
#include <cstddef>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/register_bytes.h"

static_assert(sizeof(RegE0Block) == 24);
static_assert(offsetof(RegE0Block, address) == 2);
static_assert(offsetof(RegE0Block, word) == 8);
static_assert(offsetof(RegE0Block, first) == 12);
static_assert(offsetof(RegE0Block, second) == 16);
static_assert(offsetof(RegE0Block, field_3) == 20);
static_assert(offsetof(RegE0Block, field_5) == 21);
static_assert(sizeof(Reg16EBlock) == 12);

namespace
{

// Block 0xE0: its registers, and their places in the block.
constexpr uint32_t kBlockE0 = 0x00E0;
enum RegE0 { kE0Address = 0, kE6 = 3, kE8 = 4, kEA = 5, kEC = 6, kEE = 7, kF0 = 8, kF2 = 9 };
using BlockE0 = std::array<uint16_t, 10>;

constexpr uint16_t kEnableReported = 0x0001; // the setter drives two bits more
constexpr uint16_t kEnableDriven = 0x0007;
constexpr uint16_t kField3Mask = 0x0700;
constexpr unsigned kField3Shift = 8;
constexpr uint8_t kField3Max = kField3Mask >> kField3Shift;
constexpr uint16_t kField5Mask = 0x001F;
constexpr uint8_t kField5Max = kField5Mask;

enum ValidE0 : unsigned {
    kValidEnable = 0x01,
    kValidAddress = 0x02,
    kValidWord = 0x04,
    kValidFirst = 0x08,
    kValidSecond = 0x10,
    kValidField3 = 0x20,
    kValidField5 = 0x40
};

constexpr uint32_t address_of(RegE0 place)
{
    return kBlockE0 + kRegisterStep * place;
}

// Block 0x16E: flags, then two addresses.
constexpr uint32_t kBlock16E = 0x016E;
constexpr uint32_t kBlock16EFirst = 0x0170;
constexpr uint32_t kBlock16ESecond = 0x0174;
using Block16E = std::array<uint16_t, 5>;
constexpr FlagField kBlock16EFlags[] = {{0, 0x0001}, {1, 0x0002}};
constexpr unsigned kValid16EFlags = 0x03;
constexpr unsigned kValid16EFirst = 0x04;
constexpr unsigned kValid16ESecond = 0x08;

int32_t block_read(uint32_t address, std::span<uint16_t> values)
{
    return fpga_run(FpgaAccess::kRead,
                    [=](Fpga fpga) { return registers_read(fpga, address, values); });
}

constexpr uint32_t halves_join(uint16_t high, uint16_t low)
{
    return static_cast<uint32_t>(high) << 16 | low;
}

int32_t halves_write(Fpga fpga, RegE0 place, uint32_t value)
{
    const int32_t status =
        register_write(fpga, address_of(place), static_cast<uint16_t>(value >> 16));
    return status == DEVICE_OK ? register_write(fpga, address_of(place) + kRegisterStep,
                                                static_cast<uint16_t>(value))
                               : status;
}

// The last register of block 0xE0. Its fields are tested here, after everything before has been
// written.
int32_t fields_write(Fpga fpga, unsigned valid, const RegE0Block& record, uint16_t held)
{
    if ((valid & (kValidField3 | kValidField5)) == 0) {
        return DEVICE_OK;
    }
    uint16_t value = held;
    if ((valid & kValidField3) != 0) {
        if (record.field_3 > kField3Max) {
            return DEVICE_BAD_ARGUMENT;
        }
        const auto field = static_cast<uint16_t>(record.field_3 << kField3Shift);
        value = bitChange_apply(field_set(kField3Mask, field), value);
    }
    if ((valid & kValidField5) != 0) {
        if (record.field_5 > kField5Max) {
            return DEVICE_BAD_ARGUMENT;
        }
        value = bitChange_apply(field_set(kField5Mask, record.field_5), value);
    }
    return register_write(fpga, address_of(kF2), value);
}

int32_t blockE0_write(Fpga fpga, const RegE0Block& record, const BlockE0& held)
{
    const unsigned valid = validMask_of(record.valid);
    int32_t status = DEVICE_OK;
    if ((valid & kValidEnable) != 0) {
        const BitChange change = bits_set(kEnableDriven, record.enable == 1);
        status = register_write(fpga, address_of(kF0), bitChange_apply(change, held[kF0]));
    }
    if (status == DEVICE_OK && (valid & kValidAddress) != 0) {
        status = registerBytes_write(fpga, address_of(kE0Address), record.address);
    }
    if (status == DEVICE_OK && (valid & kValidWord) != 0) {
        status = register_write(fpga, address_of(kE6), record.word);
    }
    if (status == DEVICE_OK && (valid & kValidFirst) != 0) {
        status = halves_write(fpga, kE8, record.first);
    }
    if (status == DEVICE_OK && (valid & kValidSecond) != 0) {
        status = halves_write(fpga, kEC, record.second);
    }
    return status == DEVICE_OK ? fields_write(fpga, valid, record, held[kF2]) : status;
}

int32_t block16E_write(Fpga fpga, const Reg16EBlock& record, uint16_t heldFlags)
{
    const unsigned valid = validMask_of(record.valid);
    int32_t status = DEVICE_OK;
    if ((valid & kValid16EFlags) != 0) {
        const uint8_t flags[] = {record.flag_a, record.flag_b};
        const BitChange change = flagFields_change(kBlock16EFlags, valid, flags);
        status = register_write(fpga, kBlock16E, bitChange_apply(change, heldFlags));
    }
    if (status == DEVICE_OK && (valid & kValid16EFirst) != 0) {
        status = registerBytes_write(fpga, kBlock16EFirst, record.first);
    }
    if (status == DEVICE_OK && (valid & kValid16ESecond) != 0) {
        status = registerBytes_write(fpga, kBlock16ESecond, record.second);
    }
    return status;
}

} // namespace

int32_t read_rege0_block(RegE0Block* record)
{
    BlockE0 held{};
    const int32_t status = block_read(kBlockE0, held);
    if (status == DEVICE_OK) {
        registerBytes_unpack(std::span(held).first<3>(), record->address);
        record->word = held[kE6];
        record->first = halves_join(held[kE8], held[kEA]);
        record->second = halves_join(held[kEC], held[kEE]);
        record->enable = (held[kF0] & kEnableReported) != 0 ? 1 : 0;
        record->field_5 = static_cast<uint8_t>(held[kF2] & kField5Mask);
        record->field_3 = static_cast<uint8_t>((held[kF2] & kField3Mask) >> kField3Shift);
    }
    return status;
}

int32_t write_rege0_block(const RegE0Block* record)
{
    BlockE0 held{};
    const int32_t status = block_read(kBlockE0, held);
    if (status != DEVICE_OK) {
        return status;
    }
    return fpga_run(FpgaAccess::kWrite,
                    [record, &held](Fpga fpga) { return blockE0_write(fpga, *record, held); });
}

int32_t read_reg16e_block(Reg16EBlock* record)
{
    Block16E held{};
    const int32_t status = block_read(kBlock16E, held);
    if (status == DEVICE_OK) {
        uint8_t flags[2];
        flagFields_extract(kBlock16EFlags, held[0], flags);
        record->flag_a = flags[0];
        record->flag_b = flags[1];
        registerBytes_unpack(std::span(held).subspan<1, 2>(), record->first);
        registerBytes_unpack(std::span(held).subspan<3, 2>(), record->second);
    }
    return status;
}

int32_t write_reg16e_block(const Reg16EBlock* record)
{
    Block16E held{};
    const int32_t status = block_read(kBlock16E, held);
    if (status != DEVICE_OK) {
        return status;
    }
    return fpga_run(FpgaAccess::kWrite,
                    [record, &held](Fpga fpga) { return block16E_write(fpga, *record, held[0]); });
}
