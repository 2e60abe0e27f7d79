// The boot, killed before each of its system calls in turn, and the next boot, which is warm or
// cold by what the kill has left. After it the log is usable: its header is complete and within
// its limits, and the writer appends to it.
//
// One kind of kill leaves more than the next boot mends. The rebuild hands header and records to
// one buffered stream, which reaches the file in as many writes as the C library's buffer makes
// of it, the header in the first of them. A kill between two of them leaves a complete header over
// some of its records, and number and location are all that the boot looks at: the file is kept.
// The records of the image behind the cut are then missing from the working file, for good; they
// are still in flash. The writer goes on in the slot that the header names: it leaves the gap as
// zero bytes when that slot lies behind the cut, or closes it slot by slot from the start of the
// ring. Where one write carries everything, as it does up to 40 records with a buffer of 4096
// bytes, the state does not come up.
//
// The console is no part of it: what the program prints is collected in memory here.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "board/traced_child.h"
#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "maint/system_log.h"

namespace
{

// What the working file can be. The words are those of the tables below.
constexpr const char* kAbsent = "absent";
constexpr const char* kEmpty = "no bytes";
constexpr const char* kPrevious = "the previous file";
constexpr const char* kPart = "the image cut behind its header";
constexpr const char* kImage = "the image";
constexpr const char* kFresh = "the fresh log";

// Where the record after the second boot has to go, and the header then.
struct NextRecord {
    size_t slot;
    Bytes header;
};

struct BootCrash : TracedTest {
    Bytes flash;
    Bytes previous; // the working file before the boot; empty: none
    bool previous_sane = false;
    NextRecord next_in_image;
    NextRecord next_in_previous;

    void files_prepare() const
    {
        board.file_put(kFlashImage, flash);
        board.file_remove(kSystemLog);
        if (!previous.empty()) {
            board.file_put(kSystemLog, previous);
        }
    }

    [[nodiscard]] std::string log_state() const
    {
        if (!board.file_exists(kSystemLog)) {
            return kAbsent;
        }
        const Bytes log = board.file_get(kSystemLog);
        if (log.empty()) {
            return kEmpty;
        }
        if (log == previous) {
            return kPrevious;
        }
        if (log == flash) {
            return kImage;
        }
        if (log == fresh_log()) {
            return kFresh;
        }
        if (log.size() >= kHeaderSize && flash.starts_with(log)) {
            return kPart;
        }
        return "something else of " + std::to_string(log.size()) + " bytes";
    }

    [[nodiscard]] std::string boot_says(const std::string& left) const
    {
        if (left == kAbsent) {
            return kBegin + kCold;
        }
        if (left == kEmpty) {
            return kBegin + kWarm + kHeadShort + kUnreadable;
        }
        if (left == kPrevious && !previous_sane) {
            return kBegin + kWarm + kNotSane;
        }
        return kBegin + kWarm + kEnd; // kept: nothing else is printed
    }

    // Appends a record and checks it, the header, and that nothing else has changed.
    void log_checkUsable(const std::string& state)
    {
        const NextRecord next = state == kFresh      ? NextRecord{0, hex("00 00 00 00 01 00 01 00 "
                                                                              "01 00 00 00")}
                                : state == kPrevious ? next_in_previous
                                                     : next_in_image;
        const Bytes before = board.file_get(kSystemLog);
        SystemLogHeader header;
        ASSERT_GE(before.size(), sizeof header);
        memcpy(&header, before.data(), sizeof header);
        ASSERT_LE(header.number, 1000);
        ASSERT_LE(header.location, 1000);
        if (state != kPart) {
            lines_check(before, header.number);
        }
        ASSERT_EQ(systemLog_put("after the crash"), 0);

        const size_t offset = kHeaderSize + kRecordSize * next.slot;
        Bytes expected = before;
        expected.resize(std::max(before.size(), offset + kRecordSize), '\0');
        expected.replace(0, kHeaderSize, next.header);
        expected.replace(offset, kRecordSize, record_line("after the crash"));
        EXPECT_TRUE(board.file_get(kSystemLog) == expected) << "the record did not reach its slot";
    }

    // The header, as many whole lines as it counts, and nothing behind them.
    static void lines_check(const Bytes& log, size_t number)
    {
        ASSERT_EQ(log.size(), kHeaderSize + kRecordSize * number);
        for (size_t at = kHeaderSize; at < log.size(); at += kRecordSize) {
            const Bytes line = log.substr(at, kRecordSize);
            ASSERT_EQ(line.find('\n'), kRecordSize - 1);
            ASSERT_EQ(line.find('\0'), Bytes::npos);
        }
    }

