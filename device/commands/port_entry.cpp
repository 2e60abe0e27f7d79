#include "device/commands/port_entry.h"

#include <cstddef>

#include "device/access/fpga.h"
#include "device/access/port_number.h"
#include "device/access/unit_bit.h"
#include "device/access/unit_records.h"
#include "device/access/work_record.h"
#include "device/commands/device_word.h"

static_assert(sizeof(IndexedWord) == 4);
static_assert(sizeof(PortEntry) == 8);
static_assert(offsetof(PortMask, mask) == 4);
static_assert(sizeof(StatusBit) == 8);
static_assert(sizeof(ChannelWord) == 4);

namespace
{

// The record of the indexed word requests.
struct IndexedWordRequest {
    uint32_t index;
    uint32_t value; // the word in the low half
};
static_assert(sizeof(IndexedWordRequest) == 8);

// The record of the port entry requests.
struct PortEntryRequest {
    uint16_t address;
    uint16_t flag;
    uint16_t value;
    uint16_t zero;
};
static_assert(sizeof(PortEntryRequest) == 8);

constexpr unsigned kEntriesPerPort = 8;
constexpr uint16_t kChannelPage = 1;
constexpr uint16_t kChannelLow = 0x0FFF;

PortEntryRequest request_for(const PortEntry& entry, uint16_t value)
{
    const auto address = static_cast<uint16_t>(entry.index + kEntriesPerPort * entry.port);
    return {address, entry.flag == 1 ? uint16_t{1} : uint16_t{0}, value, 0};
}

} // namespace

int32_t read_indexed_word(IndexedWord* record)
{
    IndexedWordRequest request{record->index, 0};
    // Opened for writing, although it only reads.
    const int32_t status = fpga_run(FpgaAccess::kWrite, [&request](Fpga fpga) {
        return record_read(fpga, kIndexedWordRead, &request);
    });
    if (status == DEVICE_OK) {
        record->value = static_cast<uint16_t>(request.value);
    }
    return status;
}

int32_t write_indexed_word(const IndexedWord* record)
{
    const IndexedWordRequest request{record->index, record->value};
    return command_writeRecord(kIndexedWordWrite, &request);
}

int32_t read_port_entry(PortEntry* entry)
{
    PortEntryRequest request = request_for(*entry, 0);
    const int32_t status = command_readRecord(kPortEntryRead, &request);
    if (status == DEVICE_OK) {
        entry->value = request.value;
    }
    return status;
}

int32_t write_port_entry(const PortEntry* entry)
{
    const PortEntryRequest request = request_for(*entry, entry->value);
    return command_writeRecord(kPortEntryWrite, &request);
}

int32_t write_port_entry_ranged(const PortEntry* entry)
{
    return fpga_run(FpgaAccess::kWrite, [entry](Fpga fpga) -> int32_t {
        if (!port_isValid(entry->port)) {
            return DEVICE_READ_FAILED; // this command's code for it
        }
        const PortEntryRequest request = request_for(*entry, entry->value);
        return record_write(fpga, kPortEntryWriteRanged, &request);
    });
}

int32_t read_port_mask(PortMask* record)
{
    return command_readRecord(kPortMaskRead, &record->mask);
}

int32_t write_port_mask_bit(PortMask* record)
{
    if (!port_isValid(record->port)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) {
        const int32_t status = record_read(fpga, kPortMaskRead, &record->mask);
        if (status != DEVICE_OK) {
            return status;
        }
        const uint32_t bit = unit_bit(record->port);
        record->mask = record->value == 1 ? record->mask | bit : record->mask & ~bit;
        return value_write(fpga, kPortMaskWrite, record->mask);
    });
}

int32_t read_status_bit(StatusBit* record)
{
    uint32_t word = 0;
    const int32_t status = command_readRecord(kUnitMapDRead, &word);
    if (status == DEVICE_OK) {
        const uint32_t bit = (word & unit_bit(record->bit)) != 0 ? 1 : 0;
        record->result = record->bit == 0 ? word : bit;
    }
    return status;
}

int32_t read_channel_word(ChannelWord* record)
{
    return fpga_run(FpgaAccess::kRead, [record](Fpga fpga) {
        // An identifier that cannot be read counts as 0.
        WorkRecord<uint16_t> own{};
        read_device_word_29(own.data());
        if (record->id == own[0]) {
            return record_read(fpga, kChannelWord.read, &record->value);
        }
        UnitWordsRequest words{};
        words.unit = record->id;
        words.page = kChannelPage;
        const int32_t status = record_read(fpga, kUnitWordsRead, &words);
        if (status == DEVICE_OK) {
            record->value = words.first & kChannelLow;
        }
        return status;
    });
}

// The caller's bits are not cut to 12.
int32_t write_channel_word(const ChannelWord* record)
{
    const int32_t status = command_changeWord(kChannelWord, {kChannelLow, record->value});
    return status_failingAsRead(status);
}
