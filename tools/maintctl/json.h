// Writes one JSON value, step by step, on one line. Whatever bytes a text has, what is written is
// valid: a byte that is no ASCII character is written as the character of its number (\u0080..).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

struct Json {
    FILE* file;
    bool after_value = false; // a comma goes before the next one
};

void json_open(Json& json, char bracket); // '{' or '['
void json_close(Json& json, char bracket);
void json_key(Json& json, const char* key);
void json_number(Json& json, int64_t number);
void json_bool(Json& json, bool value);
void json_null(Json& json);
void json_text(Json& json, const char* text);
void json_text(Json& json, const char* text, size_t length);
void json_hex(Json& json, const uint8_t* bytes, size_t count); // "0a00"
