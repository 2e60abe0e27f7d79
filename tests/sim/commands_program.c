/*
 * Runs the commands that it is told on standard input, a line each: number and record in hexadecimal.
 * Answers on descriptor 3, since the library prints on standard output: the result, the record, and
 * what lies before and behind it. It ends with its input.
 */
#define _DEFAULT_SOURCE /* usleep */

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "maint/fpga.h"

enum { kGuard = 8, kRecordMost = 1024 };

/* Nobody waits for the pauses between requests. */
unsigned sleep(unsigned seconds)
{
    (void)seconds;
    return 0;
}

int usleep(useconds_t microseconds)
{
    (void)microseconds;
    return 0;
}

int main(void)
{
    static char line[4 * kRecordMost];
    static uint64_t aligned[(kGuard + kRecordMost + kGuard) / sizeof(uint64_t)];
    unsigned char* const memory = (unsigned char*)aligned;
    while (fgets(line, sizeof line, stdin) != NULL) {
        char* place = NULL;
        const unsigned long command = strtoul(line, &place, 16);
        memset(memory, 0xA5, sizeof aligned);
        size_t size = 0;
        unsigned byte = 0;
        place += *place == ' ';
        while (size < kRecordMost && sscanf(place, "%2x", &byte) == 1) {
            memory[kGuard + size] = (unsigned char)byte;
            ++size;
            place += 2;
        }
        const int32_t result = Fpga_Register_Set((DeviceCommandCode)command, memory + kGuard);
        int length = snprintf(line, sizeof line, "%d ", (int)result);
        for (size_t i = 0; i < kGuard + size + kGuard; ++i) {
            length += snprintf(line + length, sizeof line - (size_t)length, "%02X", memory[i]);
        }
        line[length] = '\n';
        if (write(3, line, (size_t)length + 1) != length + 1) {
            return 1;
        }
    }
    return 0;
}
