// Damaged flash images and working files, each with what the program makes of it.
#include "log/console_lines.h"
#include "log/log_bytes.h"

namespace
{

using DamagedImage = BoardTest;
using DamagedWorkingFile = BoardTest;

struct Damage {
    std::string name;
    Bytes image;
    std::string console; // between the message of the start and the second banner
    Bytes file;
};

// Boots cold on each image, and compares.
void coldBoots_expect(Board& board, const std::vector<Damage>& damages)
{
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        board.file_remove(kSystemLog);
        board.file_put(kFlashImage, damage.image);
        board.restart();
        EXPECT_EQ(maintlogfile_main(), kExit);
        EXPECT_EQ(board.console, kBegin + kCold + damage.console + kEnd);
        EXPECT_EQ(board.file_get(kSystemLog), damage.file);
        EXPECT_EQ(board.file_get(kFlashImage), damage.image) << "the image itself stays";
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
    }
}

// The sample image with some of its bytes replaced; see log_bytes.h for what it holds.
Bytes sample_with(size_t at, const char* bytes)
{
    const Bytes replacement = hex(bytes);
    return sample_image().replace(at, replacement.size(), replacement);
}

// What is printed of a header, and of the checksums.
std::string header_lines(int64_t seq_num, int number, int location, int version, int checksum)
{
    return "head.seq_num  : " + std::to_string(seq_num) +
           "\nhead.number   : " + std::to_string(number) +
           "\nhead.location : " + std::to_string(location) +
           "\nhead.version  : " + std::to_string(version) +
           "\nhead.checksum : " + std::to_string(checksum) + "\n";
}

std::string checksum_lines(int stored, int computed)
{
    return "FROM header   checksum : " + std::to_string(stored) +
           "\nFROM sytemlog checksum : " + std::to_string(computed) + "\n";
}

// How a rebuild that is given up ends: a message that finds no log, as does 007 after it.
std::string refused_lines(const std::string& message)
{
    return message + kLogAbsent + kRefusedUnlogged;
}

const std::string kUnread = kFlashShort + kLogAbsent + kNoFlashUnlogged;
const std::string kCut = kSampleHeaderLines + refused_lines(kMake005Data);

TEST_F(DamagedImage, CutShort)
{
    const Bytes image = sample_image();
    const Bytes ring = image_make({1, 1000, 0, 1, 0}, records_make(1000));
    const uint16_t ringChecksum = checksum_model(records_make(1000));
    const std::string ringLines = header_lines(1, 1000, 0, 1, ringChecksum);
    const std::string ringCut = ringLines + refused_lines(kMake005Data);
    coldBoots_expect(
        board, {
                   {"empty", "", kUnread, fresh_log()},
                   {"1 byte", image.substr(0, 1), kUnread, fresh_log()},
                   {"4 bytes, seq_num alone", image.substr(0, 4), kUnread, fresh_log()},
                   {"4 bytes, erased", hex("FF FF FF FF"), kUnread, fresh_log()},
                   {"11 bytes, one short of the header", image.substr(0, 11), kUnread, fresh_log()},
                   {"12 bytes, the header alone", image.substr(0, 12), kCut, fresh_log()},
                   {"13 bytes", image.substr(0, 13), kCut, fresh_log()},
                   {"111 bytes, one short of a record", image.substr(0, 111), kCut, fresh_log()},
                   {"112 bytes, one record of three", image.substr(0, 112), kCut, fresh_log()},
                   {"113 bytes", image.substr(0, 113), kCut, fresh_log()},
                   {"212 bytes, two records of three", image.substr(0, 212), kCut, fresh_log()},
                   {"311 bytes, one short of the end", image.substr(0, 311), kCut, fresh_log()},
                   {"312 bytes, whole", image.substr(0, 312), kSampleListing, image},
                   {"full ring, records missing", ring.substr(0, 12), ringCut, fresh_log()},
                   {"full ring, half", ring.substr(0, 50012), ringCut, fresh_log()},
                   {"full ring, last record missing", ring.substr(0, 99912), ringCut, fresh_log()},
                   {"full ring, one byte short", ring.substr(0, 100011), ringCut, fresh_log()},
                   {"full ring, whole", ring,
                    ringLines + checksum_lines(ringChecksum, ringChecksum), ring},
               });
}

TEST_F(DamagedImage, LongerThanItsRecords)
{
    const Bytes ring = image_make({1, 1000, 500, 1, 0}, records_make(1000));
    const uint16_t checksum = checksum_model(records_make(1000));
    coldBoots_expect(
        board,
        {{"a byte behind", sample_image() + "x", kSampleListing, sample_image()},
         {"a record behind", sample_image() + records_make(1), kSampleListing, sample_image()},
         {"erased flash behind", sample_image() + Bytes(131072 - 312, '\xFF'), kSampleListing,
          sample_image()},
         {"erased flash behind a full ring", ring + Bytes(131072 - 100012, '\xFF'),
          header_lines(1, 1000, 500, 1, checksum) + checksum_lines(checksum, checksum), ring}});
}

