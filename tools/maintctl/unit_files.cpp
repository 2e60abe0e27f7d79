#include "tools/maintctl/unit_files.h"

#include <cstdio>

const char* unitFile_read(const char* path, uint8_t* bytes, size_t size, size_t& count)
{
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        return "cannot be opened";
    }
    count = fread(bytes, 1, size, file);
    const bool good = ferror(file) == 0;
    fclose(file);
    return good ? nullptr : "cannot be read";
}
