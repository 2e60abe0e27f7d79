// The rebuild of the working file from the flash image.
#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "log/log_sweep.h"
#include "maint/system_log.h"

namespace
{

using namespace std::string_literals;

using FileMake = BoardTest;

TEST_F(FileMake, CopiesTheVerifiedImage)
{
    board.file_put(kFlashImage, sample_image());
    ASSERT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
    EXPECT_EQ(board.console, kSampleHeaderLines + kSampleChecksumLines);
    EXPECT_EQ(
        board.calls,
        (Trace{"fopen /dev/mtd_systemlog rb", "flock /dev/mtd_systemlog LOCK_EX",
               "fread /dev/mtd_systemlog 12", "printf head.seq_num  : 7",
               "printf head.number   : 3", "printf head.location : 5", "printf head.version  : 1",
               "printf head.checksum : 51917", "fread /dev/mtd_systemlog 300",
               "printf FROM header   checksum : 51917", "printf FROM sytemlog checksum : 51917",
               "fclose /dev/mtd_systemlog", "fopen /conf/system.log w+b",
               "flock /conf/system.log LOCK_EX", "fwrite /conf/system.log 12",
               "fwrite /conf/system.log 300", "fclose /conf/system.log"}));
}

TEST_F(FileMake, ReplacesALogThatIsThere)
{
    board.file_put(kFlashImage, sample_image());
    board.file_put(kSystemLog, fresh_log() + records_make(20));
    ASSERT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
}

TEST_F(FileMake, CopiesTheHeaderAloneOfAnImageWithoutRecords)
{
    // No checksum is compared: 0xCAFE is not that of any empty record area.
    const Bytes header = hex("2A 00 00 00 00 00 09 03 07 00 FE CA");
    board.file_put(kFlashImage, header + records_make(2));
    ASSERT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), header);
    EXPECT_EQ(board.console, "head.seq_num  : 42\n"
                             "head.number   : 0\n"
                             "head.location : 777\n"
                             "head.version  : 7\n"
                             "head.checksum : 51966\n");
    EXPECT_EQ(board.calls, (Trace{"fopen /dev/mtd_systemlog rb", "flock /dev/mtd_systemlog LOCK_EX",
                                  "fread /dev/mtd_systemlog 12", "printf head.seq_num  : 42",
                                  "printf head.number   : 0", "printf head.location : 777",
                                  "printf head.version  : 7", "printf head.checksum : 51966",
                                  "fclose /dev/mtd_systemlog", "fopen /conf/system.log w+b",
                                  "flock /conf/system.log LOCK_EX", "fwrite /conf/system.log 12",
                                  "fclose /conf/system.log"}));
}

TEST_F(FileMake, PrintsTheSequenceNumberSigned)
{
    const std::pair<const char*, const char*> numbers[] = {{"00 00 00 00", "0"},
                                                           {"FF FF FF 7F", "2147483647"},
                                                           {"00 00 00 80", "-2147483648"},
                                                           {"FE FF FF FF", "-2"},
                                                           {"FF FF FF FF", "-1"}};
    for (const auto& [stored, printed] : numbers) {
        SCOPED_TRACE(printed);
        board.file_put(kFlashImage, sample_image().replace(0, 4, hex(stored)));
        board.restart();
        EXPECT_EQ(systemLogFileMake(), 0) << "also the number of erased flash passes here";
        EXPECT_EQ(board.calls[3], "printf head.seq_num  : "s + printed);
        EXPECT_EQ(board.file_get(kSystemLog).substr(0, 4), hex(stored));
    }
}

TEST_F(FileMake, PrintsTheOtherFieldsUnsigned)
{
    board.file_put(kFlashImage, hex("00 00 00 00 00 00 FF FF FF FF FF FF"));
    ASSERT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(board.console, "head.seq_num  : 0\n"
                             "head.number   : 0\n"
                             "head.location : 65535\n"
                             "head.version  : 65535\n"
                             "head.checksum : 65535\n");
}

TEST_F(FileMake, AcceptsTheFullRing)
{
    const Bytes image = image_make({1, 1000, 1000, 1, 0}, records_make(1000));
    ASSERT_EQ(image.size(), 100012U);
    board.file_put(kFlashImage, image);
    ASSERT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), image);
    EXPECT_EQ(board.calls[8], "fread /dev/mtd_systemlog 100000");
    EXPECT_EQ(board.calls[15], "fwrite /conf/system.log 100000");
}

TEST_F(FileMake, RefusesMoreRecordsThanTheRingHolds)
{
    constexpr uint16_t kTooMany[] = {1001, 1002, 32768, 65535};
    for (const uint16_t number : kTooMany) {
        SCOPED_TRACE(number);
        board.file_put(kFlashImage, image_make({1, number, 0, 1, 0}, records_make(1001)));
        board.restart();
        EXPECT_EQ(systemLogFileMake(), -1);
        EXPECT_EQ(
            board.calls,
            (Trace{"fopen /dev/mtd_systemlog rb", "flock /dev/mtd_systemlog LOCK_EX",
                   "fread /dev/mtd_systemlog 12", "fclose /dev/mtd_systemlog", puts_of(kMake004)} +
             kUnlogged));
        EXPECT_FALSE(board.file_exists(kSystemLog));
    }
}

