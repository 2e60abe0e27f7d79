/*
 * A program that uses a unit by the library's commands, alone or among others.
 *   user_program many INDEX COUNT  so many commands, on a pair of its own and on things that all share;
 *                                  waits for a byte on standard input before each kPart of them. Then
 *                                  it prints a number that its answers make.
 *   user_program write INDEX FILE  writes 1, 2, 3, ... for ever. FILE is shared memory: what it found
 *                                  at first, and the last write that was answered.
 *   user_program read INDEX        prints the number that is there
 *   user_program own NUMBER        is on the unit with this identifier; writes to it, and looks at it
 *                                  again
 * It ends with another status than 0 when an answer is not right.
 */
#include <fcntl.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "maint/commands/address_pair.h"
#include "maint/commands/device_word.h"
#include "maint/commands/register.h"
#include "maint/fpga.h"

enum { kPart = 200, kSharedPair = 63, kSharedRegister = 0x100 };

/* The same number in both addresses: an answer made of two is seen. */
static AddressPair pair_of(uint32_t index, uint32_t number)
{
    AddressPair pair = {.index = index};
    memcpy(pair.address, &number, sizeof number);
    memcpy(pair.address_6, &number, sizeof number);
    pair.address_6[4] = pair.address[0];
    pair.address_6[5] = pair.address[1];
    return pair;
}

static int pair_put(uint32_t index, uint32_t number)
{
    const AddressPair pair = pair_of(index, number);
    return maint_wr_addr_pair(&pair) == DEVICE_OK;
}

static uint64_t answers = 0xCBF29CE484222325;

static void answer_add(const void* bytes, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        answers = (answers ^ ((const uint8_t*)bytes)[i]) * 0x100000001B3;
    }
}

static int pair_get(uint32_t index, uint32_t* number)
{
    AddressPair pair = {.index = index};
    if (maint_rd_addr_pair(&pair) != DEVICE_OK) {
        return 0;
    }
    memcpy(number, pair.address, sizeof *number);
    answer_add(pair.address, sizeof pair.address);
    answer_add(pair.address_6, sizeof pair.address_6);
    const AddressPair whole = pair_of(index, *number);
    return memcmp(&pair, &whole, sizeof pair) == 0;
}

/* Both halves of a shared word are alike. */
static int word_put(uint32_t number)
{
    const RegisterValue value = {.address = kSharedRegister,
                                 .value = (uint16_t)((number & 0xFF) * 0x101)};
    return maint_wr_register(&value) == DEVICE_OK;
}

static int word_get(void)
{
    RegisterValue value = {.address = kSharedRegister, .value = 0x1234};
    const int good = maint_rd_register(&value) == DEVICE_OK;
    answer_add(&value.value, sizeof value.value);
    return good && value.value >> 8 == (value.value & 0xFF);
}

static int many(uint32_t index, uint32_t count)
{
    for (uint32_t i = 0; i < count; i += 4) {
        char go = 0;
        if (i % kPart == 0 && read(STDIN_FILENO, &go, 1) != 1) {
            return 2;
        }
        uint32_t seen = 0;
        if (!pair_put(index, i) || !pair_get(index, &seen) || seen != i) {
            return 3;
        }
        if (i % 8 == 0 ? !pair_put(kSharedPair, index << 16 | i) : !word_put(i)) {
            return 4;
        }
        if (i % 8 == 0 ? !pair_get(kSharedPair, &seen) : !word_get()) {
            return 5;
        }
    }
    return printf("%016" PRIX64 "\n", answers) > 0 ? 0 : 1;
}

static int write_forever(uint32_t index, const char* path)
{
    const int file = open(path, O_RDWR);
    volatile uint32_t* told =
        mmap(NULL, 2 * sizeof *told, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    uint32_t number = 0;
    if (told == MAP_FAILED || !pair_get(index, &number)) {
        return 1;
    }
    told[1] = number;
    told[0] = number;
    while (pair_put(index, number + 1)) {
        ++number;
        told[1] = number;
    }
    return 2;
}

static int own(uint32_t number)
{
    char text[16];
    snprintf(text, sizeof text, "A%08u", (unsigned)number);
    FILE* file = fopen("/tmp/serialno", "w");
    if (file == NULL || fputs(text, file) < 0 || fclose(file) != 0) {
        return 2;
    }
    for (uint32_t i = 0; i < 20; ++i) {
        uint32_t seen = 0;
        uint16_t identifier = 0;
        if (!pair_put(i, number << 8 | i) || !pair_get(i, &seen) || seen != (number << 8 | i) ||
            maint_rd_device_word_29(&identifier) != DEVICE_OK || identifier != number) {
            return 3;
        }
    }
    char seen[16] = "";
    file = fopen("/tmp/serialno", "r");
    return file != NULL && fgets(seen, sizeof seen, file) != NULL && strcmp(seen, text) == 0 ? 0
                                                                                             : 4;
}

int main(int argc, char** argv)
{
    const char* verb = argc > 2 ? argv[1] : "";
    const uint32_t number = argc > 2 ? (uint32_t)strtoul(argv[2], NULL, 10) : 0;
    if (strcmp(verb, "many") == 0 && argc == 4) {
        return many(number, (uint32_t)strtoul(argv[3], NULL, 10));
    }
    if (strcmp(verb, "write") == 0 && argc == 4) {
        return write_forever(number, argv[3]);
    }
    if (strcmp(verb, "own") == 0) {
        return own(number);
    }
    if (strcmp(verb, "read") == 0) {
        uint32_t seen = 0;
        return pair_get(number, &seen) && printf("%" PRIu32 "\n", seen) > 0 ? 0 : 3;
    }
    return 64;
}
