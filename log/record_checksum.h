// Checksum of the record area of the flash log image.
#pragma once

#include <cstdint>

// Ones' complement sum of the little-endian 16-bit words, complemented, its bytes exchanged.
// With an odd length the byte behind the data is read, too, and the last word counts with its high
// byte, which is that byte behind; record areas are never of odd length.
uint16_t recordChecksum_compute(const uint8_t* data, int32_t length);
