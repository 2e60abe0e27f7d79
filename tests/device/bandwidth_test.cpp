// The bandwidth limit of the line.
#include <map>

#include "device/caller_record.h"
#include "device/phy_course.h"

namespace
{

// Register values by identifier.
constexpr uint16_t kNotAt100[21] = {21333, 12800, 6400, 3200, 2133, 1600, 1280, 1066, 914, 800, 711,
                                    640,   640,   640,  640,  640,  640,  640,  640,  640, 640};
constexpr uint16_t kAt100[21] = {21333, 12800, 6400, 3200, 2133, 1600, 1280, 1066, 914, 800, 711,
                                 640,   320,   213,  160,  128,  106,  91,   80,   71,  64};

constexpr std::array<uint16_t, 32> kManual10{0x0100, 0x0004};
constexpr std::array<uint16_t, 32> kManual100{0x2000, 0x0004};
constexpr std::array<uint16_t, 32> kNegotiated10{0x3000, 0x0024, 0, 0, 0x0060, 0x0060};
constexpr std::array<uint16_t, 32> kNegotiated100{0x1000, 0x0024, 0, 0, 0x0180, 0x0180};
constexpr std::array<uint16_t, 32> kLinkDown{0x3100, 0x0000, 0, 0, 0x0180, 0x0180};
constexpr std::array<uint16_t, 32> kUndecided{0x3100, 0x0004, 0, 0, 0x0180, 0x0180};

// The PHY of port 0; its failures are read failures of these commands, the open included.
Course reading_port0()
{
    return phy_reading(0, -2, -2);
}

class Bandwidth : public DeviceTest
{
  protected:
    void SetUp() override
    {
        // Ports that do not count are at 100 Mb/s and hold the other table's limit.
        for (uint16_t address = 0; address < 9; ++address) {
            board.fpga.phys[address] = kManual100;
        }
        use(kManual10);
    }

    void use(const std::array<uint16_t, 32>& phy) { board.fpga.phys[9] = phy; }

    int32_t write(uint32_t id)
    {
        record = CallerRecord(le16(id));
        return Fpga_Register_Set(WR_BANDWIDTH, record.pointer());
    }

    int32_t read()
    {
        record = CallerRecord();
        return Fpga_Register_Set(RD_BANDWIDTH, record.pointer());
    }

