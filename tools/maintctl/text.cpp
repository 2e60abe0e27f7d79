#include "tools/maintctl/text.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

void text_addChar(Text& text, char character)
{
    if (text.length + 1 < text.size) {
        text.text[text.length++] = character;
        text.text[text.length] = '\0';
    }
}

void text_add(Text& text, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const size_t space = text.size - text.length;
    const int length = vsnprintf(text.text + text.length, space, format, arguments);
    va_end(arguments);
    if (length > 0) {
        const auto wanted = static_cast<size_t>(length);
        text.length += wanted < space ? wanted : space - 1;
    }
}

void text_addTyped(Text& text, const char* bytes, size_t count)
{
    constexpr size_t kShown = 60;
    for (size_t i = 0; i < count; ++i) {
        if (i == kShown) {
            text_add(text, "...");
            return;
        }
        const auto byte = static_cast<uint8_t>(bytes[i]);
        if (byte < ' ' || byte >= 0x7F) {
            text_add(text, "\\x%02x", byte);
        } else {
            text_addChar(text, bytes[i]);
        }
    }
}
