#include "tools/maintctl/text.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

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

char text_lower(char character)
{
    return static_cast<char>(character >= 'A' && character <= 'Z' ? character - 'A' + 'a'
                                                                  : character);
}

bool text_same(const char* text, const char* other, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (text_lower(text[i]) != text_lower(other[i])) {
            return false;
        }
        if (text[i] == '\0') {
            break;
        }
    }
    return true;
}

bool text_has(const char* text, const char* part, size_t length)
{
    for (size_t left = strlen(text); left >= length; --left, ++text) {
        if (text_same(text, part, length)) {
            return true;
        }
    }
    return false;
}

const char* error_text(int error)
{
    switch (error) {
    case ENOENT:
        return "No such file or directory";
    case EACCES:
    case EPERM:
        return "Permission denied";
    case EISDIR:
        return "Is a directory";
    case ENOTDIR:
        return "Not a directory";
    case ENOSPC:
        return "No space left on device";
    case EIO:
        return "Input/output error";
    case EBADF:
        return "It is closed";
    default:
        return "The system refuses";
    }
}
