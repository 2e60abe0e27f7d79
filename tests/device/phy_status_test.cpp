// The status of a PHY: link, speed and duplex as its registers tell.
#include <array>
#include <random>

#include "device/command_test.h"
#include "device/phy_course.h"

namespace
{

using Registers = std::array<uint16_t, 32>;

// The record at its offsets.
Bytes status_record(uint32_t port, int autoneg, int link, int speed100, int full_duplex, int extra)
{
    Bytes record = le32(port);
    for (const int flag : {autoneg, link, speed100, full_duplex, extra}) {
        record += static_cast<char>(flag);
    }
    return record;
}

constexpr int kKept = kUntouched;

Bytes untouched_record(uint32_t port)
{
    return status_record(port, kKept, kKept, kKept, kKept, kKept);
}

class PhyStatusRead : public CommandTest
{
  protected:
    Registers& registers_of(uint32_t port) { return board.fpga.phys[kPhyAddressOfPort[port]]; }

    // Reads the port's PHY with the record's flags set to a value of the caller's.
    int32_t read(uint32_t port, int held = kKept)
    {
        return run(RD_PHY_STATUS, status_record(port, held, held, held, held, held));
    }

    // The same, and the record afterwards.
    void expect_status(uint32_t port, int32_t result, const Bytes& after, int held = kKept)
    {
        EXPECT_EQ(read(port, held), result);
        EXPECT_EQ(record(), after);
    }
};

// Requests ---------------------------------------------------------------------------------

TEST_F(PhyStatusRead, ReadsAll32RegistersOfThePortsOwnPhy)
{
    for (const uint32_t port : kPhyPorts) {
        SCOPED_TRACE(port);
        prove_record(RD_PHY_STATUS, untouched_record(port), phy_reading(port),
                     status_record(port, 0, 0, 0, 0, 0));
    }
}

TEST_F(PhyStatusRead, AddressesThePhyByPort)
{
    const std::pair<uint32_t, const char*> first_requests[] = {
        {0, "ioctl 6B98 09 00 00 00 00 00 00 00"}, {1, "ioctl 6B87 01 00 00 00 00 00 00 00"},
        {2, "ioctl 6B87 02 00 00 00 00 00 00 00"}, {3, "ioctl 6B87 03 00 00 00 00 00 00 00"},
        {4, "ioctl 6B87 04 00 00 00 00 00 00 00"}, {5, "ioctl 6B87 05 00 00 00 00 00 00 00"},
        {6, "ioctl 6B87 08 00 00 00 00 00 00 00"}};
    for (const auto& [port, request] : first_requests) {
        board.restart();
        EXPECT_EQ(read(port), 0);
        ASSERT_EQ(board.calls.size(), 34U);
        EXPECT_EQ(board.calls[0], "open /dev/fpga O_RDWR|O_NONBLOCK");
        EXPECT_EQ(board.calls[1], request);
        EXPECT_EQ(board.calls[32].substr(17), "1F 00 00 00 00 00");
        EXPECT_EQ(board.calls[33], "close /dev/fpga");
    }
}

TEST_F(PhyStatusRead, RefusesPortsAbove6WithoutOpening)
{
    for (const uint32_t port : {7U, 8U, 9U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        expect_refused(RD_PHY_STATUS, untouched_record(port));
    }
}

TEST_F(PhyStatusRead, KeepsTheRecordWhenAnyRegisterCannotBeRead)
{
    registers_of(1).fill(0xFFFF);
    expect_kept(RD_PHY_STATUS, untouched_record(1));
}

// Decisions --------------------------------------------------------------------------------

struct Decision {
    const char* name;
    uint16_t r0;
    uint16_t r1;
    uint16_t r4;
    uint16_t r5;
    int autoneg;
    int link;
    int speed100;
    int full_duplex;
};

constexpr Decision kDecisions[] = {
    {"down, manual 10 half", 0x0000, 0x0000, 0x01E0, 0x01E0, 0, 0, 0, 0},
    {"down, manual 10 full", 0x0100, 0x0000, 0x01E0, 0x01E0, 0, 0, 0, 1},
    {"down, manual 100 half", 0x2000, 0x0000, 0x01E0, 0x01E0, 0, 0, 1, 0},
    {"down, manual 100 full", 0x2100, 0x0000, 0x01E0, 0x01E0, 0, 0, 1, 1},
    {"down, manual, all other bits", 0xCEF7, 0xFFFB, 0xFFFF, 0xFFFF, 0, 0, 0, 0},
    {"down, manual, all bits", 0xEFF7, 0xFFFB, 0x0000, 0x0000, 0, 0, 1, 1},
    {"down, autonegotiation", 0x1000, 0x0000, 0x0000, 0x0000, 1, 0, kKept, kKept},
    {"down, autonegotiation completed", 0x1000, 0x0020, 0x01E0, 0x01E0, 1, 0, kKept, kKept},
    {"down, autonegotiation, all bits", 0xFFF7, 0xFFFB, 0xFFFF, 0xFFFF, 1, 0, kKept, kKept},
    {"up, manual 10 half", 0x0000, 0x0004, 0x01E0, 0x01E0, 0, 1, 0, 0},
    {"up, manual 10 full", 0x0100, 0x0004, 0x0080, 0x0080, 0, 1, 0, 1},
    {"up, manual 100 half", 0x2000, 0x0024, 0x0040, 0x0040, 0, 1, 1, 0},
    {"up, manual 100 full", 0x2100, 0x0004, 0x0020, 0x0020, 0, 1, 1, 1},
    {"up, manual, all other bits", 0xCEF7, 0xFFFF, 0xFFFF, 0xFFFF, 0, 1, 0, 0},
    {"up, common 100 full", 0x1000, 0x0024, 0x0100, 0x0100, 1, 1, 1, 1},
    {"up, common 100 half", 0x1000, 0x0024, 0x0080, 0x0080, 1, 1, 1, 0},
    {"up, common 10 full", 0x1000, 0x0024, 0x0040, 0x0040, 1, 1, 0, 1},
    {"up, common 10 half", 0x1000, 0x0024, 0x0020, 0x0020, 1, 1, 0, 0},
    {"up, common 100 full and half", 0x1000, 0x0024, 0x0180, 0x0180, 1, 1, 1, 1},
    {"up, all abilities", 0x1000, 0x0024, 0x01E0, 0x01E0, 1, 1, 1, 1},
    {"up, control says 100 full, common 10 half", 0x3100, 0x0024, 0x0020, 0x0020, 1, 1, 0, 0},
    {"up, better ability of one end", 0x1000, 0x0024, 0x01E0, 0x0040, 1, 1, 0, 1},
    {"up, all other bits", 0xFFF7, 0xFFFF, 0xFEBF, 0xFFBF, 1, 1, 1, 0},
};

TEST_F(PhyStatusRead, DecidesEveryCombinationOnEveryPort)
{
    for (const uint32_t port : kPhyPorts) {
        for (const Decision& row : kDecisions) {
            SCOPED_TRACE(row.name + (" on port " + std::to_string(port)));
            registers_of(port) = {row.r0, row.r1, 0, 0, row.r4, row.r5};
            expect_status(
                port, 0,
                status_record(port, row.autoneg, row.link, row.speed100, row.full_duplex, 0));
        }
    }
}

TEST_F(PhyStatusRead, LeavesSpeedAndDuplexToTheCallerWithTheLinkDown)
{
    for (const unsigned held : {0U, 1U, 2U, 255U}) {
        registers_of(3) = {0x3100, 0x0020, 0, 0, 0x0100, 0x0100};
        expect_status(3, 0,
                      status_record(3, 1, 0, static_cast<int>(held), static_cast<int>(held), 0),
                      static_cast<uint8_t>(held));
    }
}

TEST_F(PhyStatusRead, PicksTheBestAbilityThatBothEndsHave)
{
    // by the common ability bits 8, 7, 6, 5 as a number of four bits; -1: undecided
    constexpr int kSpeed100[16] = {-1, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    constexpr int kFullDuplex[16] = {-1, 0, 1, 1, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
    for (unsigned own = 0; own < 16; ++own) {
        for (unsigned partner = 0; partner < 16; ++partner) {
            SCOPED_TRACE(std::to_string(own) + " and " + std::to_string(partner));
            const unsigned common = own & partner;
            registers_of(2) = {0x1000,
                               0x0024,
                               0,
                               0,
                               static_cast<uint16_t>(own << 5 | 0xFE1F),
                               static_cast<uint16_t>(partner << 5 | 0xFE1F)};
            if (kSpeed100[common] < 0) {
                EXPECT_EQ(read(2), -2);
                continue;
            }
            expect_status(2, 0, status_record(2, 1, 1, kSpeed100[common], kFullDuplex[common], 0));
        }
    }
}

TEST_F(PhyStatusRead, TakesTheExtraFlagFromTheRegisterOfThePort)
{
    for (const uint32_t port : kPhyPorts) {
        SCOPED_TRACE(port);
        const bool vendor = port == 0 || port == 6;
        for (unsigned n = 0; n < 16; ++n) {
            for (const unsigned word : {1U << n, 0xFFFFU - (1U << n), 0x0000U, 0xFFFFU}) {
                Registers& registers = registers_of(port);
                registers = {};
                registers[0] = static_cast<uint16_t>(vendor ? ~word : word);
                registers[31] = static_cast<uint16_t>(vendor ? word : ~word);
                EXPECT_EQ(read(port), 0);
                EXPECT_EQ(record()[8], vendor ? (word >> 13) & 1U : (word >> 3) & 1U);
            }
        }
    }
}

// The decision once more, straight along its steps.
struct Reading {
    int32_t result;
    Bytes record;
};

Reading reading_of(uint32_t port, const Registers& r, int held)
{
    const auto bit = [](unsigned word, unsigned number) {
        return static_cast<int>((word >> number) & 1U);
    };
    const unsigned common = r[4] & r[5];
    const int extra = port == 0 || port == 6 ? bit(r[31], 13) : bit(r[0], 3);
    const int link = bit(r[1], 2);
    if (bit(r[0], 12) == 0) {
        return {0, status_record(port, 0, link, bit(r[0], 13), bit(r[0], 8), extra)};
    }
    if (link == 0) {
        return {0, status_record(port, 1, 0, held, held, extra)};
    }
    if (bit(r[1], 5) == 1) {
        for (int number = 8; number >= 5; --number) {
            if (bit(common, static_cast<unsigned>(number)) == 1) {
                return {0, status_record(port, 1, 1, number >= 7 ? 1 : 0, number % 2 == 0 ? 1 : 0,
                                         extra)};
            }
        }
    }
    return {-2, status_record(port, 1, 1, held, held, held)};
}

TEST_F(PhyStatusRead, AgreesWithTheDecisionStepsOnRandomRegisters)
{
    std::mt19937 random(20060301);
    board.recording = false;
    unsigned undecided = 0;
    for (unsigned i = 0; i < 30000 && !HasFailure(); ++i) {
        const uint32_t port = kPhyPorts[i % 7];
        Registers& registers = registers_of(port);
        for (uint16_t& value : registers) {
            value = static_cast<uint16_t>(random());
        }
        if (i % 2 == 0) { // few abilities, so that all rows come up
            registers[4] &= static_cast<uint16_t>(random());
            registers[5] &= static_cast<uint16_t>(random());
        }
        const auto held = static_cast<uint8_t>(random());
        const Reading expected = reading_of(port, registers, held);
        expect_status(port, expected.result, expected.record, held);
        undecided += expected.result == -2 ? 1 : 0;
    }
    EXPECT_GT(undecided, 1000U);
    EXPECT_LT(undecided, 10000U);
    board.recording = true;
}

// Undecided negotiation --------------------------------------------------------------------

TEST_F(PhyStatusRead, FailsAnUndecidedNegotiationOnTheClosedDescriptor)
{
    const Registers undecided[] = {
        {0x1000, 0x0004, 0, 0, 0x01E0, 0x01E0}, // not completed
        {0x1000, 0x0024, 0, 0, 0x0000, 0x01E0}, // no common ability
        {0x1000, 0x0024, 0, 0, 0x0140, 0x00A0}, // none of them common
        {0x1000, 0x0024, 0, 0, 0xFE1F, 0xFE1F}, // common, but none of the four
        {0xFFFF, 0xFFDF, 0, 0, 0xFFFF, 0xFFFF}, // not completed, all other bits
    };
    for (const uint32_t port : kPhyPorts) {
        for (const Registers& registers : undecided) {
            SCOPED_TRACE(port);
            registers_of(port) = registers;
            expect_course(RD_PHY_STATUS, put(untouched_record(port)),
                          phy_reading_undecided(port) + kRetryDelay + phy_reading_undecided(port) +
                              kRetryDelay,
                          -2);
            EXPECT_EQ(record(), status_record(port, 1, 1, kKept, kKept, kKept));
        }
    }
}

// Another thread that opens the device between the two passes gets the number of the descriptor
// that has just been closed, and the second pass reads through it.
class PhyStatusBesideAnotherThread : public PhyStatusRead
{
  protected:
    void SetUp() override
    {
        board.after_close = [this] { others.push_back(board.device_open("/dev/fpga")); };
    }

    void TearDown() override
    {
        for (const int descriptor : others) {
            board.closing(descriptor);
        }
        PhyStatusRead::TearDown();
    }

    std::vector<int> others;
};

TEST_F(PhyStatusBesideAnotherThread, CannotMapASecondUndecidedReading)
{
    registers_of(4) = {0x1008, 0x0004};
    EXPECT_EQ(read(4), -3);
    EXPECT_EQ(board.calls.size(), 2 * (1 + 32 + 1 + 32 + 1)); // run twice, with a pause after each
    EXPECT_EQ(record(), status_record(4, 1, 1, kKept, kKept, kKept));
}

TEST_F(PhyStatusBesideAnotherThread, ReportsASecondReadingThatIsDecided)
{
    registers_of(4) = {0x1008, 0x0004, 0, 0, 0x0080, 0x0080};
    board.before_call = [this](const std::string& call) {
        if (call == "close /dev/fpga") {
            registers_of(4)[1] = 0x0024;
        }
    };
    EXPECT_EQ(read(4), 0);
    EXPECT_EQ(board.calls.size(), 1U + 32 + 1 + 32);
    EXPECT_EQ(record(), status_record(4, 1, 1, 1, 0, 1));
}

} // namespace
