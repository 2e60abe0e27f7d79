// What the library asks of the system goes through here: the library's calls are renamed when this
// program is linked, and end in library_calls.cpp. There they are shown (--trace), kept from changing
// anything (--dry-run) or listened to, and handed on. What the library prints goes to `console`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

// A request that a device has answered.
struct AnsweredRequest {
    const char* device;    // "/dev/fpga", "/dev/rtc"
    uint32_t request;      // 0x6B42
    const uint8_t* before; // what the driver got, `size` bytes; null: a value or nothing
    const uint8_t* after;  // what it left there
    size_t size;           // 0 for a request that takes a value or nothing
    uint32_t value;        // of a request that takes a value
    int32_t result;
    int error; // errno, where the result is negative
};

struct LibraryCalls {
    FILE* console;         // what the library prints
    FILE* trace = nullptr; // a line for each call; null: none
    bool dry_run = false; // what would change a device or a file is shown on `console` and not done
    void (*answered)(void* listener, const AnsweredRequest& request) = nullptr;
    void* listener = nullptr;
};

// How the calls are treated from now on; null: as the library makes them, printing on the standard
// output. The structure is the caller's and stays where it is.
void libraryCalls_set(const LibraryCalls* calls);
const LibraryCalls* libraryCalls_get();

// How many requests and writes a dry run has held back since libraryCalls_set.
unsigned libraryCalls_held();
