// Configuring a PHY: what is written, to every port.
#include "device/phy_config_fixture.h"

namespace
{

TEST_F(PhyConfigWrite, WritesControlTwiceAndThenVendor)
{
    const struct {
        const char* name;
        Config config;
        uint32_t request;
        uint32_t address; // of the PHY
        uint32_t prepare; // register 0
        unsigned pause;   // seconds
        uint32_t control; // register 0
        uint32_t vendor;  // register 31
    } rows[] = {
        {"port 0, negotiation", {0, 1, 0, 0, 0, 0}, 0x6B99, 9, 0x1001, 2, 0x1000, 0x0500},
        {"port 0, other bytes", {0, 1, 1, 2, 255, 2}, 0x6B99, 9, 0x1001, 2, 0x1000, 0x0500},
        {"port 0, 100 full", {0, 0, 0, 1, 1, 1}, 0x6B99, 9, 0x1001, 2, 0x2100, 0x2500},
        {"port 1, negotiation", {1, 1, 0, 1, 1, 0}, 0x6B88, 1, 0x0000, 0, 0x1200, 0x0500},
        {"port 4, negotiation", {4, 1, 1, 0, 0, 1}, 0x6B88, 4, 0x0000, 0, 0x1208, 0x2500},
        {"port 2, 100 half", {2, 0, 1, 1, 0, 0}, 0x6B88, 2, 0x1002, 1, 0x2000, 0x0500},
        {"port 3, 10 full", {3, 2, 0, 0, 1, 1}, 0x6B88, 3, 0x1002, 1, 0x0108, 0x2500},
        {"port 6, negotiation", {6, 1, 0, 0, 0, 1}, 0x6B88, 8, 0x0000, 0, 0x1200, 0x2500},
        {"port 6, 100 full", {6, 0, 0, 1, 1, 1}, 0x6B88, 8, 0x1001, 1, 0x2100, 0x2500},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto writes = [&row](uint32_t number, uint32_t value) {
            return record_write(row.request,
                                le16(row.address) + le16(number) + le16(value) + zeros(2));
        };
        Course course{opens_to_write(), writes(0, row.prepare)};
        if (row.pause != 0) {
            course.push_back(sleeps(row.pause));
        }
        prove_configured(row.config,
                         course + Course{writes(0, row.control), writes(31, row.vendor), closes()});
    }
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
        if (config.port == 0 && config.autoneg != 1 &&
            (config.speed100 != 1 || config.full_duplex != 1)) {
            expect_refused(config);
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
            expect_refused({port, autoneg, 1, 1, 1, 1});
        }
    }
}

TEST_F(PhyConfigWrite, RefusesToSetPort0ToAnythingElseByHand)
{
    for (const unsigned autoneg : {0U, 2U, 255U}) {
        for (const auto& [speed100, full_duplex] : std::vector<std::pair<unsigned, unsigned>>{
                 {0, 0}, {0, 1}, {1, 0}, {1, 2}, {2, 1}, {2, 2}, {1, 255}, {255, 1}, {255, 255}}) {
            expect_refused({0, autoneg, 1, speed100, full_duplex, 1});
        }
    }
}

TEST_F(PhyConfigWrite, KeepsWhatItWroteBeforeAFailure)
{
    for (const uint32_t port : kPhyPorts) {
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
                expect_result(config, -4);
                EXPECT_EQ(registers_of(port)[0], held_after[write]);
                EXPECT_EQ(registers_of(port)[31], 0xAAAA);
            }
        }
    }
}

} // namespace
