/*
 * Saves the system log to the flash as whoever does it on the board must: erases the blocks, then
 * writes the header, with the next number and the checksum of the records, and the records.
 *
 * usage: image_save [STOP]     STOP: where to stop for good, as for a power cut: "erased", "header"
 *                              (after its first four bytes), or the number of records written
 */
#include <fcntl.h>
#include <mtd/mtd-user.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <maint/system_log.h>

#include "records_checksum.h"

static const char flash_path[] = "/dev/mtd_systemlog";

static void fail(const char* what)
{
    perror(what);
    exit(EXIT_FAILURE);
}

static void stop(const char* where)
{
    printf("image_save: stopped: %s\n", where);
    fflush(stdout);
    for (;;) {
        pause();
    }
}

/* The working log, read under its lock. */
static void log_read(SystemLogHeader* header, unsigned char* records)
{
    FILE* log = fopen("/conf/system.log", "rb");
    if (log == NULL || flock(fileno(log), LOCK_EX) != 0 ||
        fread(header, sizeof *header, 1, log) != 1 ||
        fread(records, SYSTEM_LOG_RECORD_SIZE, header->number, log) != header->number) {
        fail("/conf/system.log");
    }
    fclose(log);
}

static uint32_t next_number(int flash)
{
    SystemLogHeader saved;
    if (pread(flash, &saved, sizeof saved, 0) != (ssize_t)sizeof saved) {
        fail(flash_path);
    }
    return saved.seq_num == SYSTEM_LOG_SEQ_ERASED ? 1 : saved.seq_num + 1;
}

static void flash_erase(int flash, size_t size)
{
    mtd_info_t flash_info;
    erase_info_t block;
    if (ioctl(flash, MEMGETINFO, &flash_info) != 0) {
        fail(flash_path);
    }
    block.length = flash_info.erasesize;
    for (block.start = 0; block.start < size; block.start += block.length) {
        if (ioctl(flash, MEMERASE, &block) != 0) {
            fail("erasing the flash");
        }
    }
}

int main(int argc, char** argv)
{
    static unsigned char records[SYSTEM_LOG_SLOTS * SYSTEM_LOG_RECORD_SIZE];
    const char* where = argc == 2 ? argv[1] : "";
    const int flash = open(flash_path, O_RDWR);
    SystemLogHeader header;
    unsigned i;
    if (flash < 0) {
        fail(flash_path);
    }
    log_read(&header, records);
    header.seq_num = next_number(flash);
    header.checksum =
        (uint16_t)records_checksum(records, (size_t)header.number * SYSTEM_LOG_RECORD_SIZE);

    flash_erase(flash, sizeof header + sizeof records);
    if (strcmp(where, "erased") == 0) {
        stop(where);
    }
    if (strcmp(where, "header") == 0) {
        if (write(flash, &header, sizeof header.seq_num) != (ssize_t)sizeof header.seq_num) {
            fail(flash_path);
        }
        stop(where);
    }
    if (write(flash, &header, sizeof header) != (ssize_t)sizeof header) {
        fail(flash_path);
    }
    for (i = 0; i < header.number; ++i) {
        const unsigned char* record = records + (size_t)i * SYSTEM_LOG_RECORD_SIZE;
        if (*where != '\0' && i == (unsigned)atoi(where)) {
            stop(where);
        }
        if (write(flash, record, SYSTEM_LOG_RECORD_SIZE) != SYSTEM_LOG_RECORD_SIZE) {
            fail(flash_path);
        }
    }
    if (close(flash) != 0) {
        fail(flash_path);
    }
    printf("image_save: number %lu, %u records\n", (unsigned long)header.seq_num, header.number);
    return EXIT_SUCCESS;
}
