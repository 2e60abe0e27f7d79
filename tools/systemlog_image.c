/*
 * systemlog_image: makes and shows system logs, for trying the boot restore without a board.
 *
 * Shares nothing with the library but its public header: the layout is written out here a second
 * time, so that the two check each other.
 */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "maint/system_log.h"
#include "records_checksum.h"
#include "sample_image.h"

enum { HEADER_SIZE = 12, SHOWN_AT_EACH_END = 4, EXIT_USAGE = 2 };

typedef struct Log {
    SystemLogHeader header;
    unsigned char records[SYSTEM_LOG_SLOTS * SYSTEM_LOG_RECORD_SIZE];
    size_t bytes; /* read of the record area */
} Log;

/* Bytes ------------------------------------------------------------------------------------ */

static unsigned get16(const unsigned char* at)
{
    return at[0] | (unsigned)at[1] << 8;
}

static size_t records_size(const Log* log)
{
    return (size_t)log->header.number * SYSTEM_LOG_RECORD_SIZE;
}

/* Reading ---------------------------------------------------------------------------------- */

static int damage(const char* path, const char* fault)
{
    fprintf(stderr, "%s: damaged: %s\n", path, fault);
    return EXIT_FAILURE;
}

/* A folder is one: it can be opened, but not be read. */
static int unreadable(FILE* file, const char* path)
{
    perror(path);
    fclose(file);
    return EXIT_FAILURE;
}

static int log_read(Log* log, const char* path)
{
    unsigned char head[HEADER_SIZE];
    FILE* file = fopen(path, "rb");
    if (file == NULL) {
        perror(path);
        return EXIT_FAILURE;
    }
    memset(log, 0, sizeof *log);
    if (fread(head, sizeof head, 1, file) != 1) {
        if (ferror(file)) {
            return unreadable(file, path);
        }
        fclose(file);
        return damage(path, "shorter than the header of 12 bytes");
    }
    log->bytes = fread(log->records, 1, sizeof log->records, file);
    if (ferror(file)) {
        return unreadable(file, path);
    }
    fclose(file);
    log->header.seq_num = get16(head) | (uint32_t)get16(head + 2) << 16;
    log->header.number = (uint16_t)get16(head + 4);
    log->header.location = (uint16_t)get16(head + 6);
    log->header.version = (uint16_t)get16(head + 8);
    log->header.checksum = (uint16_t)get16(head + 10);
    return EXIT_SUCCESS;
}

/* The slot of the nth record in order of time. */
static unsigned slot_of(const SystemLogHeader* header, unsigned n)
{
    const unsigned oldest = header->number == SYSTEM_LOG_SLOTS ? header->location : 0;
    return (oldest + n) % SYSTEM_LOG_SLOTS;
}

static const unsigned char* record_of(const Log* log, unsigned n)
{
    return log->records + (size_t)slot_of(&log->header, n) * (size_t)SYSTEM_LOG_RECORD_SIZE;
}

/* The form that every record has: time stamp, blank, message, newline. */
static int record_good(const unsigned char* record)
{
    static const char form[] = "0000/00/00 00:00:00 ";
    size_t i;
    for (i = 0; i < sizeof form - 1; ++i) {
        const int digit = record[i] >= '0' && record[i] <= '9';
        if (form[i] == '0' ? !digit : record[i] != (unsigned char)form[i]) {
            return 0;
        }
    }
    return record[SYSTEM_LOG_RECORD_SIZE - 1] == '\n' &&
           memchr(record, '\n', SYSTEM_LOG_RECORD_SIZE - 1) == NULL;
}

/* What keeps the boot restore from reading the records; null: nothing. */
static const char* layout_fault(const Log* log)
{
    if (log->header.number > SYSTEM_LOG_SLOTS) {
        return "number is above 1000";
    }
    if (log->header.version == 0) {
        return "version is 0";
    }
    if (log->bytes < records_size(log)) {
        return "shorter than its number of records";
    }
    return NULL;
}

static int checksum_good(const Log* log)
{
    return records_checksum(log->records, records_size(log)) == log->header.checksum;
}

static void record_show(const Log* log, unsigned n)
{
    const unsigned char* record = record_of(log, n);
    size_t length = SYSTEM_LOG_RECORD_SIZE - 1;
    size_t i;
    while (record[length - 1] == ' ') {
        --length;
    }
    printf("%5u  slot %3u  ", n + 1, slot_of(&log->header, n));
    for (i = 0; i < length; ++i) {
        putchar(record[i] >= ' ' && record[i] != 0x7F ? record[i] : '?');
    }
    putchar('\n');
}

static int log_show(const Log* log, const char* path)
{
    const SystemLogHeader* header = &log->header;
    const unsigned number = header->number;
    const char* fault = layout_fault(log);
    unsigned n;
    printf("%s\n", path);
    printf("  seq_num %lu  number %u  location %u  version %u  checksum 0x%04X\n",
           (unsigned long)header->seq_num, number, header->location, header->version,
           header->checksum);
    if (header->seq_num == SYSTEM_LOG_SEQ_ERASED) {
        puts("  erased flash: no log was ever saved");
        return EXIT_SUCCESS;
    }
    if (fault == NULL && header->location > SYSTEM_LOG_SLOTS) {
        fault = "location is above 1000";
    }
    for (n = 0; fault == NULL && n < number; ++n) {
        if (!record_good(record_of(log, n))) {
            fault = "a record is not a time stamp and one line of text";
        }
    }
    if (fault != NULL) {
        return damage(path, fault);
    }
    if (number == 0) {
        puts("  empty log");
        return EXIT_SUCCESS;
    }
    /* The working file keeps the image's checksum while it grows, so a difference is no fault. */
    printf("  %s; the records' checksum is %s\n",
           number == SYSTEM_LOG_SLOTS ? "full ring" : "ring not yet full",
           checksum_good(log) ? "the header's" : "not the header's");
    for (n = 0; n < number; ++n) {
        if (n < SHOWN_AT_EACH_END || n >= number - SHOWN_AT_EACH_END) {
            record_show(log, n);
        } else if (n == SHOWN_AT_EACH_END) {
            printf("  ...  %u more\n", number - 2U * SHOWN_AT_EACH_END);
        }
    }
    return EXIT_SUCCESS;
}

