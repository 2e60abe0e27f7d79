/*
 * Makes the trials of a file again, on the real devices, and prints what comes of them in the
 * file's own form (it stands in tests/device/device_trials_test.cpp): done as it should be, both
 * are alike to the byte.
 *
 * usage: trials FILE [PROGRAM JSON_FILE]
 *
 * With PROGRAM, each command is run by "PROGRAM --json --hex COMMAND record=BYTES" instead of by a
 * call of the library. What comes of it must be the same; the program's lines go to JSON_FILE.
 */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <maint/fpga.h>

#include "device_model.h"

enum { GUARD = 8, GUARD_BYTE = 0xA5, RECORD_MAX = 496, FILES_MAX = 16, LINE_MAX_LENGTH = 4096 };

/* What a trial starts from. */
static struct {
    unsigned command;
    size_t record;
    unsigned char memory[GUARD + RECORD_MAX + GUARD];
    char files[FILES_MAX][64];
    size_t file_count;
} trial __attribute__((aligned(8)));

/* Files whose content tells the time: their size alone is compared. */
static const char* const logs[] = {"/conf/system.log", "/conf/user.log"};

static void fail(const char* what)
{
    fprintf(stderr, "trials: %s\n", what);
    exit(EXIT_FAILURE);
}

static size_t pairs_read(const char* text, unsigned char* bytes, size_t limit)
{
    size_t count = 0;
    unsigned value;
    while (sscanf(text + 2 * count, "%2x", &value) == 1) {
        if (count == limit) {
            fail("too many bytes");
        }
        bytes[count++] = (unsigned char)value;
    }
    return count;
}

static void pairs_print(const unsigned char* bytes, size_t count)
{
    size_t i;
    for (i = 0; i < count; ++i) {
        printf("%02X", bytes[i]);
    }
}

/* "PATH none", "PATH SIZE PAIRS" */
static void file_put(const char* line)
{
    static unsigned char bytes[RECORD_MAX];
    char* path = trial.files[trial.file_count];
    char size[8];
    int end = 0;
    if (trial.file_count++ == FILES_MAX || sscanf(line, "%63s %7s%n", path, size, &end) != 2) {
        fail(line);
    }
    unlink(path);
    if (strcmp(size, "none") != 0) {
        FILE* file = fopen(path, "wb");
        const size_t count = line[end] == ' ' ? pairs_read(line + end + 1, bytes, RECORD_MAX) : 0;
        if (file == NULL || count != (size_t)atoi(size) || fwrite(bytes, 1, count, file) != count ||
            fclose(file) != 0) {
            fail(line);
        }
    }
}

static int tells_time(const char* path)
{
    return strcmp(path, logs[0]) == 0 || strcmp(path, logs[1]) == 0;
}

static void file_print(const char* path)
{
    static unsigned char bytes[LINE_MAX_LENGTH];
    FILE* file = fopen(path, "rb");
    size_t count;
    printf("left %s ", path);
    if (file == NULL) {
        printf("none\n");
        return;
    }
    count = fread(bytes, 1, sizeof bytes, file);
    fclose(file);
    printf("%lu", (unsigned long)count);
    if (!tells_time(path)) {
        printf(" ");
        pairs_print(bytes, count);
    }
    printf("\n");
}

static void guards_check(void)
{
    size_t i;
    for (i = 0; i < sizeof trial.memory; ++i) {
        const int guard = i < GUARD || i >= GUARD + trial.record;
        if (guard && trial.memory[i] != GUARD_BYTE) {
            printf("touches byte %ld of the record\n", (long)i - GUARD);
        }
    }
}

/* What runs the commands instead of the library, and where its lines go. */
static const char* program;
static FILE* program_lines;

