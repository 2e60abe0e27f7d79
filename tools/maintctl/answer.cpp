#include "tools/maintctl/answer.h"

#include "catalogue/catalogue.h"
#include "maint/commands/device_word.h"
#include "maint/commands/led.h"
#include "tools/maintctl/result.h"

namespace
{

struct Failure {
    const char* name;
    const char* meaning;
};

Failure failure_of(const Answer& answer)
{
    const CommandDescription* command = command_find(answer.code);
    if (command == nullptr) {
        return {"?", nullptr};
    }
    return {command->name, result_meaning(*command, answer.result)};
}

} // namespace

void answer_get(Answer& answer, DeviceCommandCode code)
{
    answer.code = code;
    answer.result = Fpga_Register_Set(code, answer.record);
}

void answer_showMissing(Screen& screen, const Answer& answer)
{
    const Failure failure = failure_of(answer);
    screen_format(screen, Colour::kRed, "%s %d", failure.name, answer.result);
    if (failure.meaning != nullptr) {
        screen_format(screen, Colour::kRed, ": %s", failure.meaning);
    }
}

void answer_jsonError(Json& json, const Answer& answer)
{
    const Failure failure = failure_of(answer);
    json_open(json, '{');
    json_key(json, "command");
    json_text(json, failure.name);
    json_key(json, "code");
    json_number(json, answer.code);
    json_key(json, "result");
    json_number(json, answer.result);
    json_key(json, "error");
    failure.meaning != nullptr ? json_text(json, failure.meaning) : json_null(json);
    json_close(json, '}');
}

const Answer& panel_get(Answer& own_id, Answer& panel)
{
    answer_get(own_id, RD_DEVICE_WORD_29);
    if (!answer_isGood(own_id)) {
        return own_id;
    }
    const uint16_t own = record_of<RD_DEVICE_WORD_29>(own_id);
    LedStateRecord asked{};
    asked.ownId = own;
    asked.targetId = own;
    answer_get<RD_LED_STATE>(panel, asked);
    return panel;
}
