#include "device/commands/driver.h"

#include <cstddef>
#include <cstring>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/switch_port.h"

static_assert(sizeof(FlagSet) == 9);
static_assert(offsetof(AddressPair, address) == 4);
static_assert(offsetof(AddressPair, address_6) == 8);
static_assert(sizeof(KeyBytes) == 5);
static_assert(sizeof(PairWords) == 8);

namespace
{

struct AddressPairRequest {
    uint32_t index;
    uint32_t zero;
    uint8_t address[4];
    uint8_t address_6[6];
    uint8_t spare[2];
};
static_assert(sizeof(AddressPairRequest) == 20);

struct PairEnableRequest {
    uint8_t enable[2];
    uint8_t spare_2[2];
    uint8_t select; // always 1
    uint8_t spare_5[3];
};
static_assert(sizeof(PairEnableRequest) == 8);

struct KeyBytesRequest {
    KeyBytes key;
    uint8_t spare[7];
};
static_assert(sizeof(KeyBytesRequest) == 12);

constexpr uint32_t kAddressPairLast = 63;
constexpr uint16_t kControlBit7 = 0x0080;

bool set_valid(uint8_t set)
{
    return set == 1 || set == 2 || set == 4;
}

} // namespace

int32_t read_flag_set(FlagSet* record)
{
    if (!set_valid(record->set)) {
        return DEVICE_BAD_ARGUMENT;
    }
    FlagSetRequest request{record->set, {}};
    // Opened for writing, although it only reads.
    const int32_t status = fpga_run(FpgaAccess::kWrite, [&request](Fpga fpga) {
        return record_read(fpga, kSwitchPortRead, &request);
    });
    if (status == DEVICE_OK) {
        for (size_t n = 0; n < sizeof record->flags; ++n) {
            record->flags[n] = request.flags[n] == 1 ? 1 : 0;
        }
    }
    return status;
}

int32_t write_flag_set(const FlagSet* record)
{
    if (!set_valid(record->set)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) {
        const unsigned valid = validMask_of(record->valid);
        FlagSetRequest request{record->set, {}};
        const int32_t status = record_read(fpga, kSwitchPortRead, &request);
        if (status != DEVICE_OK) {
            return status;
        }
        for (size_t n = 0; n < sizeof record->flags; ++n) {
            if ((valid & (1U << n)) != 0) {
                request.flags[n] = record->flags[n] == 1 ? 1 : 0;
            }
        }
        return record_write(fpga, kSwitchPortWrite, &request);
    });
}

int32_t read_addr_pair(AddressPair* record)
{
    if (record->index > kAddressPairLast) {
        return DEVICE_BAD_ARGUMENT;
    }
    AddressPairRequest request{};
    request.index = record->index;
    const int32_t status = command_readRecord(kAddressPairRead, &request);
    if (status == DEVICE_OK) {
        memcpy(record->address, request.address, sizeof record->address);
        memcpy(record->address_6, request.address_6, sizeof record->address_6);
    }
    return status;
}

int32_t write_addr_pair(const AddressPair* record)
{
    if (record->index > kAddressPairLast) {
        return DEVICE_BAD_ARGUMENT;
    }
    AddressPairRequest request{};
    request.index = record->index;
    memcpy(request.address, record->address, sizeof request.address);
    memcpy(request.address_6, record->address_6, sizeof request.address_6);
    return command_writeRecord(kAddressPairWrite, &request);
}

int32_t write_pair_enable(const uint8_t* enable)
{
    const uint8_t on = *enable != 0 ? 1 : 0;
    const PairEnableRequest request{{on, on}, {}, 1, {}};
    return command_writeRecord(kPairEnableWrite, &request);
}

int32_t write_key_bytes(const KeyBytes* record)
{
    const KeyBytesRequest request{*record, {}};
    return command_writeRecord(kKeyBytesWrite, &request);
}

// Works in the caller's word.
int32_t write_control_bit7_clear(uint16_t* word)
{
    return fpga_run(FpgaAccess::kWrite, [word](Fpga fpga) {
        const int32_t status = record_read(fpga, kDriverControlRead, word);
        if (status != DEVICE_OK) {
            return status;
        }
        *word = bitChange_apply(bits_set(kControlBit7, false), *word);
        return record_write(fpga, kDriverControlWrite, word);
    });
}
