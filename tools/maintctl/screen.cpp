#include "tools/maintctl/screen.h"

#include <cstdarg>

namespace
{

// Those that terminals of any age know; "1;30" would be invisible on some of them.
const char* colour_code(Colour colour)
{
    switch (colour) {
    case Colour::kDim:
        return "2";
    case Colour::kGreen:
        return "32";
    case Colour::kYellow:
        return "33";
    case Colour::kRed:
        return "31";
    default:
        return "0";
    }
}

} // namespace

void screen_put(Screen& screen, Colour colour, const char* text)
{
    const bool coloured = screen.colours && colour != Colour::kPlain && text[0] != '\0' &&
                          screen.column < kScreenColumns;
    if (coloured) {
        fprintf(screen.file, "\x1B[%sm", colour_code(colour));
    }
    for (; *text != '\0' && screen.column < kScreenColumns; ++text) {
        fputc(*text >= ' ' && *text <= '~' ? *text : '?', screen.file);
        ++screen.column;
    }
    if (coloured) {
        fputs("\x1B[0m", screen.file);
    }
}

void screen_format(Screen& screen, Colour colour, const char* format, ...)
{
    char text[2 * kScreenColumns];
    va_list values;
    va_start(values, format);
    vsnprintf(text, sizeof text, format, values);
    va_end(values);
    screen_put(screen, colour, text);
}

void screen_fill(Screen& screen, unsigned column)
{
    while (screen.column < column && screen.column < kScreenColumns) {
        screen_put(screen, Colour::kPlain, " ");
    }
}

void screen_endRow(Screen& screen)
{
    fputc('\n', screen.file);
    screen.column = 0;
}
