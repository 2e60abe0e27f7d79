// What each failing call of the whole program leads to.
#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "log/log_sweep.h"

namespace
{

using ProgramFailures = BoardTest;
using Rows = std::vector<Failure>;

std::string run_text(const std::string& between)
{
    return kBegin + between + kEnd;
}

// A failing call that changes what is printed between the banners.
Failure ran(const char* call, const std::string& between, const std::optional<Bytes>& file)
{
    return {call, kExit, run_text(between), file};
}

// A line of the console that cannot be printed.
Failure unput(const std::string& line, const std::string& console, const Bytes& file)
{
    return {puts_of(line), line == kEnd ? -1 : kExit, console_without(line, console), file};
}

TEST_F(ProgramFailures, OfAKeptWorkingFile)
{
    const Bytes kept = sane_log();
    const std::string rebuilt = kUnreadable + kSampleListing;
    const std::string good = run_text(kWarm);
    sweep_expect(
        board,
        [&] {
            board.file_put(kSystemLog, kept);
            board.file_put(kFlashImage, sample_image());
        },
        maintlogfile_main,
        {unput(kBegin, good, kept),
         ran("stat /conf/system.log", kCold + kSampleListing, sample_image()),
         unput(kWarm, good, kept),
         ran("fopen /conf/system.log rb", kWarm + kHeadUnopened + rebuilt, sample_image()),
         ran("flock /conf/system.log LOCK_EX", kWarm + kHeadUnlocked + rebuilt, sample_image()),
         ran("fread /conf/system.log 12", kWarm + kHeadShort + rebuilt, sample_image()),
         ran("fclose /conf/system.log", kWarm, kept), unput(kEnd, good, kept)});
}

TEST_F(ProgramFailures, OfARebuild)
{
    const std::string good = run_text(kCold + kSampleListing);
    const Bytes image = sample_image();
    const auto fine = [&](const char* call) { return Failure{call, kExit, good, image}; };
    const auto refused = [](const char* call, const std::string& between) {
        return ran(call, kCold + between, fresh_log());
    };
    sweep_expect(
        board,
        [&] {
            board.file_remove(kSystemLog);
            board.file_put(kFlashImage, image);
        },
        maintlogfile_main,
        Rows{unput(kBegin, good, image), fine("stat /conf/system.log"), unput(kCold, good, image),
             fine("unlink /conf/system.log"),
             refused("open /dev/mtd_systemlog O_RDONLY",
                     kFlashUnopened + kLogAbsent + kNoFlashUnlogged),
             refused("read /dev/mtd_systemlog 12", kFlashShort + kLogAbsent + kNoFlashUnlogged),
             fine("close /dev/mtd_systemlog"),
             refused("fopen /dev/mtd_systemlog rb", kMake001 + kLogAbsent + kRefusedUnlogged),
             refused("flock /dev/mtd_systemlog LOCK_EX", kMake002 + kLogAbsent + kRefusedUnlogged),
             refused("fread /dev/mtd_systemlog 12", kMake003 + kLogAbsent + kRefusedUnlogged)} +
            unprinted(kSampleHeaderLines, good, kExit, image) +
            Rows{refused("fread /dev/mtd_systemlog 300",
                         kSampleHeaderLines + kMake005Data + kLogAbsent + kRefusedUnlogged)} +
            unprinted(kSampleChecksumLines, good, kExit, image) +
            Rows{fine("fclose /dev/mtd_systemlog"),
                 refused("fopen /conf/system.log w+b",
                         kSampleListing + kMake007 + kLogAbsent + kRefusedUnlogged),
                 refused("flock /conf/system.log LOCK_EX",
                         kSampleListing + kMake008 + kLogEmpty + kRefused + kLogEmpty),
                 refused("fwrite /conf/system.log 12",
                         kSampleListing + kMake009 + kLogEmpty + kRefused + kLogEmpty),
                 refused("fwrite /conf/system.log 300", kSampleListing + kMake010 + kRefused),
                 fine("fclose /conf/system.log"), unput(kEnd, good, image)});
}

TEST_F(ProgramFailures, OfAnEmptyLogInPlaceOfABadOne)
{
    const std::string bad = kWarm + kNotSane;
    const std::string emptied = bad + kErasedUnlogged;
    const std::string unread = kUnreadable + kErasedUnlogged;
    const std::string good = run_text(emptied);
    const Bytes fresh = fresh_log();
    const auto fine = [&](const char* call) { return Failure{call, kExit, good, fresh}; };
    sweep_expect(board,
                 [&] {
                     board.file_put(kSystemLog, hex("00 00 00 00 01 00 E9 03 01 00 00 00"));
                     board.file_put(kFlashImage, Bytes(kHeaderSize, '\xFF'));
                 },
                 maintlogfile_main,
                 {unput(kBegin, good, fresh),
                  ran("stat /conf/system.log", kCold + kErasedUnlogged, fresh),
                  unput(kWarm, good, fresh),
                  ran("fopen /conf/system.log rb", kWarm + kHeadUnopened + unread, fresh),
                  ran("flock /conf/system.log LOCK_EX", kWarm + kHeadUnlocked + unread, fresh),
                  ran("fread /conf/system.log 12", kWarm + kHeadShort + unread, fresh),
                  fine("fclose /conf/system.log"),
                  unput(kNotSane, good, fresh),
                  // The file that stays takes message 006 until it is truncated.
                  {"unlink /conf/system.log", kExit, console_without(kLogAbsent, good), fresh},
                  ran("open /dev/mtd_systemlog O_RDONLY",
                      bad + kFlashUnopened + kLogAbsent + kNoFlashUnlogged, fresh),
                  ran("read /dev/mtd_systemlog 12",
                      bad + kFlashShort + kLogAbsent + kNoFlashUnlogged, fresh),
                  fine("close /dev/mtd_systemlog"),
                  unput(kErased, good, fresh),
                  ran("time now", bad + kErased + "systemLog_put : 001 : time() error\n", fresh),
                  fine("fopen /conf/system.log r+"),
                  unput(kLogAbsent, good, fresh),
                  ran("fopen /conf/system.log w+b", emptied + kInit001 + kLogAbsent, std::nullopt),
                  ran("flock /conf/system.log LOCK_EX", emptied + kInit002 + kLogEmpty, ""),
                  ran("fwrite /conf/system.log 12", emptied + kInit003 + kLogEmpty, ""),
                  fine("fclose /conf/system.log"),
                  unput(kEnd, good, fresh)});
}

// When everything fails from some call on, the program still comes to its end and leaves nothing
// open; what it does not get to replace stays as it was.
TEST_F(ProgramFailures, LeaveNothingOpenWhenCallsFailForGood)
{
    const Bytes rejected = hex("02 00 00 00 03 00 E9 03 01 00 00 00") + records_make(3);
    for (const Bytes& working : {sane_log(), rejected}) {
        size_t calls = 1;
        for (size_t failing = 1; failing <= calls; ++failing) {
            SCOPED_TRACE(failing);
            board.file_put(kSystemLog, working);
            board.file_put(kFlashImage, sample_image());
            board.restart();
            ASSERT_EQ(maintlogfile_main(), kExit);
            calls = board.calls.size();
            board.file_put(kSystemLog, working);
            board.restart();
            board.fail_from(failing);
            EXPECT_EQ(maintlogfile_main(), -1);
            EXPECT_EQ(board.calls.back(), puts_of(kEnd) + " -> failed");
            EXPECT_EQ(board.open_descriptors(), 0U);
            EXPECT_EQ(board.held_locks(), 0U);
            if (failing <= 7) {
                EXPECT_EQ(board.file_get(kSystemLog), working) << "nothing was deleted yet";
            }
        }
    }
}

} // namespace
