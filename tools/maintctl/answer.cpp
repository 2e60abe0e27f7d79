#include "tools/maintctl/answer.h"

#include <bit>

#include "catalogue/catalogue.h"
#include "maint/commands/device_word.h"
#include "maint/commands/led.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/text.h"

namespace
{

struct Failure {
    const char* name;
    const char* meaning;
    const char* place; // what the command opens first
};

const char* place_first(const CommandDescription& command)
{
    const Places places = command.reads != 0 ? command.reads : command.changes;
    return places == 0 ? nullptr : place_name(static_cast<Place>(std::countr_zero(places)));
}

Failure failure_of(const Answer& answer)
{
    const CommandDescription* command = command_find(answer.code);
    if (command == nullptr) {
        return {"?", nullptr, nullptr};
    }
    return {command->name, result_meaning(*command, answer.result), place_first(*command)};
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
    char buffer[2 * kScreenColumns];
    Text text = text_in(buffer);
    text_add(text, "%s %d", failure.name, answer.result);
    // A description says "the device" and "the file".
    if (answer.result == DEVICE_OPEN_FAILED && failure.place != nullptr) {
        text_add(text, ", %s", failure.place);
    }
    if (failure.meaning != nullptr) {
        text_add(text, ": %s", failure.meaning);
    }
    const unsigned room = kScreenColumns - screen.column;
    if (text.length > room) {
        strcpy(buffer + room - 3, "...");
    }
    screen_put(screen, Colour::kRed, buffer);
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
