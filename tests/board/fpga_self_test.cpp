// The simulated device's own tests, before any command is tested with it: its state, its results and
// its descriptors.
#include "board/fpga_self_fixture.h"

namespace
{

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
        EXPECT_EQ(word(read), value) << hex_number(write);
    }
    for (const auto& [write, read] : kByAddress) {
        answer(write, le16(++value));
        EXPECT_EQ(word(read), value) << hex_number(write);
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
        SCOPED_TRACE(hex_number(row.write));
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
        EXPECT_EQ(board.fpga.written[number], pattern(size)) << hex_number(number);
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

TEST_F(FpgaSelf, AForcedFailureCanHaveDoneItsWork)
{
    board.fpga.fills_when_failing = true;
    board.fpga.results = {{0x6B40, -3}, {0x6B9A, -1}};
    board.fpga.words[0x6B40] = 0x1234;
    board.fpga.counters[{0, 0}] = 5;
    Bytes record = le16(0x5A5A);
    EXPECT_EQ(request(0x6B40, record), -3);
    EXPECT_EQ(record, le16(0x1234));
    Bytes counter(12, '\0');
    EXPECT_EQ(request(0x6B9A, counter), -1);
    EXPECT_EQ(counter, le32(0) + le32(5) + le32(0));
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
    const int fpga = board_open(kFpga, O_RDONLY | O_NONBLOCK);
    for (const uint32_t number :
         {0x6B00U, 0x6B05U, 0x6B6CU, 0x6B9DU, 0x6BA7U, 0x40046B42U, 0x42U}) {
        int result = 0;
        EXPECT_NONFATAL_FAILURE(result = board_ioctl(fpga, number, 0UL), "no driver knows request");
        EXPECT_EQ(result, -1);
    }
    board_close(fpga);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "close /dev/fpga"}));
}

TEST_F(FpgaSelf, ARequestOnAClosedDescriptorFailsAndIsRecorded)
{
    const int fpga = board_open(kFpga, O_RDONLY | O_NONBLOCK);
    board_close(fpga);
    board.restart();
    board.fpga.words[0x6B02] = 0x1234;
    uint16_t word = 0x5A5A;
    EXPECT_EQ(board_ioctl(fpga, 0x6B02, &word), -1);
    EXPECT_EQ(word, 0x5A5A);
    EXPECT_EQ(board.calls, (Trace{"ioctl (closed) 6B02 5A 5A"}));
}

TEST_F(FpgaSelf, EachOpenGivesADescriptorOfItsOwn)
{
    const int first = board_open(kFpga, O_RDONLY | O_NONBLOCK);
    const int second = board_open(kFpga, O_RDWR | O_NONBLOCK);
    EXPECT_NE(first, second);
    EXPECT_TRUE(board.is_device(first));
    EXPECT_FALSE(board.is_device(0));
    EXPECT_FALSE(board.is_device(1023));
    EXPECT_EQ(board.open_descriptors(), 2U);
    EXPECT_EQ(board.path_of(second), "/dev/fpga");
    board_close(first);
    EXPECT_EQ(board.open_descriptors(), 1U);
    uint16_t word = 0;
    EXPECT_EQ(board_ioctl(second, 0x6B02, &word), 0);
    EXPECT_EQ(board_ioctl(first, 0x6B02, &word), -1);
    board_close(second);
    EXPECT_NONFATAL_FAILURE(board_close(second), "which is not open");
}

TEST_F(FpgaSelf, AMissingDeviceCannotBeOpened)
{
    board.fpga_present = false;
    EXPECT_LT(board_open(kFpga, O_RDONLY | O_NONBLOCK), 0);
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK"}));
}

TEST_F(FpgaSelf, FailsEachOfThePlannedCalls)
{
    board.fpga.words[0x6B02] = 0x1234;
    board.fail_calls({2, 3, 4});
    const int fpga = board_open(kFpga, O_RDONLY | O_NONBLOCK); // 1
    uint16_t word = 0;
    EXPECT_EQ(board_ioctl(fpga, 0x6B02, &word), -1); // 2
    EXPECT_EQ(word, 0);
    board_close(fpga); // 3: it is closed all the same
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_LT(board_open(kFpga, O_RDONLY | O_NONBLOCK), 0);     // 4
    const int again = board_open(kFpga, O_RDONLY | O_NONBLOCK); // 5
    EXPECT_EQ(board_ioctl(again, 0x6B02, &word), 0);
    EXPECT_EQ(word, 0x1234);
    board_close(again);
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
        EXPECT_EQ(word, std::min(kLoopShare.wordStep * tried++, 65535U));
    });
    const uint32_t step = kLoopShare.wordStep;
    EXPECT_EQ(tried, (65535U + step - 1) / step + 1); // 0, and the last though it is no step away
    EXPECT_EQ(tried == 65536U, getenv("MAINT_TESTS_ALL") != nullptr);
    EXPECT_TRUE(board.recording);
}

} // namespace
