// Switch port 4, which follows the PHY of port 5.
#include "device/phy_config_fixture.h"

namespace
{

class SwitchPortFollowing : public PhyConfigWrite
{
  protected:
    // Port 5 by hand at 100 Mb/s full duplex; the switch port's link byte differs from the PHY's.
    static constexpr Config kManual{5, 0, 0, 1, 1, 0};

    void SetUp() override { registers_of(5)[1] = 0x0004; }

    static Course written_first(const Config& config)
    {
        return Course{opens_to_write()} + phy_writes(config) +
               Course{record_write(
                   0x6B73, switch_port(config.full_duplex, config.speed100, config.switch_flag))};
    }

    // What precedes the passes.
    static Course before_passes(const Config& config)
    {
        return written_first(config) + Course{opens_to_write()};
    }

    static Course both_closed() { return {closes(), closes()}; }

    static Course phy_pass() { return Course{sleeps(1)} + phy_reading(5); }

    static Course equal_pass()
    {
        return phy_pass() + Course{record_read(0x6B72, switch_port(0, 0, 0))};
    }

    static Course written_pass(unsigned full_duplex, unsigned speed100, unsigned link)
    {
        return equal_pass() +
               Course{record_write(0x6B73, switch_port(full_duplex, speed100, link))};
    }

    // Puts the bytes into the switch port before each reading of it.
    void hold_before_reading(const std::function<Bytes()>& bytes)
    {
        board.before_call = [this, bytes](const std::string& call) {
            if (call.rfind("ioctl 6B72", 0) == 0) {
                board.fpga.switch_ports[4] = bytes();
            }
        };
    }

