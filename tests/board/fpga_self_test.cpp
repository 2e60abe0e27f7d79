// The simulated device's own tests, and those of the proof that the command tests rest on: what
// they promise, before any command is tested with them.
#include <gtest/gtest-spi.h>

#include <algorithm>

#include "device/device_test.h"
#include "device/fpga_device.h"

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

// Longer than any record, to show what a request fills beyond its own.
constexpr size_t kRoom = 300;

class FpgaSelf : public DeviceTest
{
  protected:
    int request(uint32_t number, Bytes& record)
    {
        const Fpga fpga = fpga_open(FpgaAccess::kWrite);
        const int result = fpga_request(fpga, number, record.data());
        fpga_close(fpga);
        return result;
    }

    Bytes answer(uint32_t number, Bytes record)
    {
        EXPECT_EQ(request(number, record), 0);
        return record;
    }

    int send(uint32_t number, uint32_t value)
    {
        const Fpga fpga = fpga_open(FpgaAccess::kWrite);
        const int result = fpga_requestValue(fpga, number, value);
        fpga_close(fpga);
        return result;
    }

    // A word as the driver gives it for this request.
    uint32_t word(uint32_t number)
    {
        const Bytes record = answer(number, Bytes(2, '\0'));
        return static_cast<uint8_t>(record[0]) + 256U * static_cast<uint8_t>(record[1]);
    }

