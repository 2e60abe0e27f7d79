#include "sim/rtc_model.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr uint32_t kTimeRead = 0x80247009;
constexpr uint32_t kTimeWrite = 0x4024700A;
constexpr uint32_t kStatusRead = 0x80047013;
constexpr uint32_t kStatusWrite = 0x40047014;

constexpr RequestForm kRequests[] = {{kTimeRead, Argument::kRecord, 36, 0, 36},
                                     {kTimeWrite, Argument::kRecord, 36, 0, 0},
                                     {kStatusRead, Argument::kRecord, 4, 0, 4},
                                     {kStatusWrite, Argument::kRecord, 4, 0, 0}};

} // namespace

const RequestForm* rtcRequestForm_find(uint32_t number)
{
    const auto* form = std::find_if(std::begin(kRequests), std::end(kRequests),
                                    [=](const RequestForm& row) { return row.number == number; });
    return form == std::end(kRequests) ? nullptr : form;
}

int RtcModel::serve(const RequestForm& form, char* record)
{
    switch (form.number) {
    case kTimeRead:
        memcpy(record, time.data(), sizeof time);
        break;
    case kTimeWrite:
        memcpy(time.data(), record, sizeof time);
        if (overwrites) {
            memset(record, 0x11, sizeof time);
        }
        break;
    case kStatusRead:
        memcpy(record, &status, sizeof status);
        break;
    default:
        memcpy(&status, record, sizeof status);
        break;
    }
    return result;
}