TEST_F(DamagedImage, NumberAtItsLimits)
{
    const std::string beyond = refused_lines(kMake004);
    // 1000 records of zeros: sum 0, stored FF FF.
    const Bytes zeros = hex("01 00 00 00 E8 03 00 00 01 00 FF FF") + Bytes(100000, '\0');
    Bytes oneMore = zeros + Bytes(kRecordSize, '\0');
    oneMore.replace(4, 2, hex("E9 03"));
    coldBoots_expect(
        board,
        {{"number 1000", zeros, header_lines(1, 1000, 0, 1, 65535) + checksum_lines(65535, 65535),
          zeros},
         {"number 1001, the records present", oneMore, beyond, fresh_log()},
         {"number 1001, no records", hex("01 00 00 00 E9 03 00 00 01 00 FF FF"), beyond,
          fresh_log()},
         {"number 65535", sample_with(4, "FF FF"), beyond, fresh_log()},
         {"number 0x0300: bytes exchanged", sample_with(4, "00 03"),
          header_lines(7, 768, 5, 1, 51917) + refused_lines(kMake005Data), fresh_log()},
         // One record fewer: the word 0x2001 at the end of the third is not summed.
         {"number 2 of 3", sample_with(4, "02 00"),
          header_lines(7, 2, 5, 1, 51917) + checksum_lines(51917, 52205) + refused_lines(kMake006),
          fresh_log()},
         {"number 4 of 3", sample_with(4, "04 00"),
          header_lines(7, 4, 5, 1, 51917) + refused_lines(kMake005Data), fresh_log()},
         // A record of zeros adds nothing to the sum.
         {"number 4, a record of zeros behind", sample_with(4, "04 00") + Bytes(100, '\0'),
          header_lines(7, 4, 5, 1, 51917) + checksum_lines(51917, 51917),
          sample_with(4, "04 00") + Bytes(100, '\0')}});
}

TEST_F(DamagedImage, NumberZeroCopiesTheHeaderWhateverElseItHolds)
{
    const Bytes odd = hex("63 00 00 00 00 00 FF FF 09 00 CD AB");
    coldBoots_expect(
        board,
        {{"header alone", odd, header_lines(99, 0, 65535, 9, 43981), odd},
         {"records behind", odd + records_make(3), header_lines(99, 0, 65535, 9, 43981), odd},
         {"all other fields 0 but version", hex("00 00 00 00 00 00 00 00 01 00 00 00"),
          header_lines(0, 0, 0, 1, 0), fresh_log()},
         {"version 0, too", hex("63 00 00 00 00 00 FF FF 00 00 CD AB"),
          refused_lines(kMake005Version), fresh_log()}});
}

TEST_F(DamagedImage, VersionAtItsLimits)
{
    const std::string zero = refused_lines(kMake005Version);
    const std::string& same = kSampleChecksumLines;
    coldBoots_expect(board, {{"version 0", sample_with(8, "00 00"), zero, fresh_log()},
                             {"version 2", sample_with(8, "02 00"),
                              header_lines(7, 3, 5, 2, 51917) + same, sample_with(8, "02 00")},
                             {"version 7", sample_with(8, "07 00"),
                              header_lines(7, 3, 5, 7, 51917) + same, sample_with(8, "07 00")},
                             {"version 256", sample_with(8, "00 01"),
                              header_lines(7, 3, 5, 256, 51917) + same, sample_with(8, "00 01")},
                             {"version 65535", sample_with(8, "FF FF"),
                              header_lines(7, 3, 5, 65535, 51917) + same, sample_with(8, "FF FF")},
                             {"all zeros", Bytes(100012, '\0'), zero, fresh_log()}});
}

TEST_F(DamagedImage, LocationIsCopiedUnchecked)
{
    const std::string& same = kSampleChecksumLines;
    std::vector<Damage> damages;
    const std::pair<const char*, int> locations[] = {{"00 00", 0},    {"03 00", 3},
                                                     {"E7 03", 999},  {"E8 03", 1000},
                                                     {"E9 03", 1001}, {"FF FF", 65535}};
    for (const auto& [stored, printed] : locations) {
        damages.push_back({std::to_string(printed), sample_with(6, stored),
                           header_lines(7, 3, printed, 1, 51917) + same, sample_with(6, stored)});
    }
    coldBoots_expect(board, damages);

    // The working file of the last one is not sane: each further boot rebuilds it.
    board.restart();
    EXPECT_EQ(maintlogfile_main(), kExit);
    EXPECT_EQ(board.console, kBegin + kWarm + kNotSane + damages.back().console + kEnd);
}

