#include "sim/rtc_model.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr RequestForm kRequests[] = {{kRtcTimeRead, Argument::kRecord, 36, 0, 36},
                                     {kRtcTimeWrite, Argument::kRecord, 36, 0, 0},
                                     {kRtcStatusRead, Argument::kRecord, 4, 0, 4},
                                     {kRtcStatusWrite, Argument::kRecord, 4, 0, 0}};

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
    case kRtcTimeRead:
        memcpy(record, time.data(), sizeof time);
        break;
    case kRtcTimeWrite:
        memcpy(time.data(), record, sizeof time);
        if (overwrites) {
            memset(record, 0x11, sizeof time);
        }
        break;
    case kRtcStatusRead:
        memcpy(record, &status, sizeof status);
        break;
    default:
        memcpy(&status, record, sizeof status);
        break;
    }
    return result;
}
