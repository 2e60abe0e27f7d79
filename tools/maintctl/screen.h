// Rows of a screen: none is wider than 80 columns, and colours are only where somebody sees them.
#pragma once

#include <cstdint>
#include <cstdio>

constexpr unsigned kScreenColumns = 80;
constexpr unsigned kScreenRows = 24; // one of them is left to the shell's prompt

enum class Colour : uint8_t { kPlain, kDim, kGreen, kYellow, kRed };

struct Screen {
    FILE* file;
    bool colours;
    unsigned column = 0; // where the next character goes
};

// What does not fit into the row is left out; what is no printable ASCII is shown as '?'.
void screen_put(Screen& screen, Colour colour, const char* text);
__attribute__((format(printf, 3, 4))) void screen_format(Screen& screen, Colour colour,
                                                         const char* format, ...);
void screen_fill(Screen& screen, unsigned column); // blanks, up to that column
void screen_endRow(Screen& screen);
