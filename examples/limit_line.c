/*
 * Limits the line, and says what the device holds then.
 *
 * usage: limit_line [IDENTIFIER]     0 to 20; a greater one is a higher limit
 */
#include <ctype.h>
#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

#include <maint/commands/bandwidth.h>

/* A whole number from 0 to the most; false for anything else. */
static bool number_parse(const char* text, unsigned long most, unsigned long* number)
{
    char* end;
    errno = 0;
    *number = strtoul(text, &end, 10);
    return isdigit((unsigned char)text[0]) && *end == '\0' && errno == 0 && *number <= most;
}

/* What a result of the two commands means. */
static const char* meaning(int32_t result)
{
    switch (result) {
    case DEVICE_OPEN_FAILED:
        return "the device cannot be opened";
    case DEVICE_READ_FAILED:
        return "the PHY or the register cannot be read";
    case DEVICE_UNMAPPED:
        return "the register holds no limit of the table";
    case DEVICE_WRITE_FAILED:
        return "the register cannot be written";
    case DEVICE_BAD_ARGUMENT:
        return "there is no such limit";
    default:
        return "done";
    }
}

int main(int argc, char** argv)
{
    uint16_t limit = 0;
    int32_t result = DEVICE_OK;
    if (argc > 1) {
        unsigned long number;
        /* Which limits there are, the library knows; but a number of 16 bits it must be. */
        if (argc > 2 || !number_parse(argv[1], UINT16_MAX, &number)) {
            fprintf(stderr, "usage: limit_line [IDENTIFIER]\n");
            return EXIT_FAILURE;
        }
        limit = (uint16_t)number;
        result = maint_wr_bandwidth(&limit);
    }
    if (result == DEVICE_OK) {
        result = maint_rd_bandwidth(&limit);
    }
    if (result != DEVICE_OK) {
        fprintf(stderr, "limit_line: %s (%d)\n", meaning(result), (int)result);
        return EXIT_FAILURE;
    }
    printf("the limit is %d\n", limit);
    return EXIT_SUCCESS;
}