TEST_F(DamagedImage, SequenceNumberAtItsLimits)
{
    const std::string& same = kSampleChecksumLines;
    coldBoots_expect(
        board, {{"0", sample_with(0, "00 00 00 00"), header_lines(0, 3, 5, 1, 51917) + same,
                 sample_with(0, "00 00 00 00")},
                {"largest positive", sample_with(0, "FF FF FF 7F"),
                 header_lines(2147483647, 3, 5, 1, 51917) + same, sample_with(0, "FF FF FF 7F")},
                {"sign bit", sample_with(0, "00 00 00 80"),
                 header_lines(-2147483648, 3, 5, 1, 51917) + same, sample_with(0, "00 00 00 80")},
                {"one short of erased", sample_with(0, "FE FF FF FF"),
                 header_lines(-2, 3, 5, 1, 51917) + same, sample_with(0, "FE FF FF FF")}});
}

TEST_F(DamagedImage, ErasedFlashGivesAnEmptyLog)
{
    coldBoots_expect(
        board, {{"the whole partition", Bytes(131072, '\xFF'), kErasedUnlogged, fresh_log()},
                {"an image long", Bytes(100012, '\xFF'), kErasedUnlogged, fresh_log()},
                {"a header long", Bytes(12, '\xFF'), kErasedUnlogged, fresh_log()},
                {"a header short of one byte", Bytes(11, '\xFF'), kUnread, fresh_log()},
                {"seq_num alone, a valid image else", sample_with(0, "FF FF FF FF"),
                 kErasedUnlogged, fresh_log()},
                {"seq_num alone, all else 0", hex("FF FF FF FF 00 00 00 00 00 00 00 00"),
                 kErasedUnlogged, fresh_log()},
                {"seq_num alone, number 1001", sample_with(0, "FF FF FF FF E9 03"), kErasedUnlogged,
                 fresh_log()},
                {"seq_num alone, checksum wrong", sample_with(0, "FF FF FF FF").replace(10, 1, "x"),
                 kErasedUnlogged, fresh_log()},
                // Half erased: seq_num still holds a number, the rest is all ones.
                {"all but seq_num", sample_with(4, "FF FF FF FF FF FF FF FF"),
                 refused_lines(kMake004), fresh_log()}});
}

TEST_F(DamagedImage, WrongChecksumIsNoticed)
{
    struct Wrong {
        const char* name;
        size_t at;
        const char* bytes;
        int stored; // as printed
        int computed;
    };
    const Wrong wrongs[] = {
        {"stored low byte", 10, "CC", 51916, 51917},
        {"stored high byte", 11, "CB", 52173, 51917},
        {"stored low byte, one bit", 10, "4D", 51789, 51917},
        {"stored high byte, one bit", 11, "4A", 19149, 51917},
        {"stored one more", 10, "CE CA", 51918, 51917},
        {"stored in the other byte order", 10, "CA CD", 52682, 51917},
        {"stored without the complement", 10, "32 35", 13618, 51917},
        {"stored 0", 10, "00 00", 0, 51917},
        {"stored all ones", 10, "FF FF", 65535, 51917},
        // Sums 0x3236, 0x3335, 0xB235, 0x3335, 0x3234, 0x3335 and 0x5413.
        {"first byte of the first record, one bit", 12, "35", 51917, 51661},
        {"second byte of the first record, one bit", 13, "13", 51917, 51916},
        {"first record, highest bit", 13, "92", 51917, 51789},
        {"last byte of the last record, one bit", 311, "21", 51917, 51916},
        {"last word but its last byte, one bit", 310, "00", 51917, 52173},
        {"a word in the middle", 160, "00 01", 51917, 51916},
        {"the two bytes of a word exchanged", 12, "12 34", 51917, 60587},
    };
    std::vector<Damage> damages;
    for (const Wrong& wrong : wrongs) {
        damages.push_back({wrong.name, sample_with(wrong.at, wrong.bytes),
                           header_lines(7, 3, 5, 1, wrong.stored) +
                               checksum_lines(wrong.stored, wrong.computed) +
                               refused_lines(kMake006),
                           fresh_log()});
    }
    coldBoots_expect(board, damages);
}

