// Text put together piece by piece in a fixed buffer, always with a terminating zero. What does not
// fit is left out.
#pragma once

#include <cstddef>

struct Text {
    char* text;
    size_t size;
    size_t length = 0;
};

// Text in `buffer`, empty at first.
template <size_t kSize> Text text_in(char (&buffer)[kSize])
{
    buffer[0] = '\0';
    return {.text = buffer, .size = kSize};
}

// Takes away what stands behind the first `length` characters.
inline void text_cut(Text& text, size_t length)
{
    text.length = length;
    text.text[length] = '\0';
}

void text_addChar(Text& text, char character);

[[gnu::format(printf, 2, 3)]] void text_add(Text& text, const char* format, ...);

// Bytes that somebody typed, for a message: on one line, whatever they are. What is not a plain
// character is written as \xNN, and of many bytes only the first.
void text_addTyped(Text& text, const char* bytes, size_t count);

// The C library's own have tables of languages and messages behind them, which are large on a board.
char text_lower(char character);
bool text_same(const char* text, const char* other, size_t length); // capital letters or not
bool text_has(const char* text, const char* part, size_t length);   // likewise
const char* error_text(int error);                                  // of errno, for files
