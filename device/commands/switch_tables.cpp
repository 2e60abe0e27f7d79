#include "device/commands/switch_tables.h"

#include <cstdio>

#include "device/access/fpga.h"
#include "device/access/shared_words.h"

namespace
{

constexpr const char* kNormalTablePath = "/tmp/ks8995_nor.dat";
constexpr const char* kPriorityTablePath = "/tmp/ks8995_pri.dat";

using SwitchTable = uint8_t[128];

// The record of the load requests.
struct SwitchConfigRecord {
    uint16_t status;
    SwitchTable normal;
    SwitchTable priority;
    uint8_t zero[2];
};
static_assert(sizeof(SwitchConfigRecord) == 260);

// A file that cannot be read in full makes the device fail.
void table_read(Fpga& fpga, const char* path, SwitchTable& table)
{
    FILE* file = fpga_good(fpga) ? fopen(path, "r") : nullptr;
    if (file == nullptr || fread(table, sizeof table, 1, file) != 1) {
        fpga_fail(fpga, DEVICE_BAD_ARGUMENT);
    }
    if (file != nullptr) {
        fclose(file);
    }
}

} // namespace

int32_t tables_load(void* /*unused*/, SentRequest which)
{
    SwitchConfigRecord record{};
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    record.status = word_read(fpga, kStatusWordRead) & kStatusBit8;
    table_read(fpga, kNormalTablePath, record.normal);
    table_read(fpga, kPriorityTablePath, record.priority);
    record_issue(fpga, request_in(which), &record, failure_in(which));
    return fpga_close(fpga);
}
