// The parts of the C++ library that are headers alone, and a constructor that runs before main.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace
{

struct Start {
    time_t second;
    Start() : second(time(nullptr)) {}
};
const Start kStart;

} // namespace

int main()
{
    std::array<int64_t, 4> values{4, 3, 2, kStart.second};
    std::sort(values.begin(), values.end());
    const std::span<const int64_t> view = values;
    return printf("%d\n", static_cast<int>(view.front() / view.back())) < 0;
}
