// Configuring a PHY: what is written, to every port.
#include "device/phy_config_fixture.h"

namespace
{

TEST_F(PhyConfigWrite, NegotiatesOnPort0)
{
    const Course plain{opens_to_write(),
                       record_write(0x6B99, hex("09 00 00 00 01 10 00 00")),
                       sleeps(2),
                       record_write(0x6B99, hex("09 00 00 00 00 10 00 00")),
                       record_write(0x6B99, hex("09 00 1F 00 00 05 00 00")),
                       closes()};
    prove(
        WR_PHY_CONFIG,
        [this] {
            return record_of({0, 1, 0, 0, 0, 0});
        },
        plain);
    expect_configured({0, 1, 1, 2, 255, 2}, plain);
}

TEST_F(PhyConfigWrite, SetsPort0To100FullDuplex)
{
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({0, 0, 0, 1, 1, 1});
          },
          {opens_to_write(), record_write(0x6B99, hex("09 00 00 00 01 10 00 00")), sleeps(2),
           record_write(0x6B99, hex("09 00 00 00 00 21 00 00")),
           record_write(0x6B99, hex("09 00 1F 00 00 25 00 00")), closes()});
}

TEST_F(PhyConfigWrite, NegotiatesOnPorts1To4)
{
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({1, 1, 0, 1, 1, 0});
          },
          {opens_to_write(), record_write(0x6B88, hex("01 00 00 00 00 00 00 00")),
           record_write(0x6B88, hex("01 00 00 00 00 12 00 00")),
           record_write(0x6B88, hex("01 00 1F 00 00 05 00 00")), closes()});
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({4, 1, 1, 0, 0, 1});
          },
          {opens_to_write(), record_write(0x6B88, hex("04 00 00 00 00 00 00 00")),
           record_write(0x6B88, hex("04 00 00 00 08 12 00 00")),
           record_write(0x6B88, hex("04 00 1F 00 00 25 00 00")), closes()});
}

TEST_F(PhyConfigWrite, SetsPorts1To4ByHand)
{
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({2, 0, 1, 1, 0, 0});
          },
          {opens_to_write(), record_write(0x6B88, hex("02 00 00 00 02 10 00 00")), sleeps(1),
           record_write(0x6B88, hex("02 00 00 00 00 20 00 00")),
           record_write(0x6B88, hex("02 00 1F 00 00 05 00 00")), closes()});
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({3, 2, 0, 0, 1, 1});
          },
          {opens_to_write(), record_write(0x6B88, hex("03 00 00 00 02 10 00 00")), sleeps(1),
           record_write(0x6B88, hex("03 00 00 00 08 01 00 00")),
           record_write(0x6B88, hex("03 00 1F 00 00 25 00 00")), closes()});
}

TEST_F(PhyConfigWrite, LeavesTheExtraBitOutOfPort6)
{
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({6, 1, 0, 0, 0, 1});
          },
          {opens_to_write(), record_write(0x6B88, hex("08 00 00 00 00 00 00 00")),
           record_write(0x6B88, hex("08 00 00 00 00 12 00 00")),
           record_write(0x6B88, hex("08 00 1F 00 00 25 00 00")), closes()});
    prove(WR_PHY_CONFIG,
          [this] {
              return record_of({6, 0, 0, 1, 1, 1});
          },
          {opens_to_write(), record_write(0x6B88, hex("08 00 00 00 01 10 00 00")), sleeps(1),
           record_write(0x6B88, hex("08 00 00 00 00 21 00 00")),
           record_write(0x6B88, hex("08 00 1F 00 00 25 00 00")), closes()});
}

TEST_F(PhyConfigWrite, WritesEveryConfigurationOfEveryPort)
{
    refuse_second_descriptor();
    for (unsigned choice = 0; choice < 7 * 256; ++choice) {
        const Config config{choice >> 8,
                            kFlagValues[choice & 3U],
                            0x77,
                            kFlagValues[(choice >> 2) & 3U],
                            kFlagValues[(choice >> 4) & 3U],
                            kFlagValues[(choice >> 6) & 3U]};
        board.fpga_present = true;
        if (config.port == 0 && config.autoneg != 1 &&
            (config.speed100 != 1 || config.full_duplex != 1)) {
            expect_refused(WR_PHY_CONFIG, record_of(config));
            continue;
        }
        Course course = Course{opens_to_write()} + phy_writes(config);
        if (config.port == 5) {
            course.push_back(record_write(
                0x6B73, switch_port(config.full_duplex, config.speed100, config.switch_flag)));
            course.push_back(opens_to_write());
        }
        course.push_back(closes());
        expect_configured(config, course);
    }
}

TEST_F(PhyConfigWrite, RefusesPortsAbove6WithoutOpening)
{
    for (const uint32_t port : {7U, 8U, 9U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const unsigned autoneg : {0U, 1U}) {
            expect_refused(WR_PHY_CONFIG, record_of({port, autoneg, 1, 1, 1, 1}));
        }
    }
}

TEST_F(PhyConfigWrite, RefusesToSetPort0ToAnythingElseByHand)
{
    for (const unsigned autoneg : {0U, 2U, 255U}) {
        for (const auto& [speed100, full_duplex] : std::vector<std::pair<unsigned, unsigned>>{
                 {0, 0}, {0, 1}, {1, 0}, {1, 2}, {2, 1}, {2, 2}, {1, 255}, {255, 1}, {255, 255}}) {
            expect_refused(WR_PHY_CONFIG, record_of({0, autoneg, 1, speed100, full_duplex, 1}));
        }
    }
}

TEST_F(PhyConfigWrite, KeepsWhatItWroteBeforeAFailure)
{
    for (uint32_t port = 0; port <= 6; ++port) {
        for (const unsigned autoneg : {0U, 1U}) {
            const Config config{port, autoneg, 0, 1, 1, 0};
            const bool sleeping = port == 0 || autoneg == 0;
            const uint16_t prepared = port == 0      ? 0x1001
                                      : autoneg == 1 ? 0x0000
                                      : port == 6    ? 0x1001
                                                     : 0x1002;
            const uint16_t set = autoneg == 0 ? 0x2100 : port == 0 ? 0x1000 : 0x1200;
            const uint16_t held_after[3] = {0xAAAA, prepared, set};
            const size_t failing[3] = {2, sleeping ? 4U : 3U, sleeping ? 5U : 4U};
            for (size_t write = 0; write < 3; ++write) {
                SCOPED_TRACE("port " + std::to_string(port) + " write " + std::to_string(write));
                registers_of(port).fill(0xAAAA);
                board.restart();
                fail_in_both_runs(failing[write], 1);
                EXPECT_EQ(Fpga_Register_Set(WR_PHY_CONFIG, record_of(config)), -4);
                EXPECT_EQ(registers_of(port)[0], held_after[write]);
                EXPECT_EQ(registers_of(port)[31], 0xAAAA);
                EXPECT_EQ(record.bytes(), untouched_after(config.bytes()));
            }
        }
    }
}

} // namespace
