// What the library asks of the system goes through here: the library's calls are renamed when this
// program is linked, and end in library_calls.cpp. There they are shown (--trace), kept from changing
// anything (--dry-run) or listened to, and handed on. What the library prints goes to `console`.
//
// The trace has one line for each call, when it has returned:
//
//     open("/dev/fpga", O_RDWR|O_NONBLOCK) = 3  12 us
//     ioctl(/dev/fpga, 0x6B42 register read, address=0x0012) = 0, value=0x0a00  8 us
//     ioctl(/dev/fpga, 0x6B04 word 03 write, 0x1234) = -1 EIO  8 us
//     flock(/tmp/Saveing, LOCK_EX) = 0  2 us
//     fread(/conf/system.log, 1 x 12 bytes) = 1  5 us
//     fopen("/conf/config", "r") = null ENOENT  9 us
//     puts("fileAccess_lock : 001 : /tmp/Saveing file open error") = 53  4 us
//
//   - The call's name comes first, the microseconds last. The result stands behind the last ") = ":
//     what the call returned; of fopen the descriptor, of fgets the bytes of the line; or "null". If
//     the call failed and set errno, its name follows.
//   - An open file or device is named by its path. A number there is a descriptor whose path is not
//     known, such as one that is closed.
//   - A request has its number, its name and its argument: the fields of its record that the driver
//     does not fill, or the value. Behind the result stand the fields that the driver has filled.
//     Words and addresses are hexadecimal, indexes and times decimal, bytes pairs of digits, at most
//     16 of them, then "..". Spare bytes are left out while they are 0; so is any field but the first
//     of a record with more than eight.
//   - Bytes that are no printed characters of ASCII are escaped as in C. A text that goes on has ".."
//     behind it.
//   - In a dry run "not sent" or "not done" stands before the microseconds of what was held back; the
//     result is what success would have been.
//
// A dry run holds back, and shows on `console`:
//
//     not sent: ioctl(/dev/fpga, 0x6B43 register write, address=0x0012 value=0x0a00)
//     not done: fopen("/tmp/mtu_datasize", "w+")
//
//   - requests that change a device, and those that nobody has described: answered with 0. A counter
//     that restarts when it is read is such a change, and reads as the caller's record has it;
//   - setting the clock, removing and writing files: answered as done. A file that would be created or
//     cut is not opened; what is written goes to /dev/null. Only the save lock is made as usual: it
//     is an empty file that is locked.
// It does not sleep either, without a word on the console.
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
