// The flash log image and the working file: reading the headers, creating and rebuilding the file.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "log/locked_file.h"
#include "log/record_checksum.h"
#include "log/report.h"
#include "log/system_log_layout.h"

namespace
{

struct LogImage {
    SystemLogHeader header;
    std::array<uint8_t, size_t{SYSTEM_LOG_SLOTS} * SYSTEM_LOG_RECORD_SIZE> records;
};

size_t records_size(const SystemLogHeader& header)
{
    return size_t{header.number} * SYSTEM_LOG_RECORD_SIZE;
}

void header_print(const SystemLogHeader& header)
{
    printf("head.seq_num  : %d\n", static_cast<int32_t>(header.seq_num));
    printf("head.number   : %d\n", header.number);
    printf("head.location : %d\n", header.location);
    printf("head.version  : %d\n", header.version);
    printf("head.checksum : %d\n", header.checksum);
}

int32_t image_load(LogImage& image)
{
    LockedFile flash = lockedFile_open(kFlashImagePath, "rb", LOG_SINK_BOTH,
                                       "systemLogFileMake : 001 : %s file open error",
                                       "systemLogFileMake : 002 : %s file lock error");
    lockedFile_read(flash, &image.header, sizeof image.header,
                    "systemLogFileMake : 003 : %s file header read error");
    if (image.header.number > SYSTEM_LOG_SLOTS) {
        lockedFile_fail(flash, "systemLogFileMake : 004 : %s file header data error");
    }
    if (image.header.version == 0) {
        lockedFile_fail(flash, "systemLogFileMake : 005 : %s file header version error");
    }
    if (lockedFile_good(flash)) {
        header_print(image.header);
    }
    if (image.header.number > 0) {
        // Two failures share number 005; both texts are kept.
        lockedFile_read(flash, image.records.data(), records_size(image.header),
                        "systemLogFileMake : 005 : %s file log data error");
        if (!lockedFile_good(flash)) {
            return -1;
        }
        const uint16_t checksum = recordChecksum_compute(
            image.records.data(), static_cast<int32_t>(records_size(image.header)));
        printf("FROM header   checksum : %d\n", image.header.checksum);
        printf("FROM sytemlog checksum : %d\n", checksum);
        if (checksum != image.header.checksum) {
            lockedFile_fail(flash, "systemLogFileMake : 006 : %s file checksum error");
            return -2;
        }
    }
    return lockedFile_close(flash);
}

int32_t image_store(const LogImage& image)
{
    LockedFile log = lockedFile_open(kSystemLogPath, "w+b", LOG_SINK_BOTH,
                                     "systemLogFileMake : 007 : %s file create error",
                                     "systemLogFileMake : 008 : %s file lock error");
    lockedFile_write(log, &image.header, sizeof image.header,
                     "systemLogFileMake : 009 : %s file header write error");
    if (image.header.number > 0) {
        lockedFile_write(log, image.records.data(), records_size(image.header),
                         "systemLogFileMake : 010 : %s file write error");
    }
    return lockedFile_close(log);
}

} // namespace

int32_t read_systemlog_header(SystemLogHeader* out)
{
    const int flash = open(kFlashImagePath, O_RDONLY);
    if (flash < 0) {
        report_format(LOG_SINK_BOTH, "read_systemlog_header : 001 : %s file open error",
                      kFlashImagePath);
        return -1;
    }
    const ssize_t got = read(flash, out, sizeof *out);
    close(flash);
    if (got != sizeof *out) {
        report_format(LOG_SINK_BOTH, "read_systemlog_header : 002 : %s file header read error",
                      kFlashImagePath);
        return -1;
    }
    return 0;
}

// Reports to the console only: the file that it could not read is the system log itself.
int32_t zev_maintlog_head_read(SystemLogHeader* out)
{
    LockedFile log = lockedFile_open(kSystemLogPath, "rb", LOG_SINK_CONSOLE,
                                     "zev_maintlog_head_read : 001 : %s file open error",
                                     "zev_maintlog_head_read : 002 : %s file lock error");
    // The text says "write" although a read failed; it is kept.
    lockedFile_read(log, out, sizeof *out,
                    "zev_maintlog_head_read : 003 : %s file header write error");
    return lockedFile_close(log);
}

int32_t systemLogFileInit()
{
    constexpr SystemLogHeader kFresh{0, 0, 0, SYSTEM_LOG_VERSION, 0};
    LockedFile log = lockedFile_open(kSystemLogPath, "w+b", LOG_SINK_BOTH,
                                     "systemLogFileInit : 001 : %s file open error",
                                     "systemLogFileInit : 002 : %s file lock error");
    lockedFile_write(log, &kFresh, sizeof kFresh,
                     "systemLogFileInit : 003 : %s file header write error");
    return lockedFile_close(log);
}

int32_t systemLogFileMake()
{
    LogImage image{};
    if (const int32_t status = image_load(image); status != 0) {
        return status;
    }
    return image_store(image);
}