    // How many failures a proof reports, without being failed by them.
    static int failures_of(const std::function<void()>& proof)
    {
        testing::TestPartResultArray results;
        {
            const testing::ScopedFakeTestPartResultReporter reporter(
                testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
            proof();
        }
        int failures = 0;
        for (int i = 0; i < results.size(); ++i) {
            failures += results.GetTestPartResult(i).failed() ? 1 : 0;
        }
        return failures;
    }

    // Closes what a command under a wrong proof has left open; how many there were.
    size_t close_left_open()
    {
        const size_t left = board.open_descriptors();
        while (!board.descriptors().empty()) {
            board.closing(board.descriptors().begin()->first);
        }
        return left;
    }
};

Bytes pattern(size_t size)
{
    Bytes bytes(size, '\xA5');
    bytes[2] = 5; // a PHY register's number
    bytes[3] = 0;
    return bytes;
}

// Forms -------------------------------------------------------------------------------------

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

// State -------------------------------------------------------------------------------------

TEST_F(FpgaSelf, AWrittenWordShowsWhereItIsRead)
{
    constexpr std::pair<uint32_t, uint32_t> kByValue[] = {
        // write, read
        {0x6B04, 0x6B03}, {0x6B08, 0x6B07}, {0x6B0A, 0x6B09}, {0x6B0C, 0x6B0B}, {0x6B10, 0x6B0F},
        {0x6B12, 0x6B11}, {0x6B28, 0x6B27}, {0x6B2A, 0x6B29}, {0x6B2E, 0x6B2D}, {0x6B36, 0x6B35},
        {0x6B49, 0x6B48}, {0x6B50, 0x6B4F}, {0x6B52, 0x6B51}};
    constexpr std::pair<uint32_t, uint32_t> kByAddress[] = {
        {0x6B22, 0x6B21}, {0x6B41, 0x6B40}, {0x6B6F, 0x6B6E}, {0x6BA4, 0x6BA3}, {0x6BA6, 0x6BA5}};
    uint32_t value = 0x8421;
    for (const auto& [write, read] : kByValue) {
        EXPECT_EQ(send(write, ++value), 0);
        EXPECT_EQ(word(read), value) << std::hex << write;
    }
    for (const auto& [write, read] : kByAddress) {
        answer(write, le16(++value));
        EXPECT_EQ(word(read), value) << std::hex << write;
    }
    EXPECT_EQ(board.fpga.words.size(), std::size(kByValue) + std::size(kByAddress));
}

TEST_F(FpgaSelf, KeepsOfAValueWhatItsFormHolds)
{
    send(0x6B04, 0xFFFF1234);
    EXPECT_EQ(board.fpga.words[0x6B03], 0x1234U);
    send(0x6B74, 0xFFFFFF56);
    EXPECT_EQ(board.fpga.words[0x6B74], 0x56U);
    send(0x6B8E, 0x89ABCDEF);
    EXPECT_EQ(answer(0x6B8D, Bytes(4, '\0')), le32(0x89ABCDEF));
}

// A read of the entry that a write left, with the same key; the key is at the record's start.
struct RoundTrip {
    uint32_t write;
    uint32_t read;
    size_t key; // bytes of the key
};

constexpr RoundTrip kRoundTrips[] = {
    {0x6B24, 0x6B23, 0}, {0x6B3A, 0x6B39, 4}, {0x6B43, 0x6B42, 4}, {0x6B4B, 0x6B4A, 2},
    {0x6B5D, 0x6B5C, 0}, {0x6B5F, 0x6B5E, 4}, {0x6B61, 0x6B60, 2}, {0x6B63, 0x6B60, 2},
    {0x6B68, 0x6B67, 4}, {0x6B6B, 0x6B6A, 2}, {0x6B73, 0x6B72, 1}, {0x6B84, 0x6B83, 4},
    {0x6B86, 0x6B85, 4}, {0x6B9F, 0x6B9A, 4}, {0x6BA1, 0x6BA0, 4},
};

TEST_F(FpgaSelf, AWrittenEntryIsReadBackByItsKeyAlone)
{
    for (const RoundTrip& row : kRoundTrips) {
        SCOPED_TRACE(row.write);
        board.fpga = FpgaModel();
        const RequestForm* read = requestForm_find(row.read);
        Bytes sent;
        for (size_t i = 0; i < read->size; ++i) {
            sent += static_cast<char>(i < row.key ? 1 : 0x21 + i);
        }
        if (row.read == 0x6B42 || row.read == 0x6B83) {
            sent.replace(6, 2, 2, '\0'); // 16 bits are held
        }
        answer(row.write, sent);

        Bytes asked = sent;
        asked.replace(read->fills, read->fills_count, read->fills_count, '\x77');
        EXPECT_EQ(answer(row.read, asked), sent);
        if (row.key != 0) {
            Bytes other = asked;
            other[0] = 2;
            Bytes nothing = other;
            nothing.replace(read->fills, read->fills_count, read->fills_count, '\0');
            EXPECT_EQ(answer(row.read, other), nothing);
        }
    }
}

TEST_F(FpgaSelf, ARegisterReadShowsTheHighHalfAndAWriteIgnoresIt)
{
    board.fpga.registers[0x0180] = 0x1234;
    board.fpga.register_high = 0xCAFE;
    EXPECT_EQ(answer(0x6B42, le32(0x0180) + le32(0)), le32(0x0180) + le32(0xCAFE1234));
    EXPECT_EQ(answer(0x6B42, le32(0x0182) + le32(0)), le32(0x0182) + le32(0xCAFE0000));
    answer(0x6B43, le32(0x0180) + le32(0xFFFF5678));
    EXPECT_EQ(board.fpga.registers[0x0180], 0x5678);
    EXPECT_EQ(board.fpga.register_high, 0xCAFE);
}

TEST_F(FpgaSelf, EachPhyHas32RegistersOfItsOwn)
{
    for (const auto& [read, write] :
         {std::pair<uint32_t, uint32_t>{0x6B87, 0x6B88}, {0x6B98, 0x6B99}}) {
        for (uint32_t phy = 1; phy <= 9; ++phy) {
            for (uint32_t number = 0; number < 32; ++number) {
                answer(write, le16(phy) + le16(number) + le16(100 * phy + number) + le16(0));
            }
        }
        for (uint32_t phy = 1; phy <= 9; ++phy) {
            for (uint32_t number = 0; number < 32; ++number) {
                const Bytes asked = le16(phy) + le16(number) + le16(0x7777);
                ASSERT_EQ(answer(read, asked + le16(0x7777)), asked + le16(100 * phy + number));
            }
        }
        board.fpga.phys.clear();
    }
}

TEST_F(FpgaSelf, SwitchPortsAreSetByTheTestOrByTheDevice)
{
    board.fpga.switch_ports[4] = hex("04 01 02 03 04 05 06 07");
    EXPECT_EQ(answer(0x6B72, hex("04 00 00 00 00 00 00 00")), hex("04 01 02 03 04 05 06 07"));
    answer(0x6B73, hex("04 11 12 13 14 15 16 17"));
    EXPECT_EQ(board.fpga.switch_ports[4], hex("04 11 12 13 14 15 16 17"));
    EXPECT_EQ(board.fpga.switch_ports.size(), 1U);
}

TEST_F(FpgaSelf, ACounterRestartsWhenItIsRead)
{
    board.fpga.counters[{3, 32}] = 1000;
    board.fpga.counters[{3, 33}] = 7;
    board.fpga.counters_alt[{3, 32}] = 55;
    const Bytes index = le32(3);
    EXPECT_EQ(answer(0x6B9A, index + le32(0) + le32(32)), index + le32(1000) + le32(32));
    EXPECT_EQ(answer(0x6B9A, index + le32(9) + le32(32)), index + le32(0) + le32(32));
    EXPECT_EQ(answer(0x6B9A, index + le32(0) + le32(33)), index + le32(7) + le32(33));
    EXPECT_EQ(answer(0x6BA0, index + le32(0) + le32(32)), index + le32(55) + le32(32));
    EXPECT_EQ(answer(0x6BA0, index + le32(0) + le32(32)), index + le32(0) + le32(32));
}

TEST_F(FpgaSelf, AnotherUnitsWordsGoByUnitAndPage)
{
    board.fpga.unit_words[{2, 0}] = {0x1122, 0x3344};
    board.fpga.unit_words[{2, 1}] = {0x5566, 0x7788};
    const Bytes page0 = le16(0) + le16(0) + Bytes(4, '\0');
    const Bytes page1 = le16(1) + le16(0) + Bytes(4, '\0');
    EXPECT_EQ(answer(0x6B3E, le32(2) + le32(0) + page0), le32(2) + le32(0x33441122) + page0);
    EXPECT_EQ(answer(0x6B3E, le32(2) + le32(0) + page1), le32(2) + le32(0x77885566) + page1);
    EXPECT_EQ(answer(0x6B3E, le32(3) + le32(9) + page1), le32(3) + le32(0) + page1);
}

TEST_F(FpgaSelf, KeepsWhatIsOnlyWritten)
{
    constexpr std::pair<uint32_t, size_t> kWritten[] = {{0x6B69, 8},  {0x6B70, 16},  {0x6B71, 12},
                                                        {0x6B77, 8},  {0x6B78, 260}, {0x6B79, 260},
                                                        {0x6B9B, 68}, {0x6B9C, 160}};
    for (const auto& [number, size] : kWritten) {
        answer(number, pattern(kRoom));
        EXPECT_EQ(board.fpga.written[number], pattern(size)) << std::hex << number;
    }
}

// Results -----------------------------------------------------------------------------------

TEST_F(FpgaSelf, AForcedFailureChangesNothing)
{
    board.fpga.words[0x6B40] = 0x1234;
    board.fpga.results = {{0x6B40, -3}, {0x6B41, INT32_MIN}, {0x6B9A, -1}};
    board.fpga.counters[{0, 0}] = 5;
    Bytes record = le16(0x5A5A);
    EXPECT_EQ(request(0x6B40, record), -3);
    EXPECT_EQ(request(0x6B41, record), INT32_MIN);
    EXPECT_EQ(record, le16(0x5A5A));
    EXPECT_EQ(board.fpga.words[0x6B40], 0x1234U);
    Bytes counter(12, '\0');
    EXPECT_EQ(request(0x6B9A, counter), -1);
    EXPECT_EQ((board.fpga.counters[{0, 0}]), 5U);
}

TEST_F(FpgaSelf, AForcedSuccessDoesItsWorkAllTheSame)
{
    board.fpga.words[0x6B40] = 0x1234;
    board.fpga.results = {{0x6B40, 7}, {0x6BA2, 99}};
    Bytes record = le16(0);
    EXPECT_EQ(request(0x6B40, record), 7);
    EXPECT_EQ(record, le16(0x1234));
    EXPECT_EQ(send(0x6BA2, 0), 99);
}

// Descriptors and calls ---------------------------------------------------------------------

TEST_F(FpgaSelf, RefusesARequestThatTheDriverDoesNotKnowLoudly)
{
    const Fpga fpga = fpga_open(FpgaAccess::kRead);
    for (const uint32_t number :
         {0x6B00U, 0x6B05U, 0x6B6CU, 0x6B9DU, 0x6BA7U, 0x40046B42U, 0x42U}) {
        int result = 0;
        EXPECT_NONFATAL_FAILURE(result = fpga_request(fpga, number, nullptr),
                                "no driver knows request");
        EXPECT_EQ(result, -1);
    }
    fpga_close(fpga);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "close /dev/fpga"}));
}

