// What the emulator lets the tests do to this machine: its system calls reach the real kernel.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace
{

TEST(Emulator, RunsTheTestsWithoutTheRightToSetTheClock)
{
    constexpr unsigned kSetsTheClock = 25; // the number of the right in capability sets
    std::ifstream status("/proc/self/status");
    size_t found = 0;
    for (std::string field, value; status >> field;) {
        if (field == "CapEff:" || field == "CapPrm:") {
            status >> value;
            EXPECT_EQ(std::stoull(value, nullptr, 16) >> kSetsTheClock & 1, 0U) << field << value;
            ++found;
        }
    }
    EXPECT_EQ(found, 2U);
}

} // namespace