    void boots_sweep(std::span<const KillPoint> points)
    {
        kill_sweep(
            board, [this] { files_prepare(); }, [] { return maintlogfile_main() == kExit ? 0 : 1; },
            points,
            [this](const KillPoint& point) {
                ASSERT_EQ(log_state(), point.left);
                board.restart();
                EXPECT_EQ(maintlogfile_main(), kExit);
                EXPECT_EQ(board.console.substr(0, boot_says(point.left).size()),
                          boot_says(point.left));
                ASSERT_EQ(log_state(), point.then);
                log_checkUsable(point.then);
            });
    }

    void image_put300()
    {
        flash = image_make({7, 300, 300, 1, 0}, records_make(300, "image"));
        next_in_image = {300, header_bytes({7, 301, 301, 1, header_get(flash).checksum})};
    }
};

using enum Often;

// Killed before                        leaves     and after the next boot
constexpr KillPoint kColdWithImage[] = {
    {"stat /conf/system.log", kOnce, kAbsent, kImage},
    {"unlink /conf/system.log", kOnce, kAbsent, kImage},
    {"open /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"read /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"close /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"open /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"lock /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"read /dev/mtd_systemlog", kEach, kAbsent, kImage},
    {"close /dev/mtd_systemlog", kOnce, kAbsent, kImage},
    {"create /conf/system.log", kOnce, kAbsent, kImage},
    {"lock /conf/system.log", kOnce, kEmpty, kImage},
    {"write /conf/system.log", kOnce, kEmpty, kImage},
    {"write /conf/system.log", kFurther, kPart, kPart}, // kept: see above
    {"close /conf/system.log", kOnce, kImage, kImage},
    {"exit", kOnce, kImage, kImage},
};

TEST_F(BootCrash, ColdStartWith300RecordsInFlash)
{
    image_put300();
    boots_sweep(kColdWithImage);
}

TEST_F(BootCrash, ColdStartWithAFullRingInFlash)
{
    flash = image_make({7, 1000, 1000, 1, 0}, records_make(1000, "image"));
    next_in_image = {0, header_bytes({7, 1000, 1, 1, header_get(flash).checksum})};
    boots_sweep(kColdWithImage);
}

// Header and record leave in one write, from any buffer that holds 112 bytes: nothing is ever cut.
TEST_F(BootCrash, ColdStartWithOneRecordInFlash)
{
    flash = image_make({7, 1, 1, 1, 0}, records_make(1, "image"));
    next_in_image = {1, header_bytes({7, 2, 2, 1, header_get(flash).checksum})};
    std::vector<KillPoint> points;
    std::copy_if(std::begin(kColdWithImage), std::end(kColdWithImage), std::back_inserter(points),
                 [](const KillPoint& point) { return point.left != kPart; });
    boots_sweep(points);
}

TEST_F(BootCrash, ColdStartWithErasedFlash)
{
    flash = Bytes(100'012, '\xFF');
    // The report of 006 tries to append to the log, which is not there yet.
    constexpr KillPoint kPoints[] = {
        {"stat /conf/system.log", kOnce, kAbsent, kFresh},
        {"unlink /conf/system.log", kOnce, kAbsent, kFresh},
        {"open /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"read /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"close /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"open /conf/system.log", kOnce, kAbsent, kFresh},
        {"create /conf/system.log", kOnce, kAbsent, kFresh},
        {"lock /conf/system.log", kOnce, kEmpty, kFresh},
        {"write /conf/system.log", kOnce, kEmpty, kFresh},
        {"close /conf/system.log", kOnce, kFresh, kFresh},
        {"exit", kOnce, kFresh, kFresh},
    };
    boots_sweep(kPoints);
}

TEST_F(BootCrash, ColdStartWithADamagedImage)
{
    image_put300();
    flash[20'000] = '\x01';
    // The reports of both messages, the checksum's 006 and 007, try to append to the log.
    constexpr KillPoint kPoints[] = {
        {"stat /conf/system.log", kOnce, kAbsent, kFresh},
        {"unlink /conf/system.log", kOnce, kAbsent, kFresh},
        {"open /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"read /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"close /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"open /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"lock /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"read /dev/mtd_systemlog", kEach, kAbsent, kFresh},
        {"close /dev/mtd_systemlog", kOnce, kAbsent, kFresh},
        {"open /conf/system.log", kOnce, kAbsent, kFresh},
        {"open /conf/system.log", kOnce, kAbsent, kFresh},
        {"create /conf/system.log", kOnce, kAbsent, kFresh},
        {"lock /conf/system.log", kOnce, kEmpty, kFresh},
        {"write /conf/system.log", kOnce, kEmpty, kFresh},
        {"close /conf/system.log", kOnce, kFresh, kFresh},
        {"exit", kOnce, kFresh, kFresh},
    };
    boots_sweep(kPoints);
}

TEST_F(BootCrash, WarmStartThatKeepsTheFile)
{
    image_put300();
    previous = image_make({7, 7, 7, 1, 0}, records_make(7, "previous"));
    previous_sane = true;
    next_in_previous = {7, header_bytes({7, 8, 8, 1, header_get(previous).checksum})};
    constexpr KillPoint kPoints[] = {
        {"stat /conf/system.log", kOnce, kPrevious, kPrevious},
        {"open /conf/system.log", kOnce, kPrevious, kPrevious},
        {"lock /conf/system.log", kOnce, kPrevious, kPrevious},
        {"read /conf/system.log", kOnce, kPrevious, kPrevious},
        {"close /conf/system.log", kOnce, kPrevious, kPrevious},
        {"exit", kOnce, kPrevious, kPrevious},
    };
    boots_sweep(kPoints);
}

TEST_F(BootCrash, WarmStartThatRebuildsARefusedFile)
{
    image_put300();
    previous = image_make({7, 7, 7, 1, 0}, records_make(7, "previous"));
    previous.replace(6, 2, hex("E9 03")); // location 1001
    constexpr KillPoint kPoints[] = {
        {"stat /conf/system.log", kOnce, kPrevious, kImage},
        {"open /conf/system.log", kOnce, kPrevious, kImage},
        {"lock /conf/system.log", kOnce, kPrevious, kImage},
        {"read /conf/system.log", kOnce, kPrevious, kImage},
        {"close /conf/system.log", kOnce, kPrevious, kImage},
        {"unlink /conf/system.log", kOnce, kPrevious, kImage},
        {"open /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"read /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"close /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"open /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"lock /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"read /dev/mtd_systemlog", kEach, kAbsent, kImage},
        {"close /dev/mtd_systemlog", kOnce, kAbsent, kImage},
        {"create /conf/system.log", kOnce, kAbsent, kImage},
        {"lock /conf/system.log", kOnce, kEmpty, kImage},
        {"write /conf/system.log", kOnce, kEmpty, kImage},
        {"write /conf/system.log", kFurther, kPart, kPart}, // kept: see above
        {"close /conf/system.log", kOnce, kImage, kImage},
        {"exit", kOnce, kImage, kImage},
    };
    boots_sweep(kPoints);
}

// Where a rebuild is cut depends on the C library's buffer; here are the lengths that matter.
struct BootOfCutFile : BootCrash {
    void SetUp() override {} // nothing is traced
};

TEST_F(BootOfCutFile, RebuildsAShortHeaderAndKeepsACompleteOne)
{
    image_put300();
    struct {
        size_t length;
        const char* left;
        const char* then;
    } constexpr kCuts[] = {
        {0, kEmpty, kImage},
        {1, "something else of 1 bytes", kImage},
        {11, "something else of 11 bytes", kImage},
        {12, kPart, kPart},
        {13, kPart, kPart},
        {111, kPart, kPart},
        {112, kPart, kPart},
        {4096, kPart, kPart},
        {28'672, kPart, kPart},
        {30'011, kPart, kPart},
        {30'012, kImage, kImage},
    };
    board.file_put(kFlashImage, flash);
    for (const auto& cut : kCuts) {
        SCOPED_TRACE(cut.length);
        board.file_put(kSystemLog, flash.substr(0, cut.length));
        ASSERT_EQ(log_state(), cut.left);
        board.restart();
        EXPECT_EQ(maintlogfile_main(), kExit);
        const std::string says = boot_says(cut.length < kHeaderSize ? kEmpty : cut.left);
        EXPECT_EQ(board.console.substr(0, says.size()), says);
        ASSERT_EQ(log_state(), cut.then);
        log_checkUsable(cut.then);
    }
}

} // namespace
