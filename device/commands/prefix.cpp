#include "device/commands/prefix.h"

#include <cstddef>
#include <cstring>
#include <iterator>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/shared_words.h"

static_assert(sizeof(PrefixMap) == 16);
static_assert(offsetof(PrefixSet, address) == 2);
static_assert(offsetof(PrefixSet, length) == 6);

namespace
{

constexpr uint16_t kLengthMax = 32;

struct PrefixRegisters {
    uint32_t address; // two registers
    uint32_t mask;    // two registers
    uint16_t commit;
};
constexpr PrefixRegisters kSets[] = {{0x0100, 0x0104, kCommitPrefix0},
                                     {0x0108, 0x010C, kCommitPrefix1}};

constexpr unsigned kValidAddress = 0x01;
constexpr unsigned kValidLength = 0x02;

constexpr uint8_t mask_bit(unsigned number)
{
    return static_cast<uint8_t>(0x80U >> (number % 8));
}

void parts_write(Fpga& fpga, const PrefixRegisters& registers, const PrefixSet& wanted)
{
    const unsigned valid = validMask_of(wanted.valid);
    PrefixBytes mask;
    if ((valid & kValidLength) != 0 && prefixMask_fromLength(wanted.length, mask) != 0) {
        fpga_fail(fpga, DEVICE_UNMAPPED);
    }
    if ((valid & kValidAddress) != 0) {
        registerBytes_write(fpga, registers.address, wanted.address);
    }
    if ((valid & kValidLength) != 0 && fpga_good(fpga)) { // only then there is a mask
        registerBytes_write(fpga, registers.mask, mask);
    }
    if ((valid & (kValidAddress | kValidLength)) != 0) {
        register_change(fpga, kRegister114, bits_assign(registers.commit, true));
    }
}

} // namespace

int32_t prefixLength_fromMask(const PrefixBytes& mask, uint16_t& length)
{
    length = 0;
    while (length < kLengthMax && (mask[length / 8] & mask_bit(length)) != 0) {
        ++length;
    }
    return length <= kLengthMax ? 0 : -1;
}

int32_t prefixMask_fromLength(uint16_t length, PrefixBytes& mask)
{
    if (length > kLengthMax) {
        return -1;
    }
    memset(mask, 0, sizeof mask);
    for (unsigned number = 0; number < length; ++number) {
        mask[number / 8] |= mask_bit(number);
    }
    return 0;
}

int32_t prefixSet_read(unsigned set, PrefixBytes& address, uint16_t& length)
{
    if (set >= std::size(kSets)) {
        return DEVICE_BAD_ARGUMENT;
    }
    uint16_t values[4]; // address, mask
    const int32_t status = command_readRegisters(kSets[set].address, values);
    if (status != DEVICE_OK) {
        return status;
    }
    PrefixBytes mask;
    registerBytes_unpack(values, address);
    registerBytes_unpack(values + 2, mask);
    if (prefixLength_fromMask(mask, length) != 0) {
        return DEVICE_UNMAPPED;
    }
    return DEVICE_OK;
}

// The address is read, too, and left to the caller as it was.
int32_t read_prefix0_length(PrefixMap* map)
{
    PrefixBytes address;
    uint16_t length = 0;
    const int32_t status = prefixSet_read(0, address, length);
    if (status == DEVICE_OK) {
        map->set0.length = length;
    }
    return status;
}

int32_t read_prefix1(PrefixMap* map)
{
    PrefixBytes address;
    uint16_t length = 0;
    const int32_t status = prefixSet_read(1, address, length);
    if (status == DEVICE_OK) {
        memcpy(map->set1.address, address, sizeof address);
        map->set1.length = length;
    }
    return status;
}

int32_t prefixSet_write(const PrefixMap* map, PrefixPlace place)
{
    const auto set = static_cast<unsigned>(place);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if (fpga_good(fpga)) {
        // A set that cannot be read is not written; what was read does not matter.
        PrefixBytes address;
        uint16_t length = 0;
        fpga_fail(fpga, prefixSet_read(set, address, length));
    }
    parts_write(fpga, kSets[set], place == PrefixPlace::kSet0 ? map->set0 : map->set1);
    return fpga_close(fpga);
}