TEST_F(FpgaSelf, ARequestOnAClosedDescriptorFailsAndIsRecorded)
{
    const Fpga fpga = fpga_open(FpgaAccess::kRead);
    fpga_close(fpga);
    board.restart();
    board.fpga.words[0x6B02] = 0x1234;
    uint16_t word = 0x5A5A;
    EXPECT_EQ(fpga_request(fpga, 0x6B02, &word), -1);
    EXPECT_EQ(word, 0x5A5A);
    EXPECT_EQ(board.calls, (Trace{"ioctl (closed) 6B02 5A 5A"}));
}

TEST_F(FpgaSelf, EachOpenGivesADescriptorOfItsOwn)
{
    const Fpga first = fpga_open(FpgaAccess::kRead);
    const Fpga second = fpga_open(FpgaAccess::kWrite);
    EXPECT_NE(first.descriptor, second.descriptor);
    EXPECT_TRUE(board.is_device(first.descriptor));
    EXPECT_FALSE(board.is_device(0));
    EXPECT_FALSE(board.is_device(1023));
    EXPECT_EQ(board.open_descriptors(), 2U);
    EXPECT_EQ(board.path_of(second.descriptor), "/dev/fpga");
    fpga_close(first);
    EXPECT_EQ(board.open_descriptors(), 1U);
    uint16_t word = 0;
    EXPECT_EQ(fpga_request(second, 0x6B02, &word), 0);
    EXPECT_EQ(fpga_request(first, 0x6B02, &word), -1);
    fpga_close(second);
    EXPECT_NONFATAL_FAILURE(fpga_close(second), "which is not open");
}

