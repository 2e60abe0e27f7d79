// The texts of calls, as library_calls.h describes them. They are put together in one piece and
// written at once, so that the lines of several processes do not mix.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "catalogue/requests.h"

struct CallText {
    static constexpr size_t kSize = 768;
    static constexpr size_t kRoom = 576; // for what goes into the call; the rest is the result's
    size_t limit;                        // 0: nobody reads it, and nothing is put together
    size_t length;
    char text[kSize];
};

void callText_begin(CallText& text, bool wanted);
void callText_widen(CallText& text); // from here on all of it may be filled
// What goes beyond the limit is left out.
__attribute__((format(printf, 2, 3))) void callText_add(CallText& text, const char* format, ...);
// In quotes, with other bytes than printed characters escaped as in C, the beginning of a long one.
void callText_quote(CallText& text, const char* quoted);
// "O_RDWR|O_NONBLOCK"; "LOCK_EX|LOCK_NB"; "SEEK_SET".
void callText_openFlags(CallText& text, int flags);
void callText_lock(CallText& text, int operation);
void callText_whence(CallText& text, int whence);
// "0x6B42 register read, address=0x0012"; without a description "0x6BFF, 0x00001234".
void callText_request(CallText& text, uint32_t number, const RequestDescription* request,
                      const void* argument);
// What the driver has filled: ", value=0x0a00".
void callText_answer(CallText& text, const RequestDescription& request, const uint8_t* record);
void callText_error(CallText& text, int error); // " ENOENT"

// The text as one line.
void callText_print(CallText& text, FILE* file);
// Any text as one line; false: it could not be written.
bool line_write(const char* text, FILE* file);