TEST_F(FileMake, RefusesVersionZeroAndNoOther)
{
    board.file_put(kFlashImage, sample_image().replace(8, 2, hex("00 00")));
    EXPECT_EQ(systemLogFileMake(), -1);
    EXPECT_EQ(board.calls, (Trace{"fopen /dev/mtd_systemlog rb", "flock /dev/mtd_systemlog LOCK_EX",
                                  "fread /dev/mtd_systemlog 12", "fclose /dev/mtd_systemlog",
                                  puts_of(kMake005Version)} +
                            kUnlogged));
    EXPECT_FALSE(board.file_exists(kSystemLog));
    for (const char* version : {"01 00", "02 00", "07 00", "00 01", "00 80", "FF FF"}) {
        SCOPED_TRACE(version);
        const Bytes image = sample_image().replace(8, 2, hex(version));
        board.file_put(kFlashImage, image);
        EXPECT_EQ(systemLogFileMake(), 0);
        EXPECT_EQ(board.file_get(kSystemLog), image);
    }
}

TEST_F(FileMake, TestsTheNumberBeforeTheVersion)
{
    board.file_put(kFlashImage, hex("00 00 00 00 E9 03 00 00 00 00 00 00"));
    EXPECT_EQ(systemLogFileMake(), -1);
    EXPECT_EQ(board.calls[4], puts_of(kMake004));
}

TEST_F(FileMake, RefusesEveryShortHeader)
{
    for (size_t length = 0; length < kHeaderSize; ++length) {
        SCOPED_TRACE(length);
        board.file_put(kFlashImage, sample_image().substr(0, length));
        board.restart();
        EXPECT_EQ(systemLogFileMake(), -1);
        EXPECT_EQ(board.console, kMake003 + kLogAbsent);
    }
}

TEST_F(FileMake, RefusesEveryShortRecordArea)
{
    for (size_t length = kHeaderSize; length < kHeaderSize + 300; ++length) {
        SCOPED_TRACE(length);
        board.file_put(kFlashImage, sample_image().substr(0, length));
        board.restart();
        EXPECT_EQ(systemLogFileMake(), -1);
        EXPECT_EQ(board.console, kSampleHeaderLines + kMake005Data + kLogAbsent);
        ASSERT_FALSE(board.file_exists(kSystemLog));
    }
}

TEST_F(FileMake, RefusesAWrongChecksumWithACodeOfItsOwn)
{
    board.file_put(kFlashImage, sample_image().replace(10, 2, hex("CA CD")));
    EXPECT_EQ(systemLogFileMake(), -2);
    EXPECT_EQ(
        board.calls,
        (Trace{"fopen /dev/mtd_systemlog rb", "flock /dev/mtd_systemlog LOCK_EX",
               "fread /dev/mtd_systemlog 12", "printf head.seq_num  : 7",
               "printf head.number   : 3", "printf head.location : 5", "printf head.version  : 1",
               "printf head.checksum : 52682", "fread /dev/mtd_systemlog 300",
               "printf FROM header   checksum : 52682", "printf FROM sytemlog checksum : 51917",
               "fclose /dev/mtd_systemlog", puts_of(kMake006)} +
         kUnlogged));
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(FileMake, ReportsFlashFailuresToALogThatIsThere)
{
    board.file_put(kSystemLog, fresh_log());
    board.file_put(kFlashImage, sample_image().replace(10, 1, hex("00")));
    EXPECT_EQ(systemLogFileMake(), -2);
    EXPECT_EQ(board.file_get(kSystemLog),
              hex("00 00 00 00 01 00 01 00 01 00 00 00") +
                  record_line("systemLogFileMake : 006 : /dev/mtd_systemlog file checksum error"));
}

TEST_F(FileMake, EachFailingCallHasItsResultMessageAndEffect)
{
    const std::string& listing = kSampleListing;
    // The header has reached the file, so 010 is appended to it: in slot 5, as `location` says.
    const Bytes headerAndMessage =
        hex("07 00 00 00 04 00 06 00 01 00 CD CA") + Bytes(5 * kRecordSize, '\0') +
        record_line("systemLogFileMake : 010 : /conf/system.log file write error");
    sweep_expect(
        board,
        [this] {
            board.file_put(kFlashImage, sample_image());
            board.file_remove(kSystemLog);
        },
        systemLogFileMake,
        std::vector<Failure>{
            {"fopen /dev/mtd_systemlog rb", -1, kMake001 + kLogAbsent, std::nullopt},
            {"flock /dev/mtd_systemlog LOCK_EX", -1, kMake002 + kLogAbsent, std::nullopt},
            {"fread /dev/mtd_systemlog 12", -1, kMake003 + kLogAbsent, std::nullopt}} +
            unprinted(kSampleHeaderLines, listing, 0, sample_image()) +
            std::vector<Failure>{{"fread /dev/mtd_systemlog 300", -1,
                                  kSampleHeaderLines + kMake005Data + kLogAbsent, std::nullopt}} +
            unprinted(kSampleChecksumLines, listing, 0, sample_image()) +
            std::vector<Failure>{
                {"fclose /dev/mtd_systemlog", 0, listing, sample_image()},
                {"fopen /conf/system.log w+b", -1, listing + kMake007 + kLogAbsent, std::nullopt},
                {"flock /conf/system.log LOCK_EX", -1, listing + kMake008 + kLogEmpty, ""},
                {"fwrite /conf/system.log 12", -1, listing + kMake009 + kLogEmpty, ""},
                {"fwrite /conf/system.log 300", -1, listing + kMake010, headerAndMessage},
                {"fclose /conf/system.log", 0, listing, sample_image()}});
}

} // namespace
