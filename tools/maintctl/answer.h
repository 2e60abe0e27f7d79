// A command that was asked once, with room for whatever the driver fills.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "maint/typed_call.h"
#include "tools/maintctl/json.h"
#include "tools/maintctl/screen.h"

// Not asked, because it needs what another command could not tell.
constexpr int32_t kNotAsked = INT32_MIN;

struct Answer {
    DeviceCommandCode code = 0;
    int32_t result = kNotAsked;
    alignas(8) uint8_t record[DEVICE_RECORD_MAX] = {};
};

// Runs the command on the answer's record as it stands.
void answer_get(Answer& answer, DeviceCommandCode code);

constexpr bool answer_isGood(const Answer& answer)
{
    return answer.result >= 0;
}

template <DeviceCommandCode kCode> using RecordOf = typename maint::Command<kCode>::Record;

template <DeviceCommandCode kCode> RecordOf<kCode> record_of(const Answer& answer)
{
    RecordOf<kCode> record;
    static_assert(sizeof record <= sizeof answer.record);
    memcpy(&record, answer.record, sizeof record);
    return record;
}

// Runs a command with what goes in.
template <DeviceCommandCode kCode> void answer_get(Answer& answer, const RecordOf<kCode>& in)
{
    memcpy(answer.record, &in, sizeof in);
    answer_get(answer, kCode);
}

// "RD_RTC_TIME -1: the device cannot be opened"
void answer_showMissing(Screen& screen, const Answer& answer);

// {"command":...,"code":...,"result":...,"error":...}
void answer_jsonError(Json& json, const Answer& answer);

// The unit's own panel, RD_LED_STATE: asks for the own identifier first. Where that cannot be read,
// or is none, the panel is not asked for. Returns what failed, or the panel.
const Answer& panel_get(Answer& own_id, Answer& panel);
