#include "tools/maintctl/result.h"

#include <cstddef>

#include "tools/maintctl/values.h"

namespace
{

void element_json(Json& json, const Field& field, unsigned element, const uint8_t* record)
{
    if (field.kind == Kind::kText) {
        const auto* text = reinterpret_cast<const char*>(record + field.offset);
        json_text(json, text, value_textLength(field, record));
        return;
    }
    const uint32_t number = value_isNumber(field) ? value_number(field, element, record) : 0;
    const bool named = field.kind == Kind::kCode && value_codeName(field, number) != nullptr;
    if (value_isNumber(field) && !named) {
        json_number(json, number);
        return;
    }
    Field one = field; // the element alone, as it is written elsewhere
    one.offset = static_cast<uint16_t>(field.offset + element * field.width);
    one.count = 1;
    char text[kValueMax];
    value_print(one, record, text);
    json_text(json, text);
}

} // namespace

const char* result_meaning(const CommandDescription& command, int32_t result)
{
    for (const ResultMeaning& known : command.results()) {
        if (known.result == result) {
            return known.meaning;
        }
    }
    return result >= 0 ? "the driver's own answer" : "the driver's own error";
}

void value_json(Json& json, const Field& field, const uint8_t* record)
{
    if (field.count == 1) {
        element_json(json, field, 0, record);
        return;
    }
    json_open(json, '[');
    for (unsigned element = 0; element < field.count; ++element) {
        element_json(json, field, element, record);
    }
    json_close(json, ']');
}

void result_json(Json& json, const CommandDescription& command, int32_t result,
                 const uint8_t* record)
{
    command_json(json, command);
    outcome_json(json, command, result, record);
}

void command_json(Json& json, const CommandDescription& command)
{
    json_key(json, "command");
    json_text(json, command.name);
    json_key(json, "code");
    json_number(json, command.code);
}

void outcome_json(Json& json, const CommandDescription& command, int32_t result,
                  const uint8_t* record)
{
    json_key(json, "result");
    json_number(json, result);
    json_key(json, "record");
    json_hex(json, record, command.record);
    json_key(json, "fields");
    json_open(json, '{');
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_in(command.in | command.out, i)) {
            json_key(json, command.fields()[i].name);
            value_json(json, command.fields()[i], record);
        }
    }
    json_close(json, '}');
    if (result < 0) {
        json_key(json, "error");
        json_text(json, result_meaning(command, result));
    }
}