    // The call fails that follows the course.
    void expect_stopped(const Config& config, const Course& course, const std::string& failed,
                        const Course& rest)
    {
        SCOPED_TRACE("failing call " + std::to_string(course.size()) + ": " + failed);
        registers_of(5)[1] = 0x0004;
        board.restart();
        board.fail_call(course.size() + 1);
        expect_result(config, 0);
        EXPECT_EQ(board.calls, calls_of(course) + Trace{failed + " -> failed"} + calls_of(rest));
        EXPECT_EQ(board.open_descriptors(), 0U);
    }
};

TEST_F(SwitchPortFollowing, IsWrittenFromTheCallersBytes)
{
    refuse_second_descriptor();
    for (const unsigned speed100 : kFlagValues) {
        for (const unsigned full_duplex : kFlagValues) {
            for (const unsigned flag : kFlagValues) {
                expect_result({5, 1, flag, speed100, full_duplex, 0}, 0);
                EXPECT_EQ(board.fpga.switch_ports[4], switch_port(full_duplex, speed100, flag));
            }
        }
    }
    EXPECT_EQ(board.fpga.switch_ports.size(), 1U);
}

TEST_F(SwitchPortFollowing, IsLeftWhenTheSecondDescriptorCannotBeOpened)
{
    refuse_second_descriptor();
    const Config config{5, 0, 1, 0, 1, 1};
    prove_configured(config, written_first(config) + Course{opens_to_write(kIgnored), closes()});
}

TEST_F(SwitchPortFollowing, FailsWhenTheFirstWriteFails)
{
    board.fpga.switch_ports[4] = hex("04 FF FF FF FF FF FF FF");
    const Course written = written_first(kManual);
    fail_in_both_runs(written.size(), 1);
    expect_result(kManual, -4);
    EXPECT_EQ(board.calls.size(), 2 * (written.size() + 2));
    EXPECT_EQ(board.fpga.switch_ports[4], hex("04 FF FF FF FF FF FF FF"));
    EXPECT_EQ(registers_of(5)[0], 0x2100);
    EXPECT_EQ(registers_of(5)[31], 0x0500);
}

TEST_F(SwitchPortFollowing, StopsWhenTheSwitchPortEqualsThePhy)
{
    const Config config{5, 0, 1, 1, 1, 0};
    expect_configured(config, before_passes(config) + equal_pass() + both_closed());
}

TEST_F(SwitchPortFollowing, WritesThePhysStateOnceAndFindsItEqual)
{
    expect_configured(kManual, before_passes(kManual) + written_pass(1, 1, 1) + equal_pass() +
                                   both_closed());
    EXPECT_EQ(board.fpga.switch_ports[4], switch_port(1, 1, 1));
}

TEST_F(SwitchPortFollowing, ReplacesTheCallersOddBytesByThePhysFlags)
{
    const Config config{5, 255, 1, 2, 255, 1}; // 2 and 255 as speed and duplex
    expect_configured(config,
                      before_passes(config) + written_pass(1, 1, 1) + equal_pass() + both_closed());
}

TEST_F(SwitchPortFollowing, WritesTheThreeFlagsAsThePhyHasThem)
{
    for (unsigned flags = 0; flags < 8; ++flags) {
        const unsigned full_duplex = flags & 1U;
        const unsigned speed100 = (flags >> 1) & 1U;
        const unsigned link = flags >> 2;
        registers_of(5)[1] = link == 1 ? 0x0004 : 0x0000;
        const Config config{5, 0, 1 - link, speed100, full_duplex, 0};
        expect_configured(config, before_passes(config) +
                                      written_pass(full_duplex, speed100, link) + equal_pass() +
                                      both_closed());
        EXPECT_EQ(board.fpga.switch_ports[4], switch_port(full_duplex, speed100, link));
    }
}

TEST_F(SwitchPortFollowing, ComparesTheThreeFlagsAlone)
{
    for (const char* equal : {"04 00 01 01 01 00 00 00", "04 FF 01 01 01 FF FF FF"}) {
        hold_before_reading([equal] { return hex(equal); });
        expect_configured(kManual, before_passes(kManual) + equal_pass() + both_closed());
    }
    for (const char* different :
         {"04 00 00 01 01 00 00 00", "04 00 01 00 01 00 00 00", "04 00 01 01 00 00 00 00",
          "04 FF 00 01 01 FF FF FF", "04 00 02 01 01 00 00 00", "04 00 01 FF 01 00 00 00",
          "04 00 01 01 02 00 00 00"}) {
        unsigned readings = 0;
        hold_before_reading([&readings, different] {
            return ++readings == 1 ? hex(different) : switch_port(1, 1, 1);
        });
        expect_configured(kManual, before_passes(kManual) + written_pass(1, 1, 1) + equal_pass() +
                                       both_closed());
    }
}

TEST_F(SwitchPortFollowing, GivesUpAfterFivePasses)
{
    hold_before_reading([] { return switch_port(0, 0, 0); });
    expect_configured(kManual, before_passes(kManual) + written_pass(1, 1, 1) +
                                   written_pass(1, 1, 1) + written_pass(1, 1, 1) +
                                   written_pass(1, 1, 1) + written_pass(1, 1, 1) + both_closed());
}

TEST_F(SwitchPortFollowing, FollowsAPhyThatKeepsChanging)
{
    unsigned pause = 0;
    board.before_call = [&](const std::string& call) {
        if (call == "sleep 1" && ++pause > 1) { // the first one is the PHY's own
            registers_of(5)[0] = pause % 2 == 0 ? 0x2000 : 0x0100;
            registers_of(5)[1] = pause % 3 == 0 ? 0x0000 : 0x0004;
        }
    };
    expect_configured(kManual, before_passes(kManual) + written_pass(0, 1, 1) +
                                   written_pass(1, 0, 0) + written_pass(0, 1, 1) +
                                   written_pass(1, 0, 1) + written_pass(0, 1, 0) + both_closed());
}

TEST_F(SwitchPortFollowing, StopsWhenThePhyNegotiates)
{
    const Config config{5, 1, 0, 1, 1, 0};
    registers_of(5)[1] = 0x0000; // the link is still down
    expect_configured(config, before_passes(config) + phy_pass() + both_closed());

    registers_of(5) = {0, 0x0024, 0, 0, 0x0100, 0x0100}; // negotiated at once
    expect_configured(config, before_passes(config) + phy_pass() + both_closed());
    EXPECT_EQ(board.fpga.switch_ports[4], switch_port(1, 1, 0));
}

TEST_F(SwitchPortFollowing, StopsWhenTheNegotiationIsUndecided)
{
    const Config config{5, 1, 0, 1, 1, 0};
    registers_of(5)[1] = 0x0004;
    expect_configured(config, before_passes(config) + Course{sleeps(1)} + phy_reading_undecided(5) +
                                  both_closed());
}

TEST_F(SwitchPortFollowing, StopsAtThePhyThatCannotBeRead)
{
    const Course before = before_passes(kManual) + Course{sleeps(1)};
    expect_stopped(kManual, before, "open /dev/fpga O_RDWR|O_NONBLOCK", both_closed());
    const Course reading = phy_reading(5);
    for (size_t failing = 1; failing <= 32; ++failing) {
        const Course read(reading.begin(), reading.begin() + static_cast<ptrdiff_t>(failing));
        expect_stopped(kManual, before + read, reading[failing].call,
                       Course{closes()} + both_closed());
    }
}

TEST_F(SwitchPortFollowing, StopsWhenTheSwitchPortCannotBeRead)
{
    expect_stopped(kManual, before_passes(kManual) + phy_pass(),
                   "ioctl 6B72 04 00 00 00 00 00 00 00", both_closed());
    EXPECT_EQ(board.fpga.switch_ports[4], switch_port(1, 1, 0));
}

TEST_F(SwitchPortFollowing, StopsWhenTheSwitchPortCannotBeWritten)
{
    expect_stopped(kManual, before_passes(kManual) + equal_pass(),
                   "ioctl 6B73 04 00 01 01 01 00 00 00", both_closed());
    EXPECT_EQ(board.fpga.switch_ports[4], switch_port(1, 1, 0));
}

TEST_F(SwitchPortFollowing, StopsInALaterPassToo)
{
    hold_before_reading([] { return switch_port(0, 0, 0); });
    Course passes = before_passes(kManual);
    for (int pass = 2; pass <= 5; ++pass) {
        passes = passes + written_pass(1, 1, 1);
        expect_stopped(kManual, passes + Course{sleeps(1)}, "open /dev/fpga O_RDWR|O_NONBLOCK",
                       both_closed());
        expect_stopped(kManual, passes + phy_pass(), "ioctl 6B72 04 00 00 00 00 00 00 00",
                       both_closed());
        expect_stopped(kManual, passes + equal_pass(), "ioctl 6B73 04 00 01 01 01 00 00 00",
                       both_closed());
    }
}

TEST_F(SwitchPortFollowing, IsNotDoneForOtherPorts)
{
    for (const uint32_t port : {0U, 1U, 2U, 3U, 4U, 6U}) {
        const Config config{port, 0, 1, 1, 1, 0};
        expect_configured(config, Course{opens_to_write()} + phy_writes(config) + Course{closes()});
    }
    EXPECT_TRUE(board.fpga.switch_ports.empty());
}

} // namespace
