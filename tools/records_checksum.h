/*
 * The checksum of a flash image's records, for programs that make or check images. Shares nothing
 * with the library, so that the two check each other.
 */
#ifndef RECORDS_CHECKSUM_H
#define RECORDS_CHECKSUM_H

#include <stddef.h>

/* size: even, as 100 bytes a record make it */
unsigned records_checksum(const unsigned char* data, size_t size);

#endif
