#include "device/commands/mtu_datasize.h"

#include <cstddef>
#include <cstdio>
#include <iterator>

#include "device/access/fpga.h"
#include "device/access/shared_words.h"
#include "device/commands/mtu_limit.h"
#include "maint/system_log.h"

static_assert(sizeof(MtuDatasize) == 20);
static_assert(offsetof(MtuDatasize, data_size) == 6);
static_assert(offsetof(MtuDatasize, line_size) == 12);
static_assert(offsetof(MtuDatasize, kept) == 18);

namespace
{

constexpr const char* kDatasizePath = "/tmp/mtu_datasize";
constexpr int32_t kFileFailed = DEVICE_OPEN_FAILED; // whatever failed about it

constexpr int kLineOverhead = 8;

void sizes_fill(MtuDatasize& record, bool fullLineSize)
{
    const int lineOverhead = fullLineSize ? 0 : kLineOverhead;
    for (size_t i = 0; i < std::size(record.size); ++i) {
        record.data_size[i] = static_cast<uint16_t>(record.size[i] - kDataOverhead);
        record.line_size[i] = static_cast<uint16_t>(record.size[i] - lineOverhead);
    }
}

} // namespace

// The texts of the two commands differ in the blank before the colon. They are logged before the
// file is closed.

int32_t read_mtu_datasize(MtuDatasize* record)
{
    FILE* file = fopen(kDatasizePath, "r");
    if (file == nullptr) {
        systemLog_put("read_mtu_datasize: /tmp/mtu_datasize open error.");
        return kFileFailed;
    }
    // A short file leaves what it had in the caller's record.
    const bool good = fread(record, sizeof *record, 1, file) == 1;
    if (!good) {
        systemLog_put("read_mtu_datasize: /tmp/mtu_datasize read error.");
    }
    fclose(file);
    return good ? DEVICE_OK : kFileFailed;
}

int32_t write_mtu_datasize(MtuDatasize* record)
{
    const int32_t word = command_readWord(kWord03, FpgaAccess::kWrite);
    if (word < 0) {
        return word;
    }
    sizes_fill(*record, (word & kWord03LineSize) != 0);

    FILE* file = fopen(kDatasizePath, "w+");
    if (file == nullptr) {
        systemLog_put("write_mtu_datasize : /tmp/mtu_datasize open error.");
        return kFileFailed;
    }
    const bool good = fwrite(record, sizeof *record, 1, file) == 1;
    if (!good) {
        systemLog_put("write_mtu_datasize : /tmp/mtu_datasize write error.");
    }
    fclose(file);
    return good ? DEVICE_OK : kFileFailed;
}
