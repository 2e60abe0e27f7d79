// What the tests of WR_PHY_CONFIG start from.
#pragma once

#include <array>

#include "device/command_test.h"
#include "device/phy_course.h"

constexpr unsigned kFlagValues[] = {0, 1, 2, 255};

// A caller's configuration.
struct Config {
    uint32_t port;
    unsigned autoneg;
    unsigned switch_flag;
    unsigned speed100;
    unsigned full_duplex;
    unsigned extra;

    // The record at its offsets.
    [[nodiscard]] Bytes bytes() const
    {
        return le32(port) + byte(autoneg) + byte(switch_flag) + byte(speed100) + byte(full_duplex) +
               byte(extra);
    }
};

// A switch port record of port 4.
inline Bytes switch_port(unsigned full_duplex, unsigned speed100, unsigned link)
{
    return hex("04 00") + byte(full_duplex) + byte(speed100) + byte(link) + zeros(3);
}

// What is written to the PHY, and the pauses between.
inline Course phy_writes(const Config& config)
{
    const uint32_t port = config.port;
    const bool autoneg = config.autoneg == 1;
    const uint32_t manual =
        (config.speed100 != 0 ? 0x2000U : 0U) | (config.full_duplex != 0 ? 0x0100U : 0U);
    const uint32_t extra = config.extra == 1 && port != 6 ? 0x0008 : 0;
    Course course;
    if (port == 0) {
        course = {phy_register_write(0, 0, 0x1001), sleeps(2),
                  phy_register_write(0, 0, autoneg ? 0x1000 : manual)};
    } else if (autoneg) {
        course = {phy_register_write(port, 0, 0), phy_register_write(port, 0, 0x1200 | extra)};
    } else {
        course = {phy_register_write(port, 0, port == 6 ? 0x1001 : 0x1002), sleeps(1),
                  phy_register_write(port, 0, manual | extra)};
    }
    course.push_back(phy_register_write(port, 31, config.extra == 1 ? 0x2500 : 0x0500));
    return course;
}

class PhyConfigWrite : public CommandTest
{
  protected:
    // The calls of a configuration; its record stays.
    void expect_configured(const Config& config, const Course& course)
    {
        SCOPED_TRACE(testing::PrintToString(config.bytes()));
        expect_course(WR_PHY_CONFIG, with(config.bytes())(), course);
        EXPECT_EQ(record(), config.bytes());
    }

    // A run; its record stays.
    void expect_result(const Config& config, int32_t result)
    {
        expect_run(WR_PHY_CONFIG, config.bytes(), result, config.bytes());
    }

    void prove_configured(const Config& config, const Course& course)
    {
        prove_record(WR_PHY_CONFIG, config.bytes(), course, config.bytes());
    }

    void expect_refused(const Config& config)
    {
        CommandTest::expect_refused(WR_PHY_CONFIG, config.bytes());
    }

    // Opens the first descriptor only, so that switch port 4 is not followed.
    void refuse_second_descriptor()
    {
        device_put = [this] { board.fpga_present = true; };
        board.before_call = [this](const std::string& call) {
            if (call.rfind("ioctl 6B73", 0) == 0) {
                board.fpga_present = false;
            } else if (call == "usleep 1") {
                board.fpga_present = true;
            }
        };
    }

    std::array<uint16_t, 32>& registers_of(uint32_t port)
    {
        return board.fpga.phys[kPhyAddressOfPort[port]];
    }
};
