// The bandwidth limit of the line.
#include <map>

#include "device/command_test.h"
#include "device/phy_course.h"

namespace
{

// Register values by identifier.
constexpr std::array<uint16_t, 21> kNotAt100 = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                                1066,  914,   800,  711,  640,  640,  640,
                                                640,   640,   640,  640,  640,  640,  640};
constexpr std::array<uint16_t, 21> kAt100 = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                             1066,  914,   800,  711,  640,  320,  213,
                                             160,   128,   106,  91,   80,   71,   64};

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

class Bandwidth : public CommandTest
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

    int32_t write(uint32_t id) { return run(WR_BANDWIDTH, le16(id)); }

    // A report's result and what the caller then has.
    void expect_read(int32_t result, const Bytes& id)
    {
        SCOPED_TRACE("limit " + hex_number(limit));
        expect_run(RD_BANDWIDTH, kHeld, result, id);
    }

    const Bytes kHeld = untouched(2);
    uint16_t& limit = board.fpga.registers[0x0012];
};

TEST_F(Bandwidth, WritesAfterReadingThePhyOfPort0)
{
    board.fpga.register_high = 0x4321;
    for (const auto& [phy, value] : {std::pair{kManual10, 640U}, std::pair{kManual100, 64U}}) {
        use(phy);
        prove_record(WR_BANDWIDTH, le16(20),
                     reading_port0() +
                         Course{opens_to_write(), register_write(0x0012, value), closes()},
                     le16(20));
    }
}

TEST_F(Bandwidth, ReadsAfterReadingThePhyOfPort0)
{
    limit = 640;
    prove_record(RD_BANDWIDTH, kHeld,
                 reading_port0() + Course{opens_to_write(), register_read(0x0012), closes()},
                 le16(11));
}

TEST_F(Bandwidth, WritesAndReadsEveryIdUnderBothTables)
{
    for (uint32_t id = 0; id <= 20; ++id) {
        SCOPED_TRACE(id);
        for (const auto& phy : {kManual10, kNegotiated10, kLinkDown}) {
            use(phy);
            EXPECT_EQ(write(id), 0);
            EXPECT_EQ(limit, kNotAt100[id]);
            expect_read(0, le16(id <= 11 ? id : 11));
        }
        for (const auto& phy : {kManual100, kNegotiated100}) {
            use(phy);
            EXPECT_EQ(write(id), 0);
            EXPECT_EQ(limit, kAt100[id]);
            expect_read(0, le16(id));
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
    board.fpga.register_high = 0xFFFF;
    for (const auto& [phy, table] : {std::pair{kManual10, kNotAt100}, {kManual100, kAt100}}) {
        use(phy);
        std::map<uint16_t, uint32_t> ids;
        for (uint32_t id = 0; id <= 20; ++id) {
            ids.emplace(table[id], id); // of several the first
        }
        for_every_word([this, &ids](uint16_t value) {
            limit = value;
            const auto known = ids.find(value);
            expect_read(known == ids.end() ? -3 : 0, le16(known == ids.end() ? 20 : known->second));
            EXPECT_EQ(limit, value);
        });
    }
}

TEST_F(Bandwidth, StoresId20ForAnUnknownValueAndIsRunAgain)
{
    limit = 64; // known at 100 Mb/s only
    const Course run =
        reading_port0() + Course{opens_to_write(), register_read(0x0012), closes()} + kRetryDelay;
    expect_course(RD_BANDWIDTH, put(kHeld), run + run, -3);
    EXPECT_EQ(record(), le16(20));
    use(kManual100);
    expect_read(0, le16(20));
}

TEST_F(Bandwidth, RefusesIdsAbove20WithoutTouchingAnything)
{
    limit = 1234;
    for (const uint32_t id : {21U, 22U, 255U, 256U, 0x8000U, 0xFFFFU}) {
        expect_refused(WR_BANDWIDTH, le16(id));
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
    expect_course(WR_BANDWIDTH, put(le16(3)), run + run, -2);
    EXPECT_EQ(limit, 640);
    expect_course(RD_BANDWIDTH, put(kHeld), run + run, -2);
    EXPECT_EQ(record(), kHeld);
}

TEST_F(Bandwidth, KeepsTheCallersIdWhenAnyCallOfTheReadFails)
{
    limit = 640;
    expect_kept(RD_BANDWIDTH, kHeld);
}

TEST_F(Bandwidth, KeepsTheLimitWhenThePhyCannotBeRead)
{
    limit = 1234;
    board.fpga_present = false;
    EXPECT_EQ(write(1), -2);
    expect_read(-2, kHeld);
    board.fpga_present = true;
    board.fpga.results[0x6B98] = -1;
    EXPECT_EQ(write(1), -2);
    expect_read(-2, kHeld);
    EXPECT_EQ(limit, 1234);
}

TEST_F(Bandwidth, ChoosesTheTableAfreshEachTime)
{
    use(kManual100);
    EXPECT_EQ(write(15), 0);
    EXPECT_EQ(limit, 128);
    use(kManual10);
    expect_read(-3, le16(20));
    EXPECT_EQ(write(15), 0);
    EXPECT_EQ(limit, 640);
    expect_read(0, le16(11));
    use(kNegotiated100);
    expect_read(0, le16(11));
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
