#include "tools/maintctl/json.h"

#include <cinttypes>
#include <cstring>

namespace
{

void separate(Json& json)
{
    if (json.after_value) {
        fputc(',', json.file);
    }
    json.after_value = true;
}

} // namespace

void json_open(Json& json, char bracket)
{
    separate(json);
    fputc(bracket, json.file);
    json.after_value = false;
}

void json_close(Json& json, char bracket)
{
    fputc(bracket, json.file);
    json.after_value = true;
}

void json_key(Json& json, const char* key)
{
    json_text(json, key);
    fputc(':', json.file);
    json.after_value = false;
}

void json_number(Json& json, int64_t number)
{
    separate(json);
    fprintf(json.file, "%" PRId64, number);
}

void json_bool(Json& json, bool value)
{
    separate(json);
    fputs(value ? "true" : "false", json.file);
}

void json_null(Json& json)
{
    separate(json);
    fputs("null", json.file);
}

void json_text(Json& json, const char* text)
{
    json_text(json, text, strlen(text));
}

void json_text(Json& json, const char* text, size_t length)
{
    separate(json);
    fputc('"', json.file);
    for (size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        if (byte == '"' || byte == '\\') {
            fprintf(json.file, "\\%c", byte);
        } else if (byte < ' ' || byte >= 0x7F) {
            fprintf(json.file, "\\u%04x", byte);
        } else {
            fputc(byte, json.file);
        }
    }
    fputc('"', json.file);
}

void json_hex(Json& json, const uint8_t* bytes, size_t count)
{
    separate(json);
    fputc('"', json.file);
    for (size_t i = 0; i < count; ++i) {
        fprintf(json.file, "%02x", bytes[i]);
    }
    fputc('"', json.file);
}
