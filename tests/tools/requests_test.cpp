// The requests described as data, against the drivers' descriptions and the model of the devices.
#include "catalogue/requests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "sim/fpga_model.h"
#include "sim/rtc_model.h"

namespace
{

struct Expected {
    uint32_t number;
    const char* name;
    RequestArgument argument;
    size_t size;
    bool changes;
    const char*
        fields; // name, '<' where the driver fills it, offset, width and how many; no spares
};

constexpr Expected kExpected[] = {
    {0x6B01, "device information read", RequestArgument::kRecord, 8, false, "bytes<0/1x8"},
    {0x6B02, "status word read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B03, "word 03 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B04, "word 03 write", RequestArgument::kValue, 2, true, ""},
    {0x6B07, "control word read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B08, "control word write", RequestArgument::kValue, 2, true, ""},
    {0x6B09, "port flags read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B0A, "port flags write", RequestArgument::kValue, 2, true, ""},
    {0x6B0B, "enable word read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B0C, "enable word write", RequestArgument::kValue, 2, true, ""},
    {0x6B0F, "LED register A read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B10, "LED register A write", RequestArgument::kValue, 2, true, ""},
    {0x6B11, "LED register B read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B12, "LED register B write", RequestArgument::kValue, 2, true, ""},
    {0x6B21, "word 21 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B22, "word 22 write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x6B23, "own address read", RequestArgument::kRecord, 4, false, "address<0/1x4"},
    {0x6B24, "own address write", RequestArgument::kRecord, 4, true, "address@0/1x4"},
    {0x6B27, "word 27 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B28, "word 28 write", RequestArgument::kValue, 2, true, ""},
    {0x6B29, "own identifier read", RequestArgument::kRecord, 2, false, "id<0/2"},
    {0x6B2A, "word 2A write", RequestArgument::kValue, 2, true, ""},
    {0x6B2D, "group word read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B2E, "group word write", RequestArgument::kValue, 2, true, ""},
    {0x6B35, "word 35 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B36, "word 35 write", RequestArgument::kValue, 2, true, ""},
    {0x6B39, "address read", RequestArgument::kRecord, 36, false, "id@0/4 mode@4/4 value<8/4"},
    {0x6B3A, "address write", RequestArgument::kRecord, 36, true, "id@0/4 mode@4/4 value@8/4"},
    {0x6B3B, "unit bitmap E read", RequestArgument::kRecord, 4, false, "bits<0/4"},
    {0x6B3D, "unit bitmap D read", RequestArgument::kRecord, 4, false, "bits<0/4"},
    {0x6B3E, "unit words read", RequestArgument::kRecord, 16, false,
     "unit@0/4 first<4/2 second<6/2 page@8/2"},
    {0x6B40, "word 40 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B41, "word 41 write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x6B42, "register read", RequestArgument::kRecord, 8, false, "address@0/4 value<4/4"},
    {0x6B43, "register write", RequestArgument::kRecord, 8, true, "address@0/4 value@4/4"},
    {0x6B48, "word 48 read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B49, "word 48 write", RequestArgument::kValue, 2, true, ""},
    {0x6B4A, "identifier entry read", RequestArgument::kRecord, 12, false,
     "id@0/2 field_a<2/2 field_b<6/2 field_c<8/2"},
    {0x6B4B, "identifier entry write", RequestArgument::kRecord, 12, true,
     "id@0/2 field_a@2/2 field_b@6/2 field_c@8/2"},
    {0x6B4C, "identifier value read", RequestArgument::kRecord, 16, false,
     "id@0/4 select@10/2 value<12/2"},
    {0x6B4E, "word 4E read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B4F, "LED register C read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B50, "LED register C write", RequestArgument::kValue, 2, true, ""},
    {0x6B51, "channel word read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B52, "channel word write", RequestArgument::kValue, 2, true, ""},
    {0x6B5C, "own address set read", RequestArgument::kRecord, 16, false, "set<0/1x16"},
    {0x6B5D, "own address set write", RequestArgument::kRecord, 16, true, "set@0/1x16"},
    {0x6B5E, "address set read", RequestArgument::kRecord, 36, false, "id@0/4 mode@4/4 set<12/4x4"},
    {0x6B5F, "address set write", RequestArgument::kRecord, 36, true, "id@0/4 mode@4/4 set@12/4x4"},
    {0x6B60, "port entry read", RequestArgument::kRecord, 8, false,
     "address@0/2 flag@2/2 value<4/2"},
    {0x6B61, "port entry write", RequestArgument::kRecord, 8, true,
     "address@0/2 flag@2/2 value@4/2"},
    {0x6B62, "word 62 write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x6B63, "ranged port entry write", RequestArgument::kRecord, 8, true,
     "address@0/2 flag@2/2 value@4/2"},
    {0x6B67, "address pair read", RequestArgument::kRecord, 20, false,
     "index@0/4 address<8/1x4 address_6<12/1x6"},
    {0x6B68, "address pair write", RequestArgument::kRecord, 20, true,
     "index@0/4 address@8/1x4 address_6@12/1x6"},
    {0x6B69, "pair enable write", RequestArgument::kRecord, 8, true, "enable@0/1x2 select@4/1"},
    {0x6B6A, "rule read", RequestArgument::kRecord, 80, false,
     "index@0/2 present<2/2 value<4/2 address_a<8/4 prefix_a<12/1 address_b<16/4 "
     "prefix_b<20/1 word_c<22/2 word_d<24/2 byte_e<26/1 class_bits<33/1 "
     "switches<36/1x4 address_6_a<48/1x6 address_6_b<54/1x6 companion_c<62/1 "
     "companion_d<63/1 address_6_a_present<66/1 address_6_b_present<67/1 "
     "enabled<76/1"},
    {0x6B6B, "rule write", RequestArgument::kRecord, 80, true,
     "index@0/2 present@2/2 value@4/2 address_a@8/4 prefix_a@12/1 address_b@16/4 "
     "prefix_b@20/1 word_c@22/2 word_d@24/2 byte_e@26/1 class_bits@33/1 "
     "switches@36/1x4 address_6_a@48/1x6 address_6_b@54/1x6 companion_c@62/1 "
     "companion_d@63/1 address_6_a_present@66/1 address_6_b_present@67/1 "
     "enabled@76/1"},
    {0x6B6E, "driver control read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6B6F, "driver control write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x6B70, "control block write", RequestArgument::kRecord, 16, true, "bytes@0/1x16"},
    {0x6B71, "key bytes write", RequestArgument::kRecord, 12, true, "number@0/1 bytes@1/1x4"},
    {0x6B72, "switch port read", RequestArgument::kRecord, 8, false,
     "port@0/1 full_duplex<2/1 speed100<3/1 link<4/1"},
    {0x6B73, "switch port write", RequestArgument::kRecord, 8, true,
     "port@0/1 full_duplex@2/1 speed100@3/1 link@4/1"},
    {0x6B74, "byte action", RequestArgument::kValue, 1, true, ""},
    {0x6B77, "pair words write", RequestArgument::kRecord, 8, true, "words@0/4x2"},
    {0x6B78, "switch tables write 2", RequestArgument::kRecord, 260, true,
     "status@0/2 normal@2/1x128 priority@130/1x128"},
    {0x6B79, "switch tables write 1", RequestArgument::kRecord, 260, true,
     "status@0/2 normal@2/1x128 priority@130/1x128"},
    {0x6B7A, "word action", RequestArgument::kValue, 2, true, ""},
    {0x6B83, "indexed word read", RequestArgument::kRecord, 8, false, "index@0/4 value<4/4"},
    {0x6B84, "indexed word write", RequestArgument::kRecord, 8, true, "index@0/4 value@4/4"},
    {0x6B85, "address table read", RequestArgument::kRecord, 24, false,
     "index@0/4 valid<8/4 address<12/1x4 address_6<16/1x6 attribute<22/1"},
    {0x6B86, "address table write", RequestArgument::kRecord, 24, true,
     "index@0/4 valid@8/4 address@12/1x4 address_6@16/1x6 attribute@22/1"},
    {0x6B87, "PHY read", RequestArgument::kRecord, 8, false, "address@0/2 number@2/2 value<6/2"},
    {0x6B88, "PHY write", RequestArgument::kRecord, 8, true, "address@0/2 number@2/2 value@4/2"},
    {0x6B8D, "port mask read", RequestArgument::kRecord, 4, false, "bits<0/4"},
    {0x6B8E, "port mask write", RequestArgument::kValue, 4, true, ""},
    {0x6B98, "port 0 PHY read", RequestArgument::kRecord, 8, false,
     "address@0/2 number@2/2 value<6/2"},
    {0x6B99, "port 0 PHY write", RequestArgument::kRecord, 8, true,
     "address@0/2 number@2/2 value@4/2"},
    {0x6B9A, "counter read", RequestArgument::kRecord, 12, true,
     "index@0/4 value<4/4 selector@8/4"},
    {0x6B9B, "small counter block write", RequestArgument::kRecord, 68, true, "bytes@0/1x68"},
    {0x6B9C, "large counter block write", RequestArgument::kRecord, 160, true, "bytes@0/1x160"},
    {0x6B9F, "counter write", RequestArgument::kRecord, 12, true,
     "index@0/4 value@4/4 selector@8/4"},
    {0x6BA0, "other counter read", RequestArgument::kRecord, 12, true,
     "index@0/4 value<4/4 selector@8/4"},
    {0x6BA1, "other counter write", RequestArgument::kRecord, 12, true,
     "index@0/4 value@4/4 selector@8/4"},
    {0x6BA2, "driver state read", RequestArgument::kNothing, 0, false, ""},
    {0x6BA3, "extended status A read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6BA4, "extended control A write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x6BA5, "extended status B read", RequestArgument::kRecord, 2, false, "word<0/2"},
    {0x6BA6, "extended control B write", RequestArgument::kRecord, 2, true, "word@0/2"},
    {0x40047014, "clock status write", RequestArgument::kRecord, 4, true, "status@0/4"},
    {0x4024700A, "clock time write", RequestArgument::kRecord, 36, true,
     "second@0/4 minute@4/4 hour@8/4 day@12/4 month@16/4 year@20/4 weekday@24/4 "
     "day_of_year@28/4 daylight_saving@32/4"},
    {0x80047013, "clock status read", RequestArgument::kRecord, 4, false, "status<0/4"},
    {0x80247009, "clock time read", RequestArgument::kRecord, 36, false,
     "second<0/4 minute<4/4 hour<8/4 day<12/4 month<16/4 year<20/4 weekday<24/4 "
     "day_of_year<28/4 daylight_saving<32/4"},
};

std::string fields_text(const RequestDescription& request)
{
    std::string text;
    RequestField field{};
    for (const char* rest = request.layout; (rest = requestField_next(rest, field)) != nullptr;) {
        if (field.name == "-") {
            continue;
        }
        text += (text.empty() ? "" : " ") + std::string(field.name) +
                (requestField_isFilled(request, field) ? "<" : "@") + std::to_string(field.offset) +
                "/" + std::to_string(field.width);
        text += field.count == 1 ? "" : "x" + std::to_string(field.count);
    }
    return text;
}

TEST(Requests, AreDescribedAsTheDriversTakeThem)
{
    for (const Expected& expected : kExpected) {
        const RequestDescription* request = request_find(expected.number);
        ASSERT_NE(request, nullptr) << expected.name;
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(request->number, expected.number);
        EXPECT_EQ(std::string(request->name) + request_verb(*request), expected.name);
        EXPECT_EQ(request->argument, expected.argument);
        EXPECT_EQ(request->size, expected.size);
        EXPECT_EQ(request->changes, expected.changes);
        EXPECT_EQ(fields_text(*request), expected.fields);
        EXPECT_STREQ(request_device(*request),
                     expected.number < 0x10000 ? "/dev/fpga" : "/dev/rtc");
    }
}

TEST(Requests, AreAllThereAndNoOthers)
{
    std::set<uint32_t> expected;
    for (const Expected& row : kExpected) {
        EXPECT_TRUE(expected.insert(row.number).second) << row.name;
    }
    for (uint32_t number = 0; number < 0x10000; ++number) {
        EXPECT_EQ(request_find(number) != nullptr, expected.count(number) == 1) << number;
        EXPECT_EQ(requestForm_find(number) != nullptr, expected.count(number) == 1) << number;
    }
    for (const uint32_t number :
         {0x40047013U, 0x40047015U, 0x80247008U, 0x8024700AU, 0xFFFFFFFFU}) {
        EXPECT_EQ(request_find(number), nullptr) << number;
    }
}

// The model of the devices says it by itself: how a request takes its argument, and which bytes the
// driver fills.
TEST(Requests, AreThoseOfTheModel)
{
    for (const Expected& expected : kExpected) {
        SCOPED_TRACE(expected.name);
        const RequestForm* form = expected.number < 0x10000 ? requestForm_find(expected.number)
                                                            : rtcRequestForm_find(expected.number);
        const RequestDescription* request = request_find(expected.number);
        ASSERT_TRUE(form != nullptr && request != nullptr);
        const bool record = request->argument == RequestArgument::kRecord;
        EXPECT_EQ(request->size, form->size);
        EXPECT_EQ(record, form->argument == Argument::kWord || form->argument == Argument::kMap ||
                              form->argument == Argument::kRecord);
        EXPECT_EQ(request->argument == RequestArgument::kValue, form->argument == Argument::kValue);
        std::string filled(form->size, '.');
        RequestField field{};
        for (const char* rest = request->layout;
             (rest = requestField_next(rest, field)) != nullptr;) {
            for (size_t i = 0;
                 record && requestField_isFilled(*request, field) && i < field.width * field.count;
                 ++i) {
                filled[field.offset + i] = 'F';
            }
        }
        std::string fills(form->size, '.');
        std::fill_n(fills.begin() + static_cast<std::ptrdiff_t>(form->fills), form->fills_count,
                    'F');
        EXPECT_EQ(filled, fills);
    }
}

} // namespace
