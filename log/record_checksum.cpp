#include "log/record_checksum.h"

namespace
{

uint32_t word_at(const uint8_t* data)
{
    return data[0] + 256U * data[1];
}

} // namespace

uint16_t recordChecksum_compute(const uint8_t* data, int32_t length)
{
    uint32_t sum = 0;
    for (; length > 1; length -= 2) {
        sum += word_at(data);
        data += 2;
    }
    if (length == 1) {
        sum += word_at(data) & 0xFF00U;
    }
    sum = (sum & 0xFFFFU) + (sum >> 16);
    sum += sum >> 16;
    const uint32_t complement = ~sum & 0xFFFFU;
    return static_cast<uint16_t>((complement << 8) | (complement >> 8));
}
