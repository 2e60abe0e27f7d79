#include "sample_image.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "maint/system_log.h"
#include "records_checksum.h"

enum { HEADER_SIZE = 12, STAMP_LENGTH = 19 };

typedef struct Image {
    SystemLogHeader header;
    unsigned char records[SYSTEM_LOG_SLOTS * SYSTEM_LOG_RECORD_SIZE];
} Image;

static void put16(unsigned char* at, unsigned value)
{
    at[0] = (unsigned char)(value & 0xFFU);
    at[1] = (unsigned char)(value >> 8 & 0xFFU);
}

static size_t records_size(const Image* image)
{
    return (size_t)image->header.number * SYSTEM_LOG_RECORD_SIZE;
}

/* What the appliance has to tell; %u is a small number that varies from event to event. */
static const char* const events[] = {
    "link up : LAN port %u (100 Mbps, full duplex)",
    "link down : LAN port %u",
    "PPPoE session up, MTU 1454, attempt %u",
    "PPPoE session down, echo requests unanswered : %u",
    "VPN tunnel to site %02u established",
    "VPN tunnel to site %02u lost, rekeying",
    "clock set by NTP, offset %u ms",
    "configuration saved to flash, generation %u",
    "login on the maintenance console, session %u",
    "bandwidth limit changed, table entry %u",
    "address table full, oldest entry dropped, unit %u",
    "temperature back in range, sensor %u",
    "GetIniFileString : 001 : /tmp/mtu_datasize.%u file open error",
    "cold start, reset cause %u",
};

/* The same sequence at every run and on every machine. */
static unsigned next_random(unsigned* state)
{
    *state = (*state * 1103515245U + 12345U) & 0x7FFFFFFFU;
    return *state >> 12;
}

static void record_write(unsigned char* record, time_t when, const char* message)
{
    char stamp[STAMP_LENGTH + 1];
    char line[SYSTEM_LOG_RECORD_SIZE + 1];
    strftime(stamp, sizeof stamp, "%Y/%m/%d %H:%M:%S", gmtime(&when));
    snprintf(line, sizeof line, "%s %-*.*s\n", stamp, SYSTEM_LOG_MESSAGE_LENGTH,
             SYSTEM_LOG_MESSAGE_LENGTH, message);
    memcpy(record, line, SYSTEM_LOG_RECORD_SIZE);
}

/* Logs `count` events one after another, around the ring as often as it takes. */
static void image_fill(Image* image, unsigned count, uint32_t seq)
{
    unsigned state = 1;
    time_t when = 1141203907; /* 2006-03-01 09:05:07 */
    unsigned i;
    memset(image, 0, sizeof *image);
    for (i = 0; i < count; ++i) {
        char message[SYSTEM_LOG_MESSAGE_LENGTH + 1];
        const char* event = events[next_random(&state) % (sizeof events / sizeof events[0])];
        snprintf(message, sizeof message, event, 1 + next_random(&state) % 8);
        record_write(image->records +
                         (size_t)(i % SYSTEM_LOG_SLOTS) * (size_t)SYSTEM_LOG_RECORD_SIZE,
                     when, message);
        when += (time_t)(1 + next_random(&state) % 7200);
    }
    image->header.seq_num = seq;
    image->header.number = (uint16_t)(count < SYSTEM_LOG_SLOTS ? count : SYSTEM_LOG_SLOTS);
    /* 1 .. 1000 once the ring is full: 1000 goes back to slot 0 at the next write only. */
    image->header.location = (uint16_t)(count == 0 ? 0 : (count - 1) % SYSTEM_LOG_SLOTS + 1);
    image->header.version = SYSTEM_LOG_VERSION;
    image->header.checksum =
        (uint16_t)(count == 0 ? 0 : records_checksum(image->records, records_size(image)));
}

int sampleImage_write(const char* path, unsigned count, uint32_t seq)
{
    static Image image;
    unsigned char head[HEADER_SIZE];
    FILE* file = fopen(path, "wb");
    int good;
    int error;
    if (file == NULL) {
        return -1;
    }
    image_fill(&image, count, seq);
    put16(head, image.header.seq_num & 0xFFFFU);
    put16(head + 2, image.header.seq_num >> 16);
    put16(head + 4, image.header.number);
    put16(head + 6, image.header.location);
    put16(head + 8, image.header.version);
    put16(head + 10, image.header.checksum);
    good = fwrite(head, sizeof head, 1, file) == 1 &&
           fwrite(image.records, 1, records_size(&image), file) == records_size(&image);
    error = errno;
    if (fclose(file) != 0) {
        return -1;
    }
    errno = error;
    return good ? 0 : -1;
}
