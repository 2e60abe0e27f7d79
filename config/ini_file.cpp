// Key lookup in KEY=value files.
#include "maint/ini_file.h"

#include <cstdio>
#include <cstring>

#include "config/config_path.h"
#include "log/report.h"
#include "maint/save_lock.h"

namespace
{

constexpr int kPieceSize = 1024; // a longer line is read, and treated, as several lines
static_assert(kPieceSize <= INI_VALUE_SIZE, "a value is part of one piece");

// "[", the word for "site" in EUC-JP, "ID#": begins the header of every per-site section.
constexpr const char* kSiteSection = "[\xB5\xF2\xC5\xC0ID#";

struct Delimiters {
    char open;
    char close;
};

Delimiters delimiters_of(const char* path)
{
    return strcmp(path, kConfigPath) == 0 ? Delimiters{'\'', '\''} : Delimiters{'=', '\n'};
}

bool begins_with(const char* line, const char* prefix)
{
    return strncmp(line, prefix, strlen(prefix)) == 0;
}

// Ends the text at the first delimiter and returns what follows it, or null if there is none.
char* text_cut(char* text, char delimiter)
{
    char* end = strchr(text, delimiter);
    if (end == nullptr) {
        return nullptr;
    }
    *end = '\0';
    return end + 1;
}

bool value_cut(char* line, Delimiters delimiters, char* value)
{
    char* text = text_cut(line, delimiters.open);
    if (text == nullptr || text_cut(text, delimiters.close) == nullptr) {
        return false;
    }
    strcpy(value, text); // at most a piece, which the value buffer holds
    return true;
}

bool section_find(FILE* file, const char* section)
{
    char line[kPieceSize];
    while (fgets(line, sizeof line, file) != nullptr) {
        if (begins_with(line, section)) {
            return true;
        }
    }
    return false;
}

// The first line that begins with the key decides, whether its value is delimited or not.
bool value_find(FILE* file, const char* key, Delimiters delimiters, char* value)
{
    char line[kPieceSize];
    while (fgets(line, sizeof line, file) != nullptr && !begins_with(line, kSiteSection)) {
        if (begins_with(line, key)) {
            return value_cut(line, delimiters, value);
        }
    }
    return false;
}

bool file_search(const char* path, const char* section, const char* key, char* value)
{
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        report_format(LOG_SINK_BOTH, "GetIniFileString : 001 : %s file open error", path);
        return false;
    }
    const bool anywhere = section == nullptr || section[0] == '\0';
    const bool found = (anywhere || section_find(file, section)) &&
                       value_find(file, key, delimiters_of(path), value);
    fclose(file);
    return found;
}

} // namespace

int32_t GetIniFileString(const char* path, const char* section, const char* key, char* value)
{
    if (value == nullptr) {
        return -1;
    }
    value[0] = '\0';
    if (path == nullptr || key == nullptr) {
        return -1;
    }
    FILE* lock = nullptr;
    if (fileAccess_lock(&lock, SAVE_LOCK_WAIT) != 0) {
        return -1;
    }
    const bool found = file_search(path, section, key, value);
    if (fileAccess_unlock(lock) != 0) {
        return -1;
    }
    return found ? 0 : -1;
}
