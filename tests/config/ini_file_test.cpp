// What the INI reader finds, and what it does not.
#include "maint/ini_file.h"

#include <ostream>
#include <vector>

#include "board/board_test.h"

namespace
{

using namespace std::string_literals;

constexpr const char* kConfig = "/conf/config";
constexpr const char* kOther = "/tmp/settings";

// "[", the word for "site" in EUC-JP, "ID#".
const Bytes kSite = hex("5B B5 F2 C5 C0 49 44 23");

constexpr int32_t kNone = -1; // and the value buffer holds ""

Bytes run(size_t length, char byte = 'x')
{
    return Bytes(length, byte);
}

struct Lookup {
    const char* name;
    const char* path;
    Bytes file;
    Bytes section;
    Bytes key;
    int32_t result;
    Bytes value;
};

void PrintTo(const Lookup& lookup, std::ostream* out)
{
    *out << lookup.name;
}

class IniFile : public BoardTest, public testing::WithParamInterface<Lookup>
{
};

TEST_P(IniFile, Finds)
{
    const Lookup& lookup = GetParam();
    board.file_put(lookup.path, lookup.file);
    Bytes value = run(INI_VALUE_SIZE, '~');
    EXPECT_EQ(
        GetIniFileString(lookup.path, lookup.section.c_str(), lookup.key.c_str(), value.data()),
        lookup.result);
    EXPECT_EQ(value.substr(0, value.find('\0')), lookup.value);
    EXPECT_EQ(value.substr(lookup.value.size() + 1),
              run(INI_VALUE_SIZE - lookup.value.size() - 1, '~'))
        << "only the value and its terminating zero are written";
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(board.file_get(lookup.path), lookup.file);
}

std::string name_of(const testing::TestParamInfo<Lookup>& lookup)
{
    return lookup.param.name;
}

// Keys ----------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    Key, IniFile,
    testing::Values(
        Lookup{"OnFirstLine", kConfig, "KEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"OnLaterLine", kConfig, "A='1'\n\nB='2'\nKEY='v'\nC='3'\n", "", "KEY", 0, "v"},
        Lookup{"MatchesAsPrefix", kConfig, "KEYLONG='1'\n", "", "KEY", 0, "1"},
        Lookup{"PrefixBeforeTheWholeKeyWins", kConfig, "KEYS='1'\nKEY='2'\n", "", "KEY", 0, "1"},
        Lookup{"WithItsEqualsSignIsNotFooled", kConfig, "KEYS='1'\nKEY='2'\n", "", "KEY=", 0, "2"},
        Lookup{"LineShorterThanKey", kConfig, "KE\nKE='1'\n", "", "KEY", kNone, ""},
        Lookup{"OtherCase", kConfig, "key='1'\nKey='2'\n", "", "KEY", kNone, ""},
        Lookup{"IndentedByBlank", kConfig, " KEY='1'\n", "", "KEY", kNone, ""},
        Lookup{"IndentedByTab", kConfig, "\tKEY='1'\n", "", "KEY", kNone, ""},
        Lookup{"CommentedOut", kConfig, "#KEY='1'\n;KEY='2'\n", "", "KEY", kNone, ""},
        Lookup{"CommentedOutIsSkipped", kConfig, "#KEY='1'\nKEY='2'\n", "", "KEY", 0, "2"},
        Lookup{"CommentSignIsAKeyLikeAnyOther", kConfig, "#KEY='1'\n", "", "#KEY", 0, "1"},
        Lookup{"InTheMiddleOfALine", kConfig, "A='1' KEY='2'\n", "", "KEY", kNone, ""},
        Lookup{"Missing", kConfig, "A='1'\nB='2'\n", "", "KEY", kNone, ""},
        Lookup{"InEmptyFile", kConfig, "", "", "KEY", kNone, ""},
        Lookup{"InFileOfOneNewline", kConfig, "\n", "", "KEY", kNone, ""},
        Lookup{"FirstOfTwoWins", kConfig, "KEY='1'\nKEY='2'\n", "", "KEY", 0, "1"},
        Lookup{"FirstWithoutQuotesEndsTheSearch", kConfig, "KEY=1\nKEY='2'\n", "", "KEY", kNone,
               ""},
        Lookup{"FirstWithoutClosingQuoteEndsTheSearch", kConfig, "KEY='1\nKEY='2'\n", "", "KEY",
               kNone, ""},
        Lookup{"FirstBareKeyEndsTheSearch", kConfig, "KEY\nKEY='2'\n", "", "KEY", kNone, ""},
        Lookup{"FirstWithoutEqualsEndsTheSearch", kOther, "KEY\nKEY=2\n", "", "KEY", kNone, ""},
        Lookup{"FirstOfTwoWinsElsewhere", kOther, "KEY=1\nKEY=2\n", "", "KEY", 0, "1"},
        Lookup{"EmptyMatchesTheFirstLine", kConfig, "A='1'\nB='2'\n", "", "", 0, "1"},
        Lookup{"EmptyStopsAtAnUndelimitedFirstLine", kConfig, "\nA='1'\n", "", "", kNone, ""},
        Lookup{"EmptyInEmptyFile", kConfig, "", "", "", kNone, ""},
        Lookup{"EmptyAtASiteSection", kConfig, kSite + "'1'\nA='1'\n", "", "", kNone, ""},
        Lookup{"EmptyElsewhere", kOther, "A=1\n", "", "", 0, "1"},
        Lookup{"OfHighBytes", kConfig, "\xB5\xF2\xC5\xC0='\xA4\xA2'\n", "", "\xB5\xF2", 0,
               "\xA4\xA2"},
        Lookup{"HoldingAQuoteIsCutThere", kConfig, "A'B='c'\n", "", "A'B", 0, "B="},
        Lookup{"HoldingAnEqualsSignIsCutThere", kOther, "A=B=c\n", "", "A=B", 0, "B=c"}),
    name_of);

// Values --------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    QuotedValue, IniFile,
    testing::Values(
        Lookup{"HoldsAnEqualsSign", kConfig, "KEY='a=b'\n", "", "KEY", 0, "a=b"},
        Lookup{"TextBehindIsIgnored", kConfig, "KEY='v' # 'w'\n", "", "KEY", 0, "v"},
        Lookup{"ThirdQuoteIsIgnored", kConfig, "KEY='a'b'c'\n", "", "KEY", 0, "a"},
        Lookup{"TextBeforeTheQuoteIsIgnored", kConfig, "KEY = anything 'v'\n", "", "KEY", 0, "v"},
        Lookup{"NoEqualsSignIsNeeded", kConfig, "KEY'v'\n", "", "KEY", 0, "v"},
        Lookup{"WithoutQuotes", kConfig, "KEY=noquotes\n", "", "KEY", kNone, ""},
        Lookup{"OpeningQuoteOnly", kConfig, "KEY='v\n", "", "KEY", kNone, ""},
        Lookup{"ClosingQuoteOnly", kConfig, "KEY=v'\n", "", "KEY", kNone, ""},
        Lookup{"ClosingQuoteOnTheNextLine", kConfig, "KEY='v\n'\n", "", "KEY", kNone, ""},
        Lookup{"DoubleQuotes", kConfig, "KEY=\"v\"\n", "", "KEY", kNone, ""},
        Lookup{"Empty", kConfig, "KEY=''\n", "", "KEY", 0, ""},
        Lookup{"BlanksAreKept", kConfig, "KEY='  a b\t'\n", "", "KEY", 0, "  a b\t"},
        Lookup{"LastLineWithoutNewline", kConfig, "KEY='v'", "", "KEY", 0, "v"},
        Lookup{"LastLineWithoutQuoteAndNewline", kConfig, "KEY='v", "", "KEY", kNone, ""},
        Lookup{"CarriageReturnBehindIsIgnored", kConfig, "KEY='v'\r\n", "", "KEY", 0, "v"},
        Lookup{"CarriageReturnWithinIsKept", kConfig, "KEY='v\r'\r\n", "", "KEY", 0, "v\r"},
        Lookup{"BackslashIsAByteLikeAnyOther", kConfig, "KEY='a\\'b'\n", "", "KEY", 0, "a\\"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    PlainValue, IniFile,
    testing::Values(
        Lookup{"RunsToTheNewline", kOther, "KEY=value\n", "", "KEY", 0, "value"},
        Lookup{"BlanksAreKept", kOther, "KEY = v\n", "", "KEY", 0, " v"},
        Lookup{"TrailingBlanksAreKept", kOther, "KEY=v \t\n", "", "KEY", 0, "v \t"},
        Lookup{"HoldsAnEqualsSign", kOther, "KEY=a=b\n", "", "KEY", 0, "a=b"},
        Lookup{"QuotesAreKept", kOther, "KEY='v'\n", "", "KEY", 0, "'v'"},
        Lookup{"Empty", kOther, "KEY=\n", "", "KEY", 0, ""},
        Lookup{"WithoutEqualsSign", kOther, "KEY v\n", "", "KEY", kNone, ""},
        Lookup{"LastLineWithoutNewline", kOther, "KEY=v", "", "KEY", kNone, ""},
        Lookup{"CarriageReturnIsKept", kOther, "KEY=v\r\n", "", "KEY", 0, "v\r"},
        Lookup{"OnceMoreWithTwoSlashes", "/conf//config", "KEY='v=w'\n", "", "KEY", 0, "'v=w'"},
        Lookup{"OnceMoreWithALongerName", "/conf/config2", "KEY='v'\n", "", "KEY", 0, "'v'"},
        Lookup{"OnceMoreWithAShorterName", "/conf/confi", "KEY='v'\n", "", "KEY", 0, "'v'"},
        Lookup{"OnceMoreWithADot", "/conf/./config", "KEY='v'\n", "", "KEY", 0, "'v'"},
        Lookup{"OnceMoreInAnotherFolder", "/tmp/config", "KEY='v'\n", "", "KEY", 0, "'v'"},
        Lookup{"OnceMoreInOtherCase", "/conf/Config", "KEY='v'\n", "", "KEY", 0, "'v'"}),
    name_of);

// Sections ------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    Section, IniFile,
    testing::Values(
        Lookup{"IsSkippedTo", kConfig, "KEY='0'\n[A]\nKEY='1'\n", "[A]", "KEY", 0, "1"},
        Lookup{"MatchesAsPrefix", kConfig, "KEY='0'\n[AB]\nKEY='1'\n", "[A", "KEY", 0, "1"},
        Lookup{"FirstMatchCounts", kConfig, "[AB]\nKEY='1'\n[A]\nKEY='2'\n", "[A", "KEY", 0, "1"},
        Lookup{"NotFound", kConfig, "KEY='0'\n[A]\nKEY='1'\n", "[B]", "KEY", kNone, ""},
        Lookup{"LineShorterThanSection", kConfig, "[A\nKEY='1'\n", "[A]", "KEY", kNone, ""},
        Lookup{"OtherCase", kConfig, "[a]\nKEY='1'\n", "[A]", "KEY", kNone, ""},
        Lookup{"Indented", kConfig, " [A]\nKEY='1'\n", "[A]", "KEY", kNone, ""},
        Lookup{"InTheMiddleOfALine", kConfig, "x[A]\nKEY='1'\n", "[A]", "KEY", kNone, ""},
        Lookup{"OnTheLastLine", kConfig, "KEY='0'\n[A]\n", "[A]", "KEY", kNone, ""},
        Lookup{"HeaderLineIsConsumed", kConfig, "KEY='1'\nKEY='2'\n", "KEY", "KEY", 0, "2"},
        Lookup{"HeaderLineIsConsumedForAnEmptyKey", kConfig, "[A]'1'\nX='2'\n", "[A]", "", 0, "2"},
        Lookup{"KeyBeforeItOnly", kConfig, "KEY='0'\n[A]\nX='1'\n", "[A]", "KEY", kNone, ""},
        Lookup{"OtherSectionsDoNotEndTheSearch", kConfig, "[A]\n[B]\nKEY='1'\n", "[A]", "KEY", 0,
               "1"},
        Lookup{"MayHoldItsNewline", kConfig, "[A]x\nKEY='1'\n[A]\nKEY='2'\n", "[A]\n", "KEY", 0,
               "2"},
        Lookup{"Elsewhere", kOther, "KEY=0\n[A]\nKEY=1\n", "[A]", "KEY", 0, "1"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    SiteSection, IniFile,
    testing::Values(
        Lookup{"EndsTheSearch", kConfig, "A='1'\n" + kSite + "01]\nKEY='1'\n", "", "KEY", kNone,
               ""},
        Lookup{"EndsTheSearchElsewhere", kOther, kSite + "01]\nKEY=1\n", "", "KEY", kNone, ""},
        Lookup{"KeyBeforeIt", kConfig, "KEY='0'\n" + kSite + "01]\nKEY='1'\n", "", "KEY", 0, "0"},
        Lookup{"OfEightBytesAlone", kConfig, kSite + "\nKEY='1'\n", "", "KEY", kNone, ""},
        Lookup{"OfSevenBytesIsNone", kConfig, kSite.substr(0, 7) + "\nKEY='1'\n", "", "KEY", 0,
               "1"},
        Lookup{"InTheMiddleOfALineIsNone", kConfig, "x" + kSite + "\nKEY='1'\n", "", "KEY", 0, "1"},
        Lookup{"IndentedIsNone", kConfig, " " + kSite + "01]\nKEY='1'\n", "", "KEY", 0, "1"},
        Lookup{"InUtf8IsNone", kConfig, hex("5B E6 8B A0 E7 82 B9 49 44 23") + "\nKEY='1'\n", "",
               "KEY", 0, "1"},
        Lookup{"EndsTheSearchOfASection", kConfig, "[A]\nX='1'\n" + kSite + "01]\nKEY='1'\n", "[A]",
               "KEY", kNone, ""},
        Lookup{"IsConsumedAsTheSection", kConfig,
               kSite + "01]\nKEY='1'\n" + kSite + "02]\nKEY='2'\n", kSite + "01]", "KEY", 0, "1"},
        Lookup{"OthersAreSkippedOnTheWayToTheSection", kConfig,
               kSite + "01]\nKEY='1'\n" + kSite + "02]\nKEY='2'\n", kSite + "02]", "KEY", 0, "2"},
        Lookup{"NextOneEndsTheSearch", kConfig, kSite + "01]\nX='1'\n" + kSite + "02]\nKEY='2'\n",
               kSite + "01]", "KEY", kNone, ""},
        Lookup{"AnyOfThem", kConfig, "KEY='0'\n" + kSite + "07]\nKEY='7'\n", kSite, "KEY", 0, "7"},
        Lookup{"RightBehindTheOther", kConfig, kSite + "01]\n" + kSite + "02]\nKEY='2'\n", kSite,
               "KEY", kNone, ""},
        Lookup{"WinsOverAKeyThatMatchesIt", kConfig, kSite + "01]='1'\n", "", kSite, kNone, ""},
        Lookup{"WinsOverAShortKeyThatMatchesIt", kConfig, kSite + "01]='1'\n[='2'\n", "", "[",
               kNone, ""}),
    name_of);

std::vector<Lookup> spoilt_site_sections()
{
    static const char* const kNames[] = {"Byte0", "Byte1", "Byte2", "Byte3",
                                         "Byte4", "Byte5", "Byte6", "Byte7"};
    std::vector<Lookup> all;
    for (size_t i = 0; i < 8; ++i) {
        Bytes spoilt = kSite;
        spoilt[i] = static_cast<char>(spoilt[i] ^ 0x20);
        all.push_back({kNames[i], kConfig, spoilt + "01]\nKEY='1'\n", "", "KEY", 0, "1"});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(SiteSectionSpoiltIn, IniFile, testing::ValuesIn(spoilt_site_sections()),
                         name_of);

// Long lines, in pieces of 1023 bytes ----------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    Piece, IniFile,
    testing::Values(
        Lookup{"LineOf1022Before", kConfig, run(1022) + "\nKEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"LineOf1023Before", kConfig, run(1023) + "\nKEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"LineOf1024Before", kConfig, run(1024) + "\nKEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"LineOf2046Before", kConfig, run(2046) + "\nKEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"LineOf5000Before", kConfig, run(5000) + "\nKEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"KeyAtOffset1022", kConfig, run(1022) + "KEY='v'\n", "", "KEY", kNone, ""},
        Lookup{"KeyAtOffset1023", kConfig, run(1023) + "KEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"KeyAtOffset1024", kConfig, run(1024) + "KEY='v'\n", "", "KEY", kNone, ""},
        Lookup{"KeyAtOffset2045", kConfig, run(2045) + "KEY='v'\n", "", "KEY", kNone, ""},
        Lookup{"KeyAtOffset2046", kConfig, run(2046) + "KEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"KeyAtOffset4092", kConfig, run(4092) + "KEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"KeyAtOffset1023Elsewhere", kOther, run(1023) + "KEY=v\n", "", "KEY", 0, "v"},
        Lookup{"KeyBrokenBetweenTwo", kConfig, run(1021) + "KEY='v'\n", "", "KEY", kNone, ""},
        // KEY=' and the closing quote take 6 of the 1023 bytes.
        Lookup{"LongestQuotedValue", kConfig, "KEY='" + run(1017) + "'\n", "", "KEY", 0, run(1017)},
        Lookup{"QuoteInTheNextPiece", kConfig, "KEY='" + run(1018) + "'\n", "", "KEY", kNone, ""},
        Lookup{"QuoteFarBehind", kConfig, "KEY='" + run(3000) + "'\nKEY='v'\n", "", "KEY", kNone,
               ""},
        Lookup{"LongestValueOfAll", kConfig, "'" + run(1021) + "'\n", "", "", 0, run(1021)},
        // KEY= and the newline take 5 of the 1023 bytes.
        Lookup{"LongestPlainValue", kOther, "KEY=" + run(1018) + "\n", "", "KEY", 0, run(1018)},
        Lookup{"NewlineInTheNextPiece", kOther, "KEY=" + run(1019) + "\n", "", "KEY", kNone, ""},
        Lookup{"LongestPlainValueOfAll", kOther, "=" + run(1021) + "\n", "", "", 0, run(1021)},
        Lookup{"OpeningDelimiterInTheNextPiece", kOther, "KEY" + run(1020) + "=v\n", "", "KEY",
               kNone, ""},
        Lookup{"SectionAtOffset1023", kConfig, "KEY='0'" + run(1016) + "[A]\nKEY='1'\n", "[A]",
               "KEY", 0, "1"},
        Lookup{"SectionAtOffset1022", kConfig, run(1022) + "[A]\nKEY='1'\n", "[A]", "KEY", kNone,
               ""},
        Lookup{"RestOfALongSectionLineIsSearched", kConfig, "[A]" + run(1020) + "KEY='v'\n", "[A]",
               "KEY", 0, "v"},
        Lookup{"SiteSectionAtOffset1023", kConfig, run(1023) + kSite + "\nKEY='1'\n", "", "KEY",
               kNone, ""},
        Lookup{"SiteSectionAtOffset1022", kConfig, run(1022) + kSite + "\nKEY='1'\n", "", "KEY", 0,
               "1"},
        Lookup{"KeyOf1023Bytes", kOther, run(1023) + "=v\n" + run(1022) + "\n", "", run(1023),
               kNone, ""},
        Lookup{"KeyLongerThanAPiece", kOther, run(2000) + "=v\n", "", run(1024), kNone, ""},
        Lookup{"SectionLongerThanAPiece", kOther, run(2000) + "\nKEY=v\n", run(1024), "KEY", kNone,
               ""}),
    name_of);

// Zero bytes end a line's text early, the line itself goes on ------------------------------------

INSTANTIATE_TEST_SUITE_P(
    ZeroByte, IniFile,
    testing::Values(
        Lookup{"BeforeTheKey", kConfig, "\0KEY='1'\n"s, "", "KEY", kNone, ""},
        Lookup{"WithinTheKey", kConfig, "KE\0Y='1'\nKEY='2'\n"s, "", "KEY", 0, "2"},
        Lookup{"BehindTheKey", kConfig, "KEY\0='1'\nKEY='2'\n"s, "", "KEY", kNone, ""},
        Lookup{"WithinTheValue", kConfig, "KEY='a\0b'\nKEY='2'\n"s, "", "KEY", kNone, ""},
        Lookup{"BehindTheValue", kConfig, "KEY='a'\0'b'\n"s, "", "KEY", 0, "a"},
        Lookup{"WithinAPlainValue", kOther, "KEY=a\0b\nKEY=2\n"s, "", "KEY", kNone, ""},
        Lookup{"BeforeTheNewlineOfAPlainValue", kOther, "KEY=a\0\n"s, "", "KEY", kNone, ""},
        Lookup{"OnALineBefore", kConfig, "\0\nx\0y\nKEY='v'\n"s, "", "KEY", 0, "v"},
        Lookup{"CountsInThePiece", kConfig, "\0"s + run(1022) + "KEY='v'\n", "", "KEY", 0, "v"},
        Lookup{"EmptyKeyAtOne", kConfig, "\0'1'\nA='2'\n"s, "", "", kNone, ""},
        Lookup{"BehindTheSection", kConfig, "[A]\0\nKEY='1'\n"s, "[A]", "KEY", 0, "1"},
        Lookup{"WithinTheSection", kConfig, "[\0A]\nKEY='1'\n"s, "[A]", "KEY", kNone, ""},
        Lookup{"BeforeASiteSection", kConfig, "\0"s + kSite + "\nKEY='1'\n", "", "KEY", 0, "1"},
        Lookup{"BehindASiteSection", kConfig, kSite + "\0\nKEY='1'\n"s, "", "KEY", kNone, ""},
        Lookup{"NothingElse", kConfig, run(3000, '\0'), "", "KEY", kNone, ""},
        Lookup{"NothingElseAndAnEmptyKey", kConfig, run(3000, '\0'), "", "", kNone, ""}),
    name_of);

} // namespace
