// Prefix lengths and their masks.
#include "device/command_facts.h"
#include "device/prefix_masks.h"
#include "device/record_bytes.h"

namespace
{

const uint32_t kConversionRounds = share_of(300000);

class PrefixConversion : public DeviceTest
{
};

uint16_t length_of(uint32_t mask)
{
    const PrefixBytes bytes = {static_cast<uint8_t>(mask >> 24), static_cast<uint8_t>(mask >> 16),
                               static_cast<uint8_t>(mask >> 8), static_cast<uint8_t>(mask)};
    uint16_t length = 0xEEEE;
    EXPECT_EQ(prefixLength_fromMask(bytes, length), 0);
    return length;
}

TEST_F(PrefixConversion, EveryLengthBecomesItsMaskOrNothing)
{
    for (uint32_t length = 0; length <= UINT16_MAX; ++length) {
        PrefixBytes mask = {0x12, 0x34, 0x56, 0x78};
        const int32_t result = prefixMask_fromLength(static_cast<uint16_t>(length), mask);
        ASSERT_EQ(result, length > 32 ? -1 : 0) << hex_number(length);
        ASSERT_EQ(value_of(mask), length > 32 ? 0x12345678U : kMasks[length]) << hex_number(length);
    }
    EXPECT_EQ(board.call_count(), 0U);
}

TEST_F(PrefixConversion, EveryContiguousMaskBecomesItsLength)
{
    for (unsigned length = 0; length <= 32; ++length) {
        EXPECT_EQ(length_of(kMasks[length]), length);
    }
}

TEST_F(PrefixConversion, AMaskWithGapsHasTheLengthOfItsLeadingOnes)
{
    Draws draw;
    EXPECT_EQ(ones_before_zero(0xFF00FF00), 8);
    for (uint32_t round = 0; round < kConversionRounds; ++round) {
        // A run of ones, a zero, and anything behind it.
        const uint32_t run = draw() % 32;
        const uint32_t value = (kMasks[run] | (draw() & ~kMasks[run + 1])) & ~(0x80000000U >> run);
        ASSERT_EQ(length_of(value), run) << hex_number(value);
        ASSERT_EQ(length_of(value), ones_before_zero(value)) << hex_number(value);
    }
}

} // namespace
