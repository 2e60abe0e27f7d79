// The driver's requests: how each takes its argument, how long it is and what the driver fills.
#include <algorithm>

#include "sim/fpga_model.h"

namespace
{

constexpr RequestForm word_out(uint32_t number)
{
    return {number, Argument::kWord, 2, 0, 2};
}

constexpr RequestForm word_in(uint32_t number)
{
    return {number, Argument::kRecord, 2, 0, 0};
}

constexpr RequestForm value_in(uint32_t number, size_t size = 2)
{
    return {number, Argument::kValue, size, 0, 0};
}

constexpr RequestForm map_out(uint32_t number)
{
    return {number, Argument::kMap, 4, 0, 4};
}

constexpr RequestForm record_out(uint32_t number, size_t size, size_t fills, size_t count)
{
    return {number, Argument::kRecord, size, fills, count};
}

constexpr RequestForm record_in(uint32_t number, size_t size)
{
    return {number, Argument::kRecord, size, 0, 0};
}

// Sizes of records that pass through (0x6B21, 22, 27, 28, 29, 40, 41, 4E, 6E to 70, A3 to A6) are
// the driver's; those below are the least that their commands use.
constexpr RequestForm kRequests[] = {
    record_out(0x6B01, 8, 0, 8),
    word_out(0x6B02),
    word_out(0x6B03),
    value_in(0x6B04),
    word_out(0x6B07),
    value_in(0x6B08),
    word_out(0x6B09),
    value_in(0x6B0A),
    word_out(0x6B0B),
    value_in(0x6B0C),
    word_out(0x6B0F),
    value_in(0x6B10),
    word_out(0x6B11),
    value_in(0x6B12),
    word_out(0x6B21),
    word_in(0x6B22),
    record_out(0x6B23, 4, 0, 4),
    record_in(0x6B24, 4),
    word_out(0x6B27),
    value_in(0x6B28),
    word_out(0x6B29),
    value_in(0x6B2A),
    word_out(0x6B2D),
    value_in(0x6B2E),
    word_out(0x6B35),
    value_in(0x6B36),
    record_out(0x6B39, 36, 8, 4),
    record_in(0x6B3A, 36),
    map_out(0x6B3B),
    map_out(0x6B3D),
    record_out(0x6B3E, 16, 4, 4),
    word_out(0x6B40),
    word_in(0x6B41),
    record_out(0x6B42, 8, 4, 4),
    record_in(0x6B43, 8),
    word_out(0x6B48),
    value_in(0x6B49),
    record_out(0x6B4A, 12, 2, 10),
    record_in(0x6B4B, 12),
    record_out(0x6B4C, 16, 12, 2),
    word_out(0x6B4E),
    word_out(0x6B4F),
    value_in(0x6B50),
    word_out(0x6B51),
    value_in(0x6B52),
    record_out(0x6B5C, 16, 0, 16),
    record_in(0x6B5D, 16),
    record_out(0x6B5E, 36, 12, 16),
    record_in(0x6B5F, 36),
    record_out(0x6B60, 8, 4, 2),
    record_in(0x6B61, 8),
    word_in(0x6B62),
    record_in(0x6B63, 8),
    record_out(0x6B67, 20, 8, 12),
    record_in(0x6B68, 20),
    record_in(0x6B69, 8),
    record_out(0x6B6A, 80, 2, 78),
    record_in(0x6B6B, 80),
    word_out(0x6B6E),
    word_in(0x6B6F),
    record_in(0x6B70, 16),
    record_in(0x6B71, 12),
    record_out(0x6B72, 8, 1, 7),
    record_in(0x6B73, 8),
    value_in(0x6B74, 1),
    record_in(0x6B77, 8),
    record_in(0x6B78, 260),
    record_in(0x6B79, 260),
    value_in(0x6B7A),
    record_out(0x6B83, 8, 4, 4),
    record_in(0x6B84, 8),
    record_out(0x6B85, 24, 4, 20),
    record_in(0x6B86, 24),
    record_out(0x6B87, 8, 6, 2),
    record_in(0x6B88, 8),
    map_out(0x6B8D),
    value_in(0x6B8E, 4),
    record_out(0x6B98, 8, 6, 2),
    record_in(0x6B99, 8),
    record_out(0x6B9A, 12, 4, 4),
    record_in(0x6B9B, 68),
    record_in(0x6B9C, 160),
    record_in(0x6B9F, 12),
    record_out(0x6BA0, 12, 4, 4),
    record_in(0x6BA1, 12),
    {0x6BA2, Argument::kNothing, 0, 0, 0},
    word_out(0x6BA3),
    word_in(0x6BA4),
    word_out(0x6BA5),
    word_in(0x6BA6),
};

constexpr bool below(const RequestForm& row, uint32_t number)
{
    return row.number < number;
}
static_assert(std::is_sorted(std::begin(kRequests), std::end(kRequests),
                             [](const auto& a, const auto& b) { return below(a, b.number); }));

} // namespace

const RequestForm* requestForm_find(uint32_t number)
{
    const auto* form = std::lower_bound(std::begin(kRequests), std::end(kRequests), number, below);
    return form == std::end(kRequests) || form->number != number ? nullptr : form;
}
