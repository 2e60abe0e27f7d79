/*
 * Limits the line, and says what the device holds then.
 *
 * usage: limit_line [IDENTIFIER]     0 to 20; a greater one is a higher limit
 */
#include <stdio.h>
#include <stdlib.h>

#include <maint/commands/bandwidth.h>

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
        limit = (uint16_t)strtoul(argv[1], NULL, 10);
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