// A sum has no order, and counts 0x0000 and 0xFFFF alike.
TEST_F(DamagedImage, WhatASumCannotNoticeIsCopied)
{
    Bytes exchanged = sample_image();
    exchanged.replace(12, 2, hex("01 20")).replace(310, 2, hex("34 12"));
    Bytes moved = sample_image();
    moved.replace(12, 2, hex("00 00")).replace(112, 2, hex("34 12"));
    Bytes balanced = sample_image();
    balanced.replace(12, 2, hex("35 12")).replace(310, 2, hex("00 20"));
    Bytes ones = sample_image();
    ones.replace(50, 2, hex("FF FF"));
    coldBoots_expect(board, {{"two words exchanged", exchanged, kSampleListing, exchanged},
                             {"a word in another record", moved, kSampleListing, moved},
                             {"one word more by 1, one less", balanced, kSampleListing, balanced},
                             {"a word of zeros turned to ones", ones, kSampleListing, ones}});
}

TEST_F(DamagedImage, FullRingIsCopiedAtAnyLocation)
{
    const Bytes records = records_make(1000);
    const uint16_t checksum = checksum_model(records);
    std::vector<Damage> damages;
    for (const int location : {0, 1, 500, 999, 1000}) {
        const Bytes image = image_make({9, 1000, static_cast<uint16_t>(location), 1, 0}, records);
        damages.push_back(
            {"full ring", image,
             header_lines(9, 1000, location, 1, checksum) + checksum_lines(checksum, checksum),
             image});
    }
    coldBoots_expect(board, damages);
}

TEST_F(DamagedImage, NoImageAtAll)
{
    EXPECT_EQ(maintlogfile_main(), kExit);
    EXPECT_EQ(board.console,
              kBegin + kCold + kFlashUnopened + kLogAbsent + kNoFlashUnlogged + kEnd);
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
}

// --- The working file ---

struct WorkingDamage {
    const char* name;
    Bytes working;
    std::string verdict; // printed behind Warm Start; empty: the file is kept
};

TEST_F(DamagedWorkingFile, IsKeptOrReplacedByTheImageOrByAnEmptyLog)
{
    const std::string unreadable = kHeadShort + kUnreadable;
    const Bytes whole = hex("02 00 00 00 01 00 01 00 01 00 00 00") + records_make(1);
    std::vector<WorkingDamage> damages = {
        {"12 bytes, the header alone", whole.substr(0, 12), ""},
        {"13 bytes", whole.substr(0, 13), ""},
        {"111 bytes, one short of its record", whole.substr(0, 111), ""},
        {"whole", whole, ""},
        {"12 zeros", Bytes(12, '\0'), ""},
        {"number 1000", hex("00 00 00 00 E8 03 01 00 01 00 00 00"), ""},
        {"number 1001", hex("00 00 00 00 E9 03 01 00 01 00 00 00"), kNotSane},
        {"number 65535", hex("00 00 00 00 FF FF 01 00 01 00 00 00"), kNotSane},
        {"location 1000", hex("00 00 00 00 01 00 E8 03 01 00 00 00"), ""},
        {"location 1001", hex("00 00 00 00 01 00 E9 03 01 00 00 00"), kNotSane},
        {"location 65535", hex("00 00 00 00 01 00 FF FF 01 00 00 00"), kNotSane},
        {"both 1000", hex("00 00 00 00 E8 03 E8 03 01 00 00 00"), ""},
        {"both 1001", hex("00 00 00 00 E9 03 E9 03 01 00 00 00"), kNotSane},
        {"all ones", Bytes(100012, '\xFF'), kNotSane},
        {"text", "not a log at all", kNotSane},
    };
    for (size_t length = 0; length < kHeaderSize; ++length) {
        damages.push_back({"short", whole.substr(0, length), unreadable});
    }
    for (const WorkingDamage& damage : damages) {
        SCOPED_TRACE(damage.name);
        SCOPED_TRACE(damage.working.size());
        const bool kept = damage.verdict.empty();
        const std::string start = kBegin + kWarm + damage.verdict;

        board.file_put(kSystemLog, damage.working);
        board.file_put(kFlashImage, sample_image());
        board.restart();
        EXPECT_EQ(maintlogfile_main(), kExit);
        EXPECT_EQ(board.console, start + (kept ? "" : kSampleListing) + kEnd);
        EXPECT_EQ(board.file_get(kSystemLog), kept ? damage.working : sample_image());

        board.file_put(kSystemLog, damage.working);
        board.file_put(kFlashImage, Bytes(100012, '\xFF'));
        board.restart();
        EXPECT_EQ(maintlogfile_main(), kExit);
        EXPECT_EQ(board.console, start + (kept ? "" : kErasedUnlogged) + kEnd);
        EXPECT_EQ(board.file_get(kSystemLog), kept ? damage.working : fresh_log());
    }
}

} // namespace
