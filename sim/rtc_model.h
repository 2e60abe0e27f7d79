// The clock behind /dev/rtc.
#pragma once

#include <array>
#include <cstdint>

#include "sim/fpga_model.h"

// The form of one of the driver's requests, or null.
const RequestForm* rtcRequestForm_find(uint32_t number);

struct RtcModel {
    // Second, minute, hour, day, month 0..11, years since 1900, weekday, day of year, daylight
    // saving.
    std::array<int32_t, 9> time{};
    uint32_t status = 0;
    int result = 0;          // what its requests return
    bool overwrites = false; // the record of a time that is set comes back as nonsense

    int serve(const RequestForm& form, char* record);
};
