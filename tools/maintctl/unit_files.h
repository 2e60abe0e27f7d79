// Files of the unit that this program reads by itself.
#pragma once

#include <cstddef>
#include <cstdint>

// Reads the first bytes of a file, at most `size`. Null, or what is wrong: "cannot be opened".
const char* unitFile_read(const char* path, uint8_t* bytes, size_t size, size_t& count);
