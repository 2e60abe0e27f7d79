#include "device/commands/switch_tables.h"

#include <cstdio>

#include "device/access/fpga.h"

namespace
{

constexpr const char* kNormalTablePath = "/tmp/ks8995_nor.dat";
constexpr const char* kPriorityTablePath = "/tmp/ks8995_pri.dat";
constexpr uint16_t kStatusBit8 = 0x0100;

using SwitchTable = uint8_t[128];

// The record of the load requests.
struct SwitchConfigRecord {
    uint16_t status;
    SwitchTable normal;
    SwitchTable priority;
    uint8_t zero[2];
};
static_assert(sizeof(SwitchConfigRecord) == 260);

int32_t table_load(const char* path, SwitchTable& table)
{
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        return DEVICE_BAD_ARGUMENT;
    }
    const bool whole = fread(table, sizeof table, 1, file) == 1;
    fclose(file);
    if (!whole) {
        return DEVICE_BAD_ARGUMENT;
    }
    return DEVICE_OK;
}

// Nothing is sent unless both files could be read in full.
int32_t tables_send(FpgaRequest request)
{
    return fpga_run(FpgaAccess::kWrite, [request](Fpga fpga) {
        uint16_t word = 0;
        int32_t status = word_read(fpga, kStatusWordRead, word);
        SwitchConfigRecord record{};
        record.status = word & kStatusBit8;
        if (status == DEVICE_OK) {
            status = table_load(kNormalTablePath, record.normal);
        }
        if (status == DEVICE_OK) {
            status = table_load(kPriorityTablePath, record.priority);
        }
        return status == DEVICE_OK ? record_write(fpga, request, &record) : status;
    });
}

} // namespace

int32_t write_switch_tables_1(void* /*unused*/)
{
    return status_failingAsRead(tables_send(kSwitchTablesWrite1));
}

int32_t write_switch_tables_2(void* /*unused*/)
{
    return tables_send(kSwitchTablesWrite2);
}
