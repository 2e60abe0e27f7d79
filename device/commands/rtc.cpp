#include "device/commands/rtc.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <ctime>

#include "device/commands/rtc_system_clock.h"
#include "maint/fpga.h"

static_assert(sizeof(RtcDateTime) == 14);

namespace
{

constexpr const char* kRtcPath = "/dev/rtc";

// The driver's requests and its record, as the kernel's interface has them.
constexpr unsigned long kRtcTimeRead = 0x80247009;
constexpr unsigned long kRtcTimeWrite = 0x4024700A;
constexpr unsigned long kRtcStatusRead = 0x80047013;
constexpr unsigned long kRtcStatusWrite = 0x40047014;

struct RtcTime {
    int32_t second;
    int32_t minute;
    int32_t hour;
    int32_t day;
    int32_t month; // 0..11
    int32_t year;  // since 1900
    int32_t weekday;
    int32_t dayOfYear;
    int32_t daylightSaving;
};
static_assert(sizeof(RtcTime) == 36);

constexpr int kFirstYear = 1900;

int32_t rtc_request(int access, unsigned long request, void* record, int32_t failure)
{
    const int rtc = open(kRtcPath, access | O_NONBLOCK);
    if (rtc < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const int32_t status = ioctl(rtc, request, record) < 0 ? failure : DEVICE_OK;
    close(rtc);
    return status;
}

time_t localTime_of(const RtcTime& rtc)
{
    tm local{};
    local.tm_sec = rtc.second;
    local.tm_min = rtc.minute;
    local.tm_hour = rtc.hour;
    local.tm_mday = rtc.day;
    local.tm_mon = rtc.month;
    local.tm_year = rtc.year;
    return mktime(&local);
}

} // namespace

uint16_t weekday_of(uint16_t year, uint16_t month, uint16_t day)
{
    // January and February count as months 13 and 14 of the year before.
    const bool early = month <= 2;
    const uint32_t y = early ? static_cast<uint16_t>(year - 1) : year;
    const uint32_t m = early ? static_cast<uint16_t>(month + 12) : month;
    const uint32_t n = 365 * y + y / 4 - y / 100 + y / 400 + (306 * m + 306) / 10 + day - 428;
    return static_cast<uint16_t>(n % 7);
}

int32_t read_rtc_time(RtcDateTime* record)
{
    RtcTime rtc{};
    const int32_t status = rtc_request(O_RDONLY, kRtcTimeRead, &rtc, DEVICE_READ_FAILED);
    if (status != DEVICE_OK) {
        return status;
    }
    record->year = static_cast<uint16_t>(rtc.year + kFirstYear);
    record->month = static_cast<uint16_t>(rtc.month + 1);
    record->day = static_cast<uint16_t>(rtc.day);
    record->hour = static_cast<uint16_t>(rtc.hour);
    record->minute = static_cast<uint16_t>(rtc.minute);
    record->second = static_cast<uint16_t>(rtc.second);
    record->weekday = weekday_of(record->year, record->month, record->day);
    return DEVICE_OK;
}

// Opened for reading, although it writes.
int32_t write_rtc_time(const RtcDateTime* record)
{
    RtcTime rtc{};
    rtc.second = record->second;
    rtc.minute = record->minute;
    rtc.hour = record->hour;
    rtc.day = record->day;
    rtc.month = record->month - 1;
    rtc.year = record->year - kFirstYear;
    const RtcTime wanted = rtc; // the system clock follows what was asked for
    const int32_t status = rtc_request(O_RDONLY, kRtcTimeWrite, &rtc, DEVICE_WRITE_FAILED);
    if (status == DEVICE_OK) {
        systemClock_set(localTime_of(wanted));
    }
    return status;
}

int32_t read_rtc_status(uint32_t* value)
{
    return rtc_request(O_RDONLY, kRtcStatusRead, value, DEVICE_READ_FAILED);
}

int32_t write_rtc_status(const uint32_t* value)
{
    // The driver only reads what a write request points to.
    return rtc_request(O_RDWR, kRtcStatusWrite, const_cast<uint32_t*>(value), DEVICE_WRITE_FAILED);
}
