#include "records_checksum.h"

/* Adds with the carry brought round at each step; the two result bytes change places at the end. */
unsigned records_checksum(const unsigned char* data, size_t size)
{
    unsigned sum = 0;
    size_t i;
    for (i = 0; i + 1 < size; i += 2) {
        sum += data[i] | (unsigned)data[i + 1] << 8;
        if (sum > 0xFFFFU) {
            sum -= 0xFFFFU;
        }
    }
    sum = ~sum & 0xFFFFU;
    return sum >> 8 | (sum & 0xFFU) << 8;
}