TEST_F(FpgaSelf, AMissingDeviceCannotBeOpened)
{
    board.fpga_present = false;
    EXPECT_LT(fpga_open(FpgaAccess::kRead).descriptor, 0);
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK"}));
}

TEST_F(FpgaSelf, FailsEachOfThePlannedCalls)
{
    board.fpga.words[0x6B02] = 0x1234;
    board.fail_calls({2, 3, 4});
    const Fpga fpga = fpga_open(FpgaAccess::kRead); // 1
    uint16_t word = 0;
    EXPECT_EQ(fpga_request(fpga, 0x6B02, &word), -1); // 2
    EXPECT_EQ(word, 0);
    fpga_close(fpga); // 3: it is closed all the same
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_LT(fpga_open(FpgaAccess::kRead).descriptor, 0); // 4
    const Fpga again = fpga_open(FpgaAccess::kRead);       // 5
    EXPECT_EQ(fpga_request(again, 0x6B02, &word), 0);
    EXPECT_EQ(word, 0x1234);
    fpga_close(again);
    EXPECT_EQ(board.calls,
              (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B02 00 00 -> failed",
                     "close /dev/fpga -> failed", "open /dev/fpga O_RDONLY|O_NONBLOCK -> failed",
                     "open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B02 00 00", "close /dev/fpga"}));
}

TEST_F(FpgaSelf, WithoutARecordingCallsAreCountedAndCanFail)
{
    board.recording = false;
    board.fpga.words[0x6B02] = 0x1234;
    EXPECT_EQ(word(0x6B02), 0x1234U);
    EXPECT_EQ(board.call_count(), 3U);
    board.fail_call(2);
    Bytes record = le16(0);
    EXPECT_EQ(request(0x6B02, record), -1);
    EXPECT_EQ(board.call_count(), 6U);
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_NONFATAL_FAILURE(send(0x6BFF, 0), "no driver knows request");
    EXPECT_NONFATAL_FAILURE(send(0x6BA2, 1), "argument 1 for a request that takes none");
}

TEST_F(FpgaSelf, EveryWordIsTriedOnce)
{
    uint32_t tried = 0;
    for_every_word([&](uint16_t word) {
        EXPECT_FALSE(board.recording);
        EXPECT_EQ(word, std::min(kWordStep * tried++, 65535U));
    });
    EXPECT_EQ(tried, kWordsTried);
    EXPECT_TRUE(kWordStep > 1 || tried == 65536U);
    EXPECT_TRUE(board.recording);
}

// The proof of a command's course -------------------------------------------------------------