/* Whether the boot restore takes the file as a flash image. It does not look into the records. */
static int image_check(const Log* log, const char* path)
{
    const char* fault = layout_fault(log);
    if (log->header.seq_num == SYSTEM_LOG_SEQ_ERASED) {
        fprintf(stderr, "%s: erased flash\n", path);
        return EXIT_FAILURE;
    }
    if (fault == NULL && log->header.number > 0 && !checksum_good(log)) {
        fault = "the records' checksum is not the header's";
    }
    if (fault != NULL) {
        return damage(path, fault);
    }
    printf("%s: good image, %u records\n", path, log->header.number);
    return EXIT_SUCCESS;
}

/* Command line ----------------------------------------------------------------------------- */

static const char usage_lines[] =
    "usage: systemlog_image make FILE COUNT [SEQ]   a flash image after COUNT events\n"
    "       systemlog_image show FILE               header, first and last records\n"
    "       systemlog_image check FILE              whether the boot takes the image\n";

static int help(void)
{
    printf("%s\n"
           "Makes, shows and checks images of the system log, as they lie in flash and as the "
           "working file.\n"
           "  FILE    made anew by make, which writes nothing else\n"
           "  COUNT   of sample events, 0 to %d; the image holds the last %d of them\n"
           "  SEQ     which save of the log it is, 0 to %lu (1); %lu is what erased flash reads\n"
           "\n"
           "Exit status: 0; 1 for a file that is damaged, that the boot refuses or that cannot be "
           "read or\nwritten; 2 for wrong use.\n",
           usage_lines, SAMPLE_EVENTS_MAX, SYSTEM_LOG_SLOTS, (unsigned long)SYSTEM_LOG_SEQ_ERASED,
           (unsigned long)SYSTEM_LOG_SEQ_ERASED);
    return EXIT_SUCCESS;
}

/* The mistake, on a line of its own, and how it should be. */
static int wrong_use(const char* mistake, const char* word)
{
    fprintf(stderr, "systemlog_image: %s%s%s\n%s", mistake, word == NULL ? "" : ": ",
            word == NULL ? "" : word, usage_lines);
    return EXIT_USAGE;
}

/* Whether the text is a number up to the limit; says what is wrong if not. */
static int number_parse(const char* what, const char* text, unsigned long limit,
                        unsigned long* number)
{
    char mistake[64];
    char* end = NULL;
    errno = 0;
    *number = strtoul(text, &end, 10);
    if (text[0] < '0' || text[0] > '9' || *end != '\0') {
        snprintf(mistake, sizeof mistake, "%s is not a decimal number", what);
    } else if (errno != 0 || *number > limit) {
        /* A number beyond the type comes as its largest, which may be the limit. */
        snprintf(mistake, sizeof mistake, "%s is above %lu", what, limit);
    } else {
        return 1;
    }
    wrong_use(mistake, text);
    return 0;
}

typedef struct Command {
    const char* name;
    int words_min; /* behind the name */
    int words_max;
    const char* words;
} Command;

static const Command commands[] = {
    {"make", 2, 3, "make takes FILE COUNT [SEQ]"},
    {"show", 1, 1, "show takes one FILE"},
    {"check", 1, 1, "check takes one FILE"},
};

static const Command* command_find(const char* name)
{
    size_t i;
    for (i = 0; i < sizeof commands / sizeof commands[0]; ++i) {
        if (strcmp(name, commands[i].name) == 0) {
            return &commands[i];
        }
    }
    return NULL;
}

int main(int argc, char** argv)
{
    static Log log;
    const Command* command = NULL;
    unsigned long count = 0;
    unsigned long seq = 1;
    if (argc < 2) {
        return wrong_use("a command is missing", NULL);
    }
    if (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0) {
        return help();
    }
    command = command_find(argv[1]);
    if (command == NULL) {
        return wrong_use("no such command", argv[1]);
    }
    if (argc - 2 < command->words_min || argc - 2 > command->words_max) {
        return wrong_use(command->words, NULL);
    }
    if (argv[2][0] == '\0') {
        return wrong_use("the name FILE is empty", NULL);
    }
    if (strcmp(command->name, "make") == 0) {
        if (!number_parse("COUNT", argv[3], SAMPLE_EVENTS_MAX, &count) ||
            (argc == 5 && !number_parse("SEQ", argv[4], SYSTEM_LOG_SEQ_ERASED, &seq))) {
            return EXIT_USAGE;
        }
        if (sampleImage_write(argv[2], (unsigned)count, (uint32_t)seq) != 0) {
            perror(argv[2]);
            return EXIT_FAILURE;
        }
        return EXIT_SUCCESS;
    }
    if (log_read(&log, argv[2]) != EXIT_SUCCESS) {
        return EXIT_FAILURE;
    }
    return strcmp(command->name, "show") == 0 ? log_show(&log, argv[2])
                                              : image_check(&log, argv[2]);
}
