#include "sim/call_text.h"

#include <fcntl.h>

#include <cstdio>
#include <utility>

std::string openFlags_text(int flags)
{
    static constexpr std::pair<int, const char*> kFlags[] = {
        {O_CREAT, "O_CREAT"},       {O_EXCL, "O_EXCL"},     {O_TRUNC, "O_TRUNC"},
        {O_APPEND, "O_APPEND"},     {O_SYNC, "O_SYNC"},     {O_NONBLOCK, "O_NONBLOCK"},
        {O_NOFOLLOW, "O_NOFOLLOW"}, {O_NOCTTY, "O_NOCTTY"}, {O_CLOEXEC, "O_CLOEXEC"}};
    std::string text = (flags & O_ACCMODE) == O_RDONLY   ? "O_RDONLY"
                       : (flags & O_ACCMODE) == O_WRONLY ? "O_WRONLY"
                                                         : "O_RDWR";
    int rest = flags & ~O_ACCMODE;
    for (const auto& [flag, name] : kFlags) {
        if ((rest & flag) == flag) { // O_SYNC is two bits
            text += std::string("|") + name;
            rest &= ~flag;
        }
    }
    return rest == 0 ? text : text + "|" + std::to_string(rest);
}

std::string request_text(const RequestForm& form, const void* record, unsigned long value)
{
    char text[32];
    snprintf(text, sizeof text, "%04X", form.number);
    std::string line = text;
    if (form.argument == Argument::kValue) {
        snprintf(text, sizeof text, " =%04lX", value);
        return line + text;
    }
    const auto* bytes = static_cast<const unsigned char*>(record);
    for (size_t i = 0; i < form.size; ++i) {
        snprintf(text, sizeof text, " %02X", bytes[i]);
        line += text;
    }
    return line;
}