// The group flag's setter is the subject: open, word read, value written, close.
class ProofSelf : public FpgaSelf
{
  protected:
    int failures(const Course& course, int32_t result = 0)
    {
        const int count = failures_of([&] {
            prove(
                WR_GROUP_FLAG,
                [this] {
                    board.fpga.words[0x6B2D] = 0xFE3B;
                    flag_ = 1;
                    return &flag_;
                },
                course, result);
        });
        close_left_open();
        return count;
    }

    static Course right()
    {
        return {opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF), closes()};
    }

    // The right course but for one step.
    static Course changed(size_t step, const Step& other)
    {
        Course course = right();
        course[step] = other;
        return course;
    }

  private:
    uint8_t flag_ = 0;
};

TEST_F(ProofSelf, FindsNothingWrongInTheRightCourse)
{
    EXPECT_EQ(failures(right()), 0);
}

TEST_F(ProofSelf, NoticesAWrongCourse)
{
    EXPECT_GT(failures(changed(0, opens_to_read())), 0);
    EXPECT_GT(failures(changed(1, word_read(0x6B03))), 0);
    EXPECT_GT(failures(changed(1, map_read(0x6B2D))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFE))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B04, 0xFFFF))), 0);
    EXPECT_GT(failures({opens_to_write(), word_read(0x6B2D), closes()}), 0);
    EXPECT_GT(failures({opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF)}), 0);
    EXPECT_GT(failures(right() + Course{opens_to_write(), closes()}), 0);
}

TEST_F(ProofSelf, NoticesAWrongResult)
{
    EXPECT_GT(failures(right(), 1), 0);
}

TEST_F(ProofSelf, NoticesAWrongFailureCode)
{
    EXPECT_GT(failures(changed(0, opens_to_write(-2))), 0);
    EXPECT_GT(failures(changed(1, word_read(0x6B2D, -4))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFF, -2))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFF, -5))), 0);
}

TEST_F(ProofSelf, NoticesAFailureThatIsNotIgnored)
{
    EXPECT_GT(failures(changed(1, word_read(0x6B2D, kIgnored))), 0);
    EXPECT_GT(failures(changed(3, {"close /dev/fpga", -4})), 0);
}

TEST_F(ProofSelf, NoticesADescriptorThatStaysOpen)
{
    uint16_t word = 0;
    const Course course{opens_to_read(), word_read(0x6B21), closes()};
    // Only its failures leave the device open.
    EXPECT_EQ(failures_of([&] { expect_course(RD_DEVICE_WORD_21, &word, course); }), 0);
    EXPECT_GT(failures_of([&] {
                  prove(
                      RD_DEVICE_WORD_21,
                      [&word] {
                          word = 0;
                          return &word;
                      },
                      course);
              }),
              0);
    EXPECT_GT(close_left_open(), 0U);
}

// The descriptor alone, with a trace that is right.
TEST_F(ProofSelf, NoticesADescriptorBehindARightTrace)
{
    uint8_t flag = 0;
    const Fpga left = fpga_open(FpgaAccess::kRead);
    EXPECT_EQ(
        failures_of([&] {
            expect_course(RD_GROUP_FLAG, &flag, {opens_to_read(), word_read(0x6B2D), closes()});
        }),
        1);
    fpga_close(left);
}

TEST_F(ProofSelf, NoticesACommandThatIsNotRefused)
{
    uint16_t code = 2;
    EXPECT_GT(failures_of([&] { expect_refused(WR_DEVICE_WORD_49, &code); }), 0);
    code = 3;
    EXPECT_EQ(failures_of([&] { expect_refused(WR_DEVICE_WORD_49, &code); }), 0);
}

// Command 62 is never repeated: neither is its course in the proof.
TEST_F(ProofSelf, ExpectsNoSecondRunOfCommand62)
{
    uint16_t word = 0;
    const auto prepare = [&word] {
        word = 0;
        return &word;
    };
    const Course course{opens_to_read(), word_read(0x6B40, -1), closes()};
    EXPECT_EQ(failures_of([&] { prove(RD_DEVICE_WORD_40, prepare, course); }), 0);
    EXPECT_GT(
        failures_of([&] {
            prove(RD_DEVICE_WORD_40, prepare, {opens_to_read(), word_read(0x6B40, -2), closes()});
        }),
        0);
}

} // namespace
