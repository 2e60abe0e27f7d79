// The clock behind /dev/rtc.
#pragma once

#include <array>
#include <cstdint>

#include "sim/fpga_model.h"

// The driver's requests.
constexpr uint32_t kRtcTimeRead = 0x80247009;
constexpr uint32_t kRtcTimeWrite = 0x4024700A;
constexpr uint32_t kRtcStatusRead = 0x80047013;
constexpr uint32_t kRtcStatusWrite = 0x40047014;

// The form of one of them, or null.
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
