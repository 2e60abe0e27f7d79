// The simulated device's own tests: the form of each request.
#include <algorithm>

#include "board/fpga_self_fixture.h"

namespace
{

constexpr Argument kWord = Argument::kWord;
constexpr Argument kMap = Argument::kMap;
constexpr Argument kRecord = Argument::kRecord;
constexpr Argument kValue = Argument::kValue;

// Every request once more: number, kind of argument, bytes, and the bytes that the driver fills.
// Where the size is the driver's own affair it is one word, or what the command provides.
constexpr RequestForm kForms[] = {
    {0x6B01, kRecord, 8, 0, 8},   {0x6B02, kWord, 2, 0, 2},
    {0x6B03, kWord, 2, 0, 2},     {0x6B04, kValue, 2, 0, 0},
    {0x6B07, kWord, 2, 0, 2},     {0x6B08, kValue, 2, 0, 0},
    {0x6B09, kWord, 2, 0, 2},     {0x6B0A, kValue, 2, 0, 0},
    {0x6B0B, kWord, 2, 0, 2},     {0x6B0C, kValue, 2, 0, 0},
    {0x6B0F, kWord, 2, 0, 2},     {0x6B10, kValue, 2, 0, 0},
    {0x6B11, kWord, 2, 0, 2},     {0x6B12, kValue, 2, 0, 0},
    {0x6B21, kWord, 2, 0, 2},     {0x6B22, kRecord, 2, 0, 0},
    {0x6B23, kRecord, 4, 0, 4},   {0x6B24, kRecord, 4, 0, 0},
    {0x6B27, kWord, 2, 0, 2},     {0x6B28, kValue, 2, 0, 0},
    {0x6B29, kWord, 2, 0, 2},     {0x6B2A, kValue, 2, 0, 0},
    {0x6B2D, kWord, 2, 0, 2},     {0x6B2E, kValue, 2, 0, 0},
    {0x6B35, kWord, 2, 0, 2},     {0x6B36, kValue, 2, 0, 0},
    {0x6B39, kRecord, 36, 8, 4},  {0x6B3A, kRecord, 36, 0, 0},
    {0x6B3B, kMap, 4, 0, 4},      {0x6B3D, kMap, 4, 0, 4},
    {0x6B3E, kRecord, 16, 4, 4},  {0x6B40, kWord, 2, 0, 2},
    {0x6B41, kRecord, 2, 0, 0},   {0x6B42, kRecord, 8, 4, 4},
    {0x6B43, kRecord, 8, 0, 0},   {0x6B48, kWord, 2, 0, 2},
    {0x6B49, kValue, 2, 0, 0},    {0x6B4A, kRecord, 12, 2, 10},
    {0x6B4B, kRecord, 12, 0, 0},  {0x6B4C, kRecord, 16, 12, 2},
    {0x6B4E, kWord, 2, 0, 2},     {0x6B4F, kWord, 2, 0, 2},
    {0x6B50, kValue, 2, 0, 0},    {0x6B51, kWord, 2, 0, 2},
    {0x6B52, kValue, 2, 0, 0},    {0x6B5C, kRecord, 16, 0, 16},
    {0x6B5D, kRecord, 16, 0, 0},  {0x6B5E, kRecord, 36, 12, 16},
    {0x6B5F, kRecord, 36, 0, 0},  {0x6B60, kRecord, 8, 4, 2},
    {0x6B61, kRecord, 8, 0, 0},   {0x6B62, kRecord, 2, 0, 0},
    {0x6B63, kRecord, 8, 0, 0},   {0x6B67, kRecord, 20, 8, 12},
    {0x6B68, kRecord, 20, 0, 0},  {0x6B69, kRecord, 8, 0, 0},
    {0x6B6A, kRecord, 80, 2, 78}, {0x6B6B, kRecord, 80, 0, 0},
    {0x6B6E, kWord, 2, 0, 2},     {0x6B6F, kRecord, 2, 0, 0},
    {0x6B70, kRecord, 16, 0, 0},  {0x6B71, kRecord, 12, 0, 0},
    {0x6B72, kRecord, 8, 1, 7},   {0x6B73, kRecord, 8, 0, 0},
    {0x6B74, kValue, 1, 0, 0},    {0x6B77, kRecord, 8, 0, 0},
    {0x6B78, kRecord, 260, 0, 0}, {0x6B79, kRecord, 260, 0, 0},
    {0x6B7A, kValue, 2, 0, 0},    {0x6B83, kRecord, 8, 4, 4},
    {0x6B84, kRecord, 8, 0, 0},   {0x6B85, kRecord, 24, 4, 20},
    {0x6B86, kRecord, 24, 0, 0},  {0x6B87, kRecord, 8, 6, 2},
    {0x6B88, kRecord, 8, 0, 0},   {0x6B8D, kMap, 4, 0, 4},
    {0x6B8E, kValue, 4, 0, 0},    {0x6B98, kRecord, 8, 6, 2},
    {0x6B99, kRecord, 8, 0, 0},   {0x6B9A, kRecord, 12, 4, 4},
    {0x6B9B, kRecord, 68, 0, 0},  {0x6B9C, kRecord, 160, 0, 0},
    {0x6B9F, kRecord, 12, 0, 0},  {0x6BA0, kRecord, 12, 4, 4},
    {0x6BA1, kRecord, 12, 0, 0},  {0x6BA2, Argument::kNothing, 0, 0, 0},
    {0x6BA3, kWord, 2, 0, 2},     {0x6BA4, kRecord, 2, 0, 0},
    {0x6BA5, kWord, 2, 0, 2},     {0x6BA6, kRecord, 2, 0, 0},
};

TEST_F(FpgaSelf, KnowsTheFormOfEveryRequestAndNoOtherRequest)
{
    for (uint32_t number = 0x6B00; number <= 0x6BFF; ++number) {
        SCOPED_TRACE(number);
        const auto* known =
            std::find_if(std::begin(kForms), std::end(kForms),
                         [=](const RequestForm& row) { return row.number == number; });
        const RequestForm* form = requestForm_find(number);
        ASSERT_EQ(form != nullptr, known != std::end(kForms));
        if (form != nullptr) {
            EXPECT_EQ(form->number, known->number);
            EXPECT_EQ(form->argument, known->argument);
            EXPECT_EQ(form->size, known->size);
            EXPECT_EQ(form->fills, known->fills);
            EXPECT_EQ(form->fills_count, known->fills_count);
        }
    }
}

TEST_F(FpgaSelf, FillsTheBytesOfItsFormAndNoOther)
{
    for (const RequestForm& form : kForms) {
        if (form.argument == kValue || form.argument == Argument::kNothing) {
            continue;
        }
        SCOPED_TRACE(form.number);
        board.fpga = FpgaModel(); // every state is 0
        Bytes expected = pattern(kRoom);
        expected.replace(form.fills, form.fills_count, form.fills_count, '\0');
        EXPECT_EQ(answer(form.number, pattern(kRoom)), expected);
    }
}

TEST_F(FpgaSelf, ShowsTheWholeRecordInTheTrace)
{
    for (const RequestForm& form : kForms) {
        if (form.argument == Argument::kNothing) {
            continue;
        }
        board.restart();
        Bytes record = pattern(kRoom);
        request(form.number, record);
        ASSERT_EQ(board.calls.size(), 3U);
        if (form.argument != kValue) {
            EXPECT_EQ(board.calls[1],
                      record_read(form.number, pattern(kRoom).substr(0, form.size)).call);
        }
    }
}

// A word or bitmap at the beginning of a record that is the driver's affair.
TEST_F(FpgaSelf, FillsMoreThanAWordWhereItIsTold)
{
    board.fpga.words = {{0x6B29, 0x1234}, {0x6B3B, 0x89ABCDEF}, {0x6B03, 0x5678}};
    board.fpga.filled = {{0x6B29, 10}, {0x6B3B, 20}};
    const Bytes after = pattern(kRoom);
    EXPECT_EQ(answer(0x6B29, after), le16(0x1234) + Bytes(8, '\xEE') + after.substr(10));
    EXPECT_EQ(answer(0x6B3B, after), le32(0x89ABCDEF) + Bytes(16, '\xEE') + after.substr(20));
    EXPECT_EQ(answer(0x6B03, after), le16(0x5678) + after.substr(2));
}

} // namespace
