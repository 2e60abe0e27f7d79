#include "device/commands/mtu_limit.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>

#include "config/config_value.h"
#include "device/access/fpga.h"

static_assert(sizeof(MtuLimit) == 6);
static_assert(offsetof(MtuLimit, frame_size) == 2);
static_assert(offsetof(MtuLimit, limit) == 4);

namespace
{

constexpr uint32_t kLimitRegister = 0x0056; // the one that is read back
constexpr uint32_t kLimitTwinRegister = 0x0054;

constexpr const char* kMruPath = "/tmp/vornapppoe.mtu";

constexpr int32_t kWanTypePppoe = 5;
constexpr int32_t kIpsecOff = 0;
constexpr int32_t kIpsecOn = 3;

constexpr uint16_t kMtuDefault = 1390;
constexpr int kDataSizeDefault = kMtuDefault - kDataOverhead;
constexpr int kDataSizeMin = 1188;

// What a frame holds besides the data size (more under PPPoE), and besides the limit.
constexpr int kFrameOverhead = 18;
constexpr int kPppoeOverhead = 8;
constexpr int kPlainOverhead = 42;
constexpr int kIpsecOverhead = 100; // and the padding to whole cipher blocks
constexpr int kCipherBlock = 16;

// The device takes limits of kAlignBase plus a multiple of kAlignStep.
constexpr int kAlignBase = 1004;
constexpr int kAlignStep = 16;
static_assert(kAlignBase % 4 == 0 && kAlignStep % 4 == 0); // the two lowest bits are 0
static_assert(kDataSizeMin + kFrameOverhead - kIpsecOverhead - kCipherBlock >= kAlignBase);

constexpr uint16_t low16(int value)
{
    return static_cast<uint16_t>(value);
}

constexpr int padding_of(int limit)
{
    const int over = (limit + kDataOverhead) % kCipherBlock;
    return (kCipherBlock - over) % kCipherBlock;
}

// The frame that a limit leads to, without PPPoE.
constexpr int frame_size(int limit, bool ipsec)
{
    return ipsec ? limit + padding_of(limit) + kIpsecOverhead : limit + kPlainOverhead;
}

uint16_t mtu_read()
{
    ConfigValue key;
    ConfigValue value;
    const bool found = configValue_find("SELECT_MTU", key) && configValue_find(key, value);
    return found && value[0] != '\0' ? low16(number_parse(value)) : kMtuDefault;
}

int pppoeOverhead_read()
{
    return configNumber_get("WAN_TYPE", kWanTypePppoe) == kWanTypePppoe ? kPppoeOverhead : 0;
}

bool ipsec_read()
{
    return configNumber_get("IPSEC_ENABLE", kIpsecOff) == kIpsecOn;
}

// 0: none is known.
uint16_t mru_read()
{
    struct stat status;
    ConfigValue value;
    const bool found =
        stat(kMruPath, &status) == 0 && GetIniFileString(kMruPath, "", "VORNAMRU", value) == 0;
    return found ? low16(number_parse(value)) : uint16_t{0};
}

int dataSize_of(uint16_t mtu, uint16_t mru)
{
    const int size = mtu > kDataOverhead ? mtu - kDataOverhead : kDataSizeDefault;
    return std::max(mru == 0 ? size : std::min<int>(size, mru), kDataSizeMin);
}

// The largest limit whose frame fits, from the one that fits with any padding upwards. Frames are
// compared in 16 bits: close to 65535 the one that is too large wraps, and counts as fitting.
int ipsecLimit_find(uint16_t frame, int pppoe)
{
    const int first = frame - pppoe - kIpsecOverhead - (kCipherBlock - 1);
    int limit = first;
    while (limit < first + kCipherBlock && low16(frame_size(limit, true) + pppoe) <= frame) {
        ++limit;
    }
    return limit - 1;
}

uint16_t limit_of(int dataSize, int pppoe, bool ipsec)
{
    const uint16_t frame = low16(dataSize + pppoe + kFrameOverhead);
    const int limit = ipsec ? ipsecLimit_find(frame, pppoe) : frame - pppoe - kPlainOverhead;
    return low16(limit - (limit - kAlignBase) % kAlignStep);
}

// Any answer but 0 is a failure here, not only a negative one.
void limit_write(Fpga& fpga, uint32_t address, uint16_t limit)
{
    RegisterAccessRequest access{address, limit};
    if (record_issue(fpga, kRegisterWrite, &access, DEVICE_WRITE_FAILED) > 0) {
        fpga_fail(fpga, DEVICE_WRITE_FAILED);
    }
}

// The limit that the device holds; 0 when it cannot be read, which is no failure.
uint16_t limit_read(Fpga& fpga)
{
    RegisterAccessRequest access{kLimitRegister, 0};
    return record_issue(fpga, kRegisterRead, &access, DEVICE_OK) < 0
               ? uint16_t{0}
               : static_cast<uint16_t>(access.value);
}

uint16_t limit_choose(Fpga& fpga, uint16_t cap)
{
    const uint16_t mtu = mtu_read();
    const int pppoe = pppoeOverhead_read();
    const uint16_t mru = pppoe != 0 ? mru_read() : uint16_t{0};
    const bool ipsec = ipsec_read();
    const uint16_t present = limit_read(fpga);
    const uint16_t limit = limit_of(dataSize_of(mtu, mru), pppoe, ipsec);
    return present != 0 && cap != 0 && pppoe != 0 ? std::min(limit, present) : limit;
}

} // namespace

int32_t read_mtu_limit(MtuLimit* record)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    const uint16_t limit = register_read(fpga, kLimitRegister);
    if (fpga_good(fpga)) {
        record->limit = limit;
        record->frame_size = low16(frame_size(limit, ipsec_read()) - kFrameOverhead);
    }
    return fpga_close(fpga);
}

int32_t write_mtu_limit(const uint16_t* cap)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if (fpga_good(fpga)) {
        const uint16_t limit = limit_choose(fpga, *cap);
        limit_write(fpga, kLimitTwinRegister, limit);
        limit_write(fpga, kLimitRegister, limit);
    }
    return fpga_close(fpga);
}