    uint16_t& limit = board.fpga.registers[0x0012];
    CallerRecord record;
};

TEST_F(Bandwidth, WritesAfterReadingThePhyOfPort0)
{
    for (const auto& [phy, value] : {std::pair{kManual10, 640}, std::pair{kManual100, 64}}) {
        prove(
            WR_BANDWIDTH,
            [this, &phy = phy] {
                use(phy);
                board.fpga.register_high = 0x4321;
                record = CallerRecord(le16(20));
                return record.pointer();
            },
            reading_port0() + Course{opens_to_write(),
                                     register_write(0x0012, static_cast<uint32_t>(value)),
                                     closes()});
        EXPECT_EQ(record.bytes(), untouched_after(le16(20)));
    }
}

TEST_F(Bandwidth, ReadsAfterReadingThePhyOfPort0)
{
    prove(
        RD_BANDWIDTH,
        [this] {
            limit = 640;
            record = CallerRecord();
            return record.pointer();
        },
        reading_port0() + Course{opens_to_write(), register_read(0x0012), closes()});
    EXPECT_EQ(record.bytes(), untouched_after(le16(11)));
}

TEST_F(Bandwidth, WritesAndReadsEveryIdUnderBothTables)
{
    for (uint32_t id = 0; id <= 20; ++id) {
        SCOPED_TRACE(id);
        for (const auto& phy : {kManual10, kNegotiated10, kLinkDown}) {
            use(phy);
            EXPECT_EQ(write(id), 0);
            EXPECT_EQ(limit, kNotAt100[id]);
            EXPECT_EQ(read(), 0);
            EXPECT_EQ(record.bytes(), untouched_after(le16(id <= 11 ? id : 11)));
        }
        for (const auto& phy : {kManual100, kNegotiated100}) {
            use(phy);
            EXPECT_EQ(write(id), 0);
            EXPECT_EQ(limit, kAt100[id]);
            EXPECT_EQ(read(), 0);
            EXPECT_EQ(record.bytes(), untouched_after(le16(id)));
        }
    }
}

TEST_F(Bandwidth, HoldsTheIntegerPartsOf64000)
{
    constexpr unsigned kDivisors[21] = {3,   5,   10,  20,  30,  40,  50,  60,  70,  80,  90,
                                        100, 200, 300, 400, 500, 600, 700, 800, 900, 1000};
    for (uint32_t id = 0; id <= 20; ++id) {
        use(kManual100);
        EXPECT_EQ(write(id), 0);
        EXPECT_EQ(limit, 64000 / kDivisors[id]);
        use(kManual10);
        EXPECT_EQ(write(id), 0);
        EXPECT_EQ(limit, 64000 / std::min(kDivisors[id], 100U));
    }
}

TEST_F(Bandwidth, ReadsEveryRegisterValueUnderBothTables)
{
    const std::map<uint16_t, uint16_t> common{{21333, 0}, {12800, 1}, {6400, 2}, {3200, 3},
                                              {2133, 4},  {1600, 5},  {1280, 6}, {1066, 7},
                                              {914, 8},   {800, 9},   {711, 10}, {640, 11}};
    std::map<uint16_t, uint16_t> at_100 = common;
    at_100.insert({{320, 12},
                   {213, 13},
                   {160, 14},
                   {128, 15},
                   {106, 16},
                   {91, 17},
                   {80, 18},
                   {71, 19},
                   {64, 20}});
    board.fpga.register_high = 0xFFFF;
    for (const auto& [phy, ids] : {std::pair{kManual10, common}, std::pair{kManual100, at_100}}) {
        use(phy);
        for_every_word([this, &ids = ids](uint16_t value) {
            limit = value;
            const auto known = ids.find(value);
            EXPECT_EQ(read(), known == ids.end() ? -3 : 0) << value;
            EXPECT_EQ(record.bytes(),
                      untouched_after(le16(known == ids.end() ? 20 : known->second)));
            EXPECT_EQ(limit, value);
        });
    }
}

TEST_F(Bandwidth, StoresId20ForAnUnknownValueAndIsRunAgain)
{
    limit = 64; // known at 100 Mb/s only
    record = CallerRecord();
    const Course run =
        reading_port0() + Course{opens_to_write(), register_read(0x0012), closes()} + kRetryDelay;
    expect_course(RD_BANDWIDTH, record.pointer(), run + run, -3);
    EXPECT_EQ(record.bytes(), untouched_after(le16(20)));
    use(kManual100);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(record.bytes(), untouched_after(le16(20)));
}

TEST_F(Bandwidth, RefusesIdsAbove20WithoutTouchingAnything)
{
    limit = 1234;
    for (const uint32_t id : {21U, 22U, 255U, 256U, 0x8000U, 0xFFFFU}) {
        record = CallerRecord(le16(id));
        expect_refused(WR_BANDWIDTH, record.pointer());
        EXPECT_EQ(record.bytes(), untouched_after(le16(id)));
    }
    board.restart();
    for_every_word([this](uint16_t id) {
        if (id > 20) {
            EXPECT_EQ(write(id), -5);
        }
    });
    EXPECT_EQ(board.call_count(), 0U);
    EXPECT_EQ(limit, 1234);
}

TEST_F(Bandwidth, FailsWithAnUndecidedNegotiationOfPort0)
{
    use(kUndecided);
    limit = 640;
    const Course run = phy_reading_undecided(0) + kRetryDelay;
    record = CallerRecord(le16(3));
    expect_course(WR_BANDWIDTH, record.pointer(), run + run, -2);
    EXPECT_EQ(limit, 640);
    record = CallerRecord();
    expect_course(RD_BANDWIDTH, record.pointer(), run + run, -2);
    EXPECT_EQ(record.bytes(), untouched_after(""));
}

TEST_F(Bandwidth, KeepsTheCallersIdWhenAnyCallOfTheReadFails)
{
    limit = 640;
    for (size_t failing = 1; failing <= 36; ++failing) {
        if (failing == 34) {
            continue; // the close of the PHY's descriptor, which does not count
        }
        SCOPED_TRACE(failing);
        const bool opens = failing == 1 || failing == 35;
        board.restart();
        fail_in_both_runs(failing, opens ? 0 : 1);
        EXPECT_EQ(read(), failing == 35 ? -1 : -2);
        EXPECT_EQ(record.bytes(), untouched_after(""));
    }
}

TEST_F(Bandwidth, KeepsTheLimitWhenThePhyCannotBeRead)
{
    limit = 1234;
    board.fpga_present = false;
    EXPECT_EQ(write(1), -2);
    EXPECT_EQ(read(), -2);
    board.fpga_present = true;
    board.fpga.results[0x6B98] = -1;
    EXPECT_EQ(write(1), -2);
    EXPECT_EQ(read(), -2);
    EXPECT_EQ(limit, 1234);
}

TEST_F(Bandwidth, ChoosesTheTableAfreshEachTime)
{
    use(kManual100);
    EXPECT_EQ(write(15), 0);
    EXPECT_EQ(limit, 128);
    use(kManual10);
    EXPECT_EQ(read(), -3);
    EXPECT_EQ(write(15), 0);
    EXPECT_EQ(limit, 640);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(record.bytes(), untouched_after(le16(11)));
    use(kNegotiated100);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(record.bytes(), untouched_after(le16(11)));
    EXPECT_EQ(write(15), 0);
    EXPECT_EQ(limit, 128);
}

TEST_F(Bandwidth, ChoosesTheTableAgainInTheSecondRun)
{
    use(kManual100);
    board.restart();
    board.fail_call(36); // the register's write
    board.before_call = [this](const std::string& call) {
        if (call == "usleep 1") {
            use(kManual10);
        }
    };
    EXPECT_EQ(write(20), 0);
    EXPECT_EQ(limit, 640);
}

} // namespace
