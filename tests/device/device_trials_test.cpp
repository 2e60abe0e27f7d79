// The trials of all commands, made with the library on the simulated board. The file that
// MAINT_TRIALS names gets them.
#include "device/device_trials.h"

#include <fstream>

namespace
{

TEST_F(DeviceTrials, OfEachCommandReachAllItsRequestsAndHaveEachOfThemRefused)
{
    std::string all;
    size_t count = 0;
    walk([&](const Trial& trial, const Outcome& outcome) {
        all += text(trial, outcome);
        ++count;
    });
    if (const char* path = getenv("MAINT_TRIALS")) {
        std::ofstream file(path, std::ios::trunc);
        file << all;
        file.close();
        EXPECT_TRUE(file) << path;
        printf("%zu trials, %zu bytes: %s\n", count, all.size(), path);
    }
}

} // namespace
