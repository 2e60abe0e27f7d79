// Values of fields, as text and back.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "maint/fpga.h"
#include "tools/maintctl/json.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/text.h"
#include "tools/maintctl/values.h"

namespace
{

constexpr CodeName kCodes[] = {{0, "off"}, {1, "on"}, {7, "both"}};
constexpr CodeName kNumbersAsNames[] = {{0, "2"}, {2, "4"}};

template <size_t kCount> void codes_set(Field& field, const CodeName (&codes)[kCount])
{
    field.first_code = codes;
    field.code_count = kCount;
}

Field field_make(Kind kind, uint16_t width, uint8_t count, uint32_t least, uint32_t most)
{
    Field field{};
    field.name = "field";
    field.offset = 4;
    field.width = width;
    field.count = count;
    field.kind = kind;
    field.note = "";
    field.least = least;
    field.most = most;
    if (kind == Kind::kCode) {
        codes_set(field, kCodes);
    }
    return field;
}

const Field kByte = field_make(Kind::kNumber, 1, 1, 1, 31);
const Field kWord = field_make(Kind::kNumber, 4, 1, 0, 0xFFFFFFFF);
const Field kHexWord = field_make(Kind::kHex, 2, 1, 0, 0x0FFF);
const Field kBitWord = field_make(Kind::kBits, 4, 1, 0, 0xFF);
const Field kFlagByte = field_make(Kind::kFlag, 1, 1, 0, 1);
const Field kCodeByte = field_make(Kind::kCode, 1, 1, 0, 0xFF);
const Field kAddress = field_make(Kind::kIpv4, 4, 1, 0, 0);
const Field kSix = field_make(Kind::kAddress6, 6, 1, 0, 0);
const Field kLetters = field_make(Kind::kText, 4, 1, 0, 0);
const Field kPairs = field_make(Kind::kBytes, 3, 1, 0, 0);
const Field kFlags = field_make(Kind::kFlag, 1, 3, 0, 1);
const Field kWords = field_make(Kind::kNumber, 2, 2, 5, 900);
const Field kAddresses = field_make(Kind::kIpv4, 4, 2, 0, 0);

Field driver_sized(Field field)
{
    field.role = Role::kDriverSized;
    return field;
}

Field with_unit(Field field, Unit unit)
{
    field.unit = unit;
    return field;
}

struct Record {
    uint8_t bytes[DEVICE_RECORD_MAX];
};

// The field's bytes after reading, as pairs of digits; or why the value is refused.
std::string read(const Field& field, const std::string& text, int element = -1)
{
    Record record;
    memset(record.bytes, 0xAA, sizeof record.bytes);
    const Record before = record;
    char reason[kValueMax] = "";
    const char* wrong = value_read(field, element, text.c_str(), record.bytes, reason);
    if (wrong != nullptr) {
        EXPECT_EQ(memcmp(&record, &before, sizeof record), 0) << "changed by a refused " << text;
        return wrong;
    }
    const size_t size = size_t{field.width} * field.count;
    std::string pairs;
    for (size_t i = 0; i < sizeof record.bytes; ++i) {
        if (i < field.offset || i >= field.offset + size) {
            EXPECT_EQ(record.bytes[i], 0xAA) << "byte " << i << " changed by " << text;
        } else {
            char pair[3];
            snprintf(pair, sizeof pair, "%02x", record.bytes[i]);
            pairs += pair;
        }
    }
    return pairs;
}

std::string print(const Field& field, const std::string& bytes)
{
    Record record{};
    memcpy(record.bytes + field.offset, bytes.data(), bytes.size());
    char text[kValueMax];
    value_print(field, record.bytes, text);
    return text;
}

std::string json(const Field& field, const std::string& bytes)
{
    Record record{};
    memcpy(record.bytes + field.offset, bytes.data(), bytes.size());
    char text[kValueMax] = "";
    FILE* file = fmemopen(text, sizeof text, "w");
    Json json{file};
    value_json(json, field, record.bytes);
    fclose(file);
    return text;
}

constexpr const char* kNoNumber = "is not a number (decimal, or hexadecimal with 0x)";
constexpr const char* kZeroBefore =
    "begins with 0: write a decimal number without it, a hexadecimal one with 0x";
constexpr const char* kNoFlag = "is not 0 or 1 (off or on)";
constexpr const char* kNoPairs = "is not made of pairs of hexadecimal digits";
constexpr const char* kNoAddress = "is not an address such as 10.0.0.1";
constexpr const char* kNoAddress6 = "is not an address such as 02:00:00:00:00:01";

TEST(ValueRead, Numbers)
{
    EXPECT_EQ(read(kByte, "1"), "01");
    EXPECT_EQ(read(kByte, "31"), "1f");
    EXPECT_EQ(read(kByte, "0x1f"), "1f");
    EXPECT_EQ(read(kByte, "0X1F"), "1f");
    EXPECT_EQ(read(kByte, "0x0000000000000000001"), "01");
    EXPECT_EQ(read(kByte, "0"), "is not within 1 to 31");
    EXPECT_EQ(read(kByte, "32"), "is not within 1 to 31");
    EXPECT_EQ(read(kByte, "257"), "is not within 1 to 31");
    EXPECT_EQ(read(kByte, "4294967297"), "is not within 1 to 31");
    EXPECT_EQ(read(kByte, "18446744073709551617"), "is not within 1 to 31");
    EXPECT_EQ(read(kByte, "0x100000000000000000001"), "is not within 1 to 31");
    EXPECT_EQ(read(with_unit(kByte, Unit::kBytes), "32"), "is not within 1 to 31 bytes");
    EXPECT_EQ(read(kWord, "4294967295"), "ffffffff");
    EXPECT_EQ(read(kWord, "0x12345678"), "78563412");
    EXPECT_EQ(read(kWord, "4294967296"), "is not within 0 to 4294967295");
    for (const char* wrong : {"x", "-1", "+1", " 1", "1 ", "1x", "0x", "0xg", "1.5", "1e1", "ff",
                              "0b1", "1_0", "\xff", "0x-1", "0x 1", "one", "0x0x1"}) {
        EXPECT_EQ(read(kByte, wrong), kNoNumber) << wrong;
    }
    EXPECT_EQ(read(kByte, ""), "is empty");
    EXPECT_EQ(read(kByte, "017"), kZeroBefore);
    EXPECT_EQ(read(kByte, "09"), kZeroBefore);
    EXPECT_EQ(read(kWord, "00"), kZeroBefore);
    EXPECT_EQ(read(kWord, "0"), "00000000");
}

TEST(ValueRead, HexadecimalNumbersAndBits)
{
    EXPECT_EQ(read(kHexWord, "0x0fff"), "ff0f");
    EXPECT_EQ(read(kHexWord, "4095"), "ff0f");
    EXPECT_EQ(read(kHexWord, "0x1000"), "is not within 0x0000 to 0x0fff");
    EXPECT_EQ(read(kBitWord, "0xff"), "ff000000");
    EXPECT_EQ(read(kBitWord, "256"), "is not within 0x00000000 to 0x000000ff");
}

TEST(ValueRead, Flags)
{
    EXPECT_EQ(read(kFlagByte, "0"), "00");
    EXPECT_EQ(read(kFlagByte, "1"), "01");
    EXPECT_EQ(read(kFlagByte, "on"), "01");
    EXPECT_EQ(read(kFlagByte, "OFF"), "00");
    for (const char* wrong : {"2", "yes", "01", "o", "onn", "-1", "true"}) {
        EXPECT_EQ(read(kFlagByte, wrong), kNoFlag) << wrong;
    }
    EXPECT_EQ(read(kFlagByte, ""), "is empty");
}

TEST(ValueRead, Codes)
{
    EXPECT_EQ(read(kCodeByte, "off"), "00");
    EXPECT_EQ(read(kCodeByte, "Both"), "07");
    EXPECT_EQ(read(kCodeByte, "7"), "07");
    EXPECT_EQ(read(kCodeByte, "0x1"), "01");
    for (const char* wrong : {"2", "bot", "bothx", "07", "256", "4294967296"}) {
        EXPECT_EQ(read(kCodeByte, wrong), "is none of off (0), on (1), both (7)") << wrong;
    }
    EXPECT_EQ(read(kCodeByte, ""), "is empty");
    Field field = kCodeByte;
    codes_set(field, kNumbersAsNames); // a name goes before a number
    EXPECT_EQ(read(field, "2"), "00");
    EXPECT_EQ(read(field, "4"), "02");
    EXPECT_EQ(read(field, "0x2"), "02");
}

TEST(ValueRead, Ipv4)
{
    EXPECT_EQ(read(kAddress, "10.0.0.1"), "0a000001");
    EXPECT_EQ(read(kAddress, "255.254.253.0"), "fffefd00");
    for (const char* wrong :
         {"", "10.0.0", "10.0.0.", "10.0.0.1.", "10.0.0.1.1", "256.0.0.1", "10.0.0.1000",
          "10.0.0.010", "10.0.0.01", "10..0.1", "a.b.c.d", "10.0.0.1 ", " 10.0.0.1", "10,0,0,1",
          "0x0a000001", "10.0.0.1x", "10.0.0.4294967297", ".0.0.0"}) {
        EXPECT_EQ(read(kAddress, wrong), kNoAddress) << wrong;
    }
}

TEST(ValueRead, SixByteAddresses)
{
    EXPECT_EQ(read(kSix, "02:00:5e:00:00:fF"), "02005e0000ff");
    EXPECT_EQ(read(kSix, "02-00-5e-00-00-ff"), "02005e0000ff");
    for (const char* wrong : {"", "02:00:5e:00:00", "02:00:5e:00:00:f", "02:00:5e:00:00:ff:",
                              "02:00:5e:00:00-ff", "02:00:5e:00:00:fg", "0200.5e00.00ff",
                              "02005e0000ff", "02 00 5e 00 00 ff", "2:0:5e:0:0:ff:aaa"}) {
        EXPECT_EQ(read(kSix, wrong), kNoAddress6) << wrong;
    }
}

TEST(ValueRead, Text)
{
    constexpr const char* kLone =
        "has a \\ that is followed neither by \\ nor by x and two hexadecimal digits";
    EXPECT_EQ(read(kLetters, "AbC1"), "41624331");
    EXPECT_EQ(read(kLetters, "A"), "41000000");
    EXPECT_EQ(read(kLetters, ""), "00000000");
    EXPECT_EQ(read(kLetters, "a,b "), "612c6220");
    EXPECT_EQ(read(kLetters, "\\x00\\xfF\\\\z"), "00ff5c7a");
    EXPECT_EQ(read(kLetters, "\xe4"), "e4000000");
    EXPECT_EQ(read(kLetters, "abcde"), "has 5 characters, and no more than 4 fit");
    EXPECT_EQ(read(kLetters, "\\x41\\x41\\x41\\x41\\x41"),
              "has 5 characters, and no more than 4 fit");
    for (const char* wrong : {"\\", "a\\", "\\x", "\\x4", "\\xg0", "\\x4g", "\\n"}) {
        EXPECT_EQ(read(kLetters, wrong), kLone) << wrong;
    }
}

TEST(ValueRead, Bytes)
{
    EXPECT_EQ(read(kPairs, "0aFf00"), "0aff00");
    EXPECT_EQ(read(kPairs, "0aff"), "has 2 bytes, not 3");
    EXPECT_EQ(read(kPairs, "0aff0000"), "has 4 bytes, not 3");
    EXPECT_EQ(read(kPairs, ""), "has 0 bytes, not 3");
    for (const char* wrong : {"0aff0", "0", "0x0aff", "0aff0g", "g0aff0", "0a ff0", "0a:ff0"}) {
        EXPECT_EQ(read(kPairs, wrong), kNoPairs) << wrong;
    }
    EXPECT_EQ(read(driver_sized(kPairs), "0a"), "0a0000");
    EXPECT_EQ(read(driver_sized(kPairs), ""), "000000");
    EXPECT_EQ(read(driver_sized(kPairs), "0a0b0c"), "0a0b0c");
    EXPECT_EQ(read(driver_sized(kPairs), "0a0b0c0d"), "has 4 bytes, not up to 3");
}

TEST(ValueRead, Elements)
{
    EXPECT_EQ(read(kFlags, "1,0,on"), "010001");
    EXPECT_EQ(read(kFlags, "1", 0), "01aaaa");
    EXPECT_EQ(read(kFlags, "1", 2), "aaaa01");
    EXPECT_EQ(read(kFlags, "2", 2), kNoFlag);
    EXPECT_EQ(read(kFlags, "1,1,1", 2), kNoFlag);
    EXPECT_EQ(read(kWords, "5,900"), "05008403");
    EXPECT_EQ(read(kWords, "900", 1), "aaaa8403");
    EXPECT_EQ(read(kAddresses, "10.0.0.1,1.2.3.4"), "0a00000101020304");
    EXPECT_EQ(read(kFlags, "1"), "has 1 element, not 3");
    EXPECT_EQ(read(kFlags, "1,0"), "has 2 elements, not 3");
    EXPECT_EQ(read(kFlags, "1,0,1,1"), "has 4 elements, not 3");
    EXPECT_EQ(read(kFlags, ""), "has 1 element, not 3");
    EXPECT_EQ(read(kFlags, "1,0,"), "is wrong at [2]: it is empty");
    EXPECT_EQ(read(kFlags, "1,,1"), "is wrong at [1]: it is empty");
    EXPECT_EQ(read(kFlags, "1,x,1"), std::string("is wrong at [1]: x ") + kNoFlag);
    EXPECT_EQ(read(kWords, "5,4"), "is wrong at [1]: 4 is not within 5 to 900");
    EXPECT_EQ(read(kWords, "5,\n\xff"), std::string("is wrong at [1]: \\x0a\\xff ") + kNoNumber);
    EXPECT_EQ(read(kWords, "5," + std::string(5000, '7')),
              "is wrong at [1]: " + std::string(60, '7') + "... is not within 5 to 900");
    EXPECT_EQ(read(kWords, std::string(5000, ',')), "has 5001 elements, not 2");
}

TEST(ValuePrint, WritesEveryKindAsPeopleDo)
{
    EXPECT_EQ(print(kByte, "\x1f"), "31");
    EXPECT_EQ(print(kByte, "\xff"), "255"); // beyond its range, as it is
    EXPECT_EQ(print(kWord, "\xff\xff\xff\xff"), "4294967295");
    EXPECT_EQ(print(kHexWord, "\x0a"), "0x000a");
    EXPECT_EQ(print(kBitWord, "\x81"), "0x00000081");
    EXPECT_EQ(print(kFlagByte, "\x07"), "7");
    EXPECT_EQ(print(kCodeByte, "\x07"), "both");
    EXPECT_EQ(print(kCodeByte, "\x05"), "5");
    EXPECT_EQ(print(kAddress, "\x0a\xff\x01\x02"), "10.255.1.2");
    EXPECT_EQ(print(kSix, "\x02\xff\x01\x02\x03\x04"), "02:ff:01:02:03:04");
    EXPECT_EQ(print(kLetters, "Ab"), "Ab");
    EXPECT_EQ(print(kLetters, std::string("\0A\n\\", 4)), "\\x00A\\x0a\\\\");
    EXPECT_EQ(print(kLetters, "~\x7f\xe4 "), "~\\x7f\\xe4 ");
    EXPECT_EQ(print(kLetters, ""), "");
    EXPECT_EQ(print(kPairs, "\x0a\xff"), "0aff00");
    EXPECT_EQ(print(kFlags, std::string("\1\0\3", 3)), "1,0,3");
    EXPECT_EQ(print(kAddresses, "\1\2\3\4\5\6\7\x08"), "1.2.3.4,5.6.7.8");
}

TEST(ValueJson, WritesNumbersAsNumbersAndAllElseAsText)
{
    EXPECT_EQ(json(kByte, "\xff"), "255");
    EXPECT_EQ(json(kWord, "\xff\xff\xff\xff"), "4294967295");
    EXPECT_EQ(json(kHexWord, "\x0a"), "10");
    EXPECT_EQ(json(kCodeByte, "\x07"), "\"both\"");
    EXPECT_EQ(json(kCodeByte, "\x05"), "5");
    EXPECT_EQ(json(kAddress, "\x0a\xff\x01\x02"), "\"10.255.1.2\"");
    EXPECT_EQ(json(kSix, "\x02\xff\x01\x02\x03\x04"), "\"02:ff:01:02:03:04\"");
    EXPECT_EQ(json(kLetters, "A\"\\\n"), R"("A\"\\\u000a")");
    EXPECT_EQ(json(kPairs, "\x0a\xff"), "\"0aff00\"");
    EXPECT_EQ(json(kFlags, std::string("\1\0\3", 3)), "[1,0,3]");
    EXPECT_EQ(json(kAddresses, "\1\2\3\4\5\6\7\x08"), R"(["1.2.3.4","5.6.7.8"])");
}

// Whether the command may get what stands in the record: the description's words, put anew.
bool in_range(const Field& field, const uint8_t* record)
{
    for (unsigned element = 0; element < field.count; ++element) {
        uint32_t number = 0;
        const uint8_t* bytes = record + field.offset + size_t{element} * field.width;
        switch (field.kind) {
        case Kind::kNumber:
        case Kind::kHex:
        case Kind::kBits:
        case Kind::kFlag:
            memcpy(&number, bytes, field.width);
            if (number < field.least || number > field.most) {
                return false;
            }
            break;
        case Kind::kCode:
            memcpy(&number, bytes, field.width);
            if (std::none_of(field.codes().begin(), field.codes().end(),
                             [&](const CodeName& code) { return code.code == number; })) {
                return false;
            }
            break;
        default:
            break;
        }
    }
    return true;
}

// Bytes that are often in range: each element one of its extremes, or anything.
void field_fill(const Field& field, uint8_t* record, std::mt19937& random)
{
    for (unsigned element = 0; element < field.count; ++element) {
        uint8_t* bytes = record + field.offset + size_t{element} * field.width;
        for (unsigned i = 0; i < field.width; ++i) {
            bytes[i] = static_cast<uint8_t>(random() % 3 != 0 ? random() : 0);
        }
        if (field.width > 4 || random() % 4 == 0) {
            continue;
        }
        uint32_t number = 0;
        memcpy(&number, bytes, field.width);
        if (!field.codes().empty()) {
            number = field.codes()[number % field.codes().size()].code;
            memcpy(bytes, &number, field.width);
        } else if (field.most != 0) {
            number = static_cast<uint32_t>(field.least +
                                           number % (uint64_t{field.most} - field.least + 1));
            memcpy(bytes, &number, field.width);
        }
    }
}

TEST(Values, OfEveryFieldAreReadAsTheyWereWritten)
{
    std::mt19937 random(20261);
    size_t read_again = 0;
    size_t refused = 0;
    size_t fields = 0;
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            for (const Field& field : command.fields()) {
                ++fields;
                for (int i = 0; i < 50; ++i) {
                    Record record{};
                    field_fill(field, record.bytes, random);
                    char text[kValueMax];
                    value_print(field, record.bytes, text);
                    ASSERT_LT(strlen(text), kValueMax - 1) << command.name << ' ' << field.name;
                    Record again{};
                    char reason[kValueMax] = "";
                    const char* wrong = value_read(field, -1, text, again.bytes, reason);
                    ASSERT_EQ(wrong == nullptr, in_range(field, record.bytes))
                        << command.name << ' ' << field.name << '=' << text << ' ' << reason;
                    if (wrong == nullptr) {
                        ASSERT_EQ(memcmp(&record, &again, sizeof record), 0)
                            << command.name << ' ' << field.name << '=' << text;
                        ++read_again;
                    } else {
                        ++refused;
                    }
                }
            }
        }
    }
    EXPECT_GT(fields, 400U);
    EXPECT_GT(read_again, 10000U);
    EXPECT_GT(refused, 500U);
}

TEST(Text, IsCutAtTheEndOfItsBuffer)
{
    char buffer[8];
    Text text = text_in(buffer);
    text_add(text, "%s", "abc");
    text_add(text, "%s", "defghi");
    EXPECT_STREQ(buffer, "abcdefg");
    text_addChar(text, 'x');
    text_add(text, "%d", 5);
    EXPECT_STREQ(buffer, "abcdefg");
    text = text_in(buffer);
    text_addTyped(text, "a\nbcd", 5);
    EXPECT_STREQ(buffer, "a\\x0abc");
}

} // namespace
