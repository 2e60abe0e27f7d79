// The entries of the ports.
#include "device/access/fpga.h"
#include "device/access/numbers.h"
#include "device/commands/port.h"

static_assert(sizeof(PortEntry) == 8);

namespace
{

// The record of the port entry requests.
struct PortEntryRequest {
    uint16_t address;
    uint16_t flag;
    uint16_t value;
    uint16_t zero;
};
static_assert(sizeof(PortEntryRequest) == 8);

constexpr unsigned kEntriesPerPort = 8;

PortEntryRequest request_for(const PortEntry& entry, uint16_t value)
{
    const auto address = static_cast<uint16_t>(entry.index + kEntriesPerPort * entry.port);
    return {address, entry.flag == 1 ? uint16_t{1} : uint16_t{0}, value, 0};
}

} // namespace

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
    const PortEntryRequest request = request_for(*entry, entry->value);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if (!port_isValid(entry->port)) {
        fpga_fail(fpga, DEVICE_READ_FAILED); // this command's code for it
    }
    record_write(fpga, kPortEntryWriteRanged, &request);
    return fpga_close(fpga);
}