/* The program's line tells result and record. */
static int32_t program_run(void)
{
    static char text[2 * LINE_MAX_LENGTH];
    static const char record_key[] = "\"record\":\"";
    const char* result;
    const char* record;
    FILE* line;
    size_t i;
    int length = sprintf(text, "%s --json --hex 0x%04X", program, trial.command);
    if (trial.record > 0) {
        length += sprintf(text + length, " record=");
    }
    for (i = 0; i < trial.record; ++i) {
        length += sprintf(text + length, "%02x", trial.memory[GUARD + i]);
    }
    sprintf(text + length, " 2>/dev/null");
    line = popen(text, "r");
    if (line == NULL || fgets(text, sizeof text, line) == NULL) {
        fail("the program says nothing");
    }
    pclose(line);
    fputs(text, program_lines);
    result = strstr(text, "\"result\":");
    record = strstr(text, record_key);
    if (result == NULL || record == NULL) {
        fail(text);
    }
    record += sizeof record_key - 1;
    for (i = 0; i < trial.record; ++i) {
        unsigned value;
        if (sscanf(record + 2 * i, "%2x", &value) != 1) {
            fail("the program's record is too short");
        }
        trial.memory[GUARD + i] = (unsigned char)value;
    }
    return (int32_t)atol(result + strlen("\"result\":"));
}

/* Two commands leave the device open when their request fails. */
static void close_what_was_left(int first)
{
    int descriptor;
    for (descriptor = first; descriptor < first + 4; ++descriptor) {
        close(descriptor);
    }
}

/*
 * What the devices saw. Two commands leave the device open when they fail; at a program's end the
 * kernel closes it, which a call of the library does not see.
 */
static void saw_print(int32_t result)
{
    char* saw = model_saw(0);
    const int closed_late =
        program != NULL && result < 0 && (trial.command == 0x0040 || trial.command == 0x0041);
    const char* line;
    for (line = strtok(saw, "\n"); line != NULL; line = strtok(NULL, "\n")) {
        if (!closed_late || strncmp(line, "close ", 6) != 0) {
            printf("saw %s\n", line);
        }
    }
    free(saw);
}

static void trial_make(void)
{
    const int first = dup(0);
    int32_t result;
    size_t i;
    close(first);
    result =
        program == NULL ? Fpga_Register_Set(trial.command, trial.memory + GUARD) : program_run();
    saw_print(result);
    close_what_was_left(first);
    printf("result %ld\ngives ", (long)result);
    pairs_print(trial.memory + GUARD, trial.record);
    printf("\n");
    guards_check();
    for (i = 0; i < trial.file_count; ++i) {
        file_print(trial.files[i]);
    }
}

static int begins(const char* line, const char* word)
{
    return strncmp(line, word, strlen(word)) == 0;
}

/* One line of the file; those of the outcome are left out, to be printed as they come. */
static void line_take(const char* line)
{
    unsigned state;
    if (*line == '\0') {
        trial_make();
    } else if (begins(line, "saw ") || begins(line, "result ") || begins(line, "gives ") ||
               begins(line, "left ")) {
        return;
    } else if (sscanf(line, "trial %x", &trial.command) == 1) {
        trial.file_count = 0;
    } else if (sscanf(line, "state %u", &state) == 1) {
        model_state(state);
    } else if (begins(line, "answers ")) {
        model_tell(line);
    } else if (begins(line, "file ")) {
        file_put(line + 5);
    } else if (begins(line, "record ")) {
        memset(trial.memory, GUARD_BYTE, sizeof trial.memory);
        trial.record = pairs_read(line + 7, trial.memory + GUARD, RECORD_MAX);
    } else {
        fail(line);
    }
    printf("%s\n", line);
}

int main(int argc, char** argv)
{
    static char line[LINE_MAX_LENGTH];
    FILE* file = argc == 2 || argc == 4 ? fopen(argv[1], "r") : NULL;
    if (file == NULL) {
        fail("usage: trials FILE [PROGRAM JSON_FILE]");
    }
    if (argc == 4) {
        program = argv[2];
        program_lines = fopen(argv[3], "w");
        if (program_lines == NULL) {
            fail(argv[3]);
        }
    }
    while (fgets(line, sizeof line, file) != NULL) {
        line[strcspn(line, "\n")] = '\0';
        line_take(line);
    }
    fclose(file);
    if (program_lines != NULL && fclose(program_lines) != 0) {
        fail(argv[3]);
    }
    return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
