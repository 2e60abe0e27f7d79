#include "tools/maintctl/call_text.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace
{

constexpr size_t kQuotedMax = 128; // bytes of a text
constexpr size_t kPairsMax = 16;   // bytes of a record that belong together
constexpr size_t kAllShown = 8;    // a record of more fields shows only those that are not 0

struct Name {
    int value;
    const char* name;
};

constexpr Name kOpenFlags[] = {
    {O_CREAT, "O_CREAT"}, {O_TRUNC, "O_TRUNC"}, {O_NONBLOCK, "O_NONBLOCK"}};
constexpr Name kLocks[] = {{LOCK_SH, "LOCK_SH"},
                           {LOCK_EX, "LOCK_EX"},
                           {LOCK_UN, "LOCK_UN"},
                           {LOCK_EX | LOCK_NB, "LOCK_EX|LOCK_NB"}};
constexpr Name kWhences[] = {
    {SEEK_SET, "SEEK_SET"}, {SEEK_CUR, "SEEK_CUR"}, {SEEK_END, "SEEK_END"}};
constexpr Name kErrors[] = {
    {EACCES, "EACCES"},   {EAGAIN, "EAGAIN"},   {EBADF, "EBADF"},          {EBUSY, "EBUSY"},
    {EEXIST, "EEXIST"},   {EFAULT, "EFAULT"},   {EFBIG, "EFBIG"},          {EINTR, "EINTR"},
    {EINVAL, "EINVAL"},   {EIO, "EIO"},         {EISDIR, "EISDIR"},        {ELOOP, "ELOOP"},
    {EMFILE, "EMFILE"},   {ENFILE, "ENFILE"},   {ENODEV, "ENODEV"},        {ENOENT, "ENOENT"},
    {ENOLCK, "ENOLCK"},   {ENOMEM, "ENOMEM"},   {ENOSPC, "ENOSPC"},        {ENOSYS, "ENOSYS"},
    {ENOTDIR, "ENOTDIR"}, {ENOTTY, "ENOTTY"},   {ENXIO, "ENXIO"},          {EPERM, "EPERM"},
    {EPIPE, "EPIPE"},     {EROFS, "EROFS"},     {ESPIPE, "ESPIPE"},        {ETIMEDOUT, "ETIMEDOUT"},
    {EDQUOT, "EDQUOT"},   {EDEADLK, "EDEADLK"}, {EOPNOTSUPP, "EOPNOTSUPP"}};

template <size_t kCount> void name_add(CallText& text, const Name (&names)[kCount], int value)
{
    for (const Name& known : names) {
        if (known.value == value) {
            callText_add(text, "%s", known.name);
            return;
        }
    }
    callText_add(text, "%d", value);
}

void bytes_add(CallText& text, const uint8_t* bytes, size_t count)
{
    for (size_t i = 0; i < std::min(count, kPairsMax); ++i) {
        callText_add(text, "%02x", bytes[i]);
    }
    if (count > kPairsMax) {
        callText_add(text, "..");
    }
}

void number_add(CallText& text, const RequestField& field, const uint8_t* bytes)
{
    uint32_t number = 0;
    if (field.width == sizeof(uint32_t)) {
        memcpy(&number, bytes, sizeof number);
    } else if (field.width == sizeof(uint16_t)) {
        uint16_t half = 0;
        memcpy(&half, bytes, sizeof half);
        number = half;
    } else {
        number = *bytes;
    }
    if (field.negative) {
        callText_add(text, "%d", static_cast<int32_t>(number));
    } else if (field.decimal) {
        callText_add(text, "%u", number);
    } else {
        callText_add(text, field.width == 1 ? "0x%02x" : "0x%04x", number);
    }
}

// Each field behind the separator; behind the first a blank.
void fields_add(CallText& text, const RequestDescription& request, const uint8_t* record,
                bool filled, const char* separator)
{
    const bool all = std::count(request.layout, request.layout + strlen(request.layout), ' ') <
                     static_cast<std::ptrdiff_t>(kAllShown);
    RequestField field{};
    for (const char* rest = request.layout; (rest = requestField_next(rest, field)) != nullptr;) {
        const bool spare = field.name == "-";
        const uint8_t* bytes = record + field.offset;
        const uint8_t* end = bytes + size_t{field.width} * field.count;
        const bool zero = std::all_of(bytes, end, [](uint8_t byte) { return byte == 0; });
        if (requestField_isFilled(request, field) != filled ||
            (zero && (spare || (!all && field.offset != 0)))) {
            continue;
        }
        callText_add(text, "%s%.*s=", separator, spare ? 5 : static_cast<int>(field.name.size()),
                     spare ? "spare" : field.name.data());
        separator = " ";
        if (field.width == 1 && field.count > 1) {
            bytes_add(text, bytes, field.count);
            continue;
        }
        for (const uint8_t* number = bytes; number < end; number += field.width) {
            callText_add(text, number == bytes ? "" : ",");
            number_add(text, field, number);
        }
    }
}

} // namespace

void callText_begin(CallText& text, bool wanted)
{
    text.limit = wanted ? CallText::kRoom : 0;
    text.length = 0;
}

void callText_widen(CallText& text)
{
    if (text.limit != 0) {
        text.limit = CallText::kSize;
    }
}

void callText_add(CallText& text, const char* format, ...)
{
    if (text.length >= text.limit) {
        return;
    }
    va_list values;
    va_start(values, format);
    const int length = vsnprintf(text.text + text.length, text.limit - text.length, format, values);
    va_end(values);
    text.length = std::min(text.length + static_cast<size_t>(std::max(length, 0)), text.limit - 1);
}

void callText_quote(CallText& text, const char* quoted)
{
    callText_add(text, "\"");
    size_t count = 0;
    for (; quoted[count] != '\0' && count < kQuotedMax; ++count) {
        const auto byte = static_cast<uint8_t>(quoted[count]);
        if (byte == '\n') {
            callText_add(text, "\\n");
        } else if (byte == '"' || byte == '\\') {
            callText_add(text, "\\%c", byte);
        } else {
            callText_add(text, byte < ' ' || byte > '~' ? "\\x%02x" : "%c", byte);
        }
    }
    callText_add(text, quoted[count] == '\0' ? "\"" : "\"..");
}

void callText_openFlags(CallText& text, int flags)
{
    const int access = flags & O_ACCMODE;
    callText_add(text, "%s",
                 access == O_RDONLY   ? "O_RDONLY"
                 : access == O_WRONLY ? "O_WRONLY"
                                      : "O_RDWR");
    int others = flags & ~O_ACCMODE;
    for (const Name& flag : kOpenFlags) {
        if ((others & flag.value) != 0) {
            callText_add(text, "|%s", flag.name);
            others &= ~flag.value;
        }
    }
    if (others != 0) {
        callText_add(text, "|0%o", static_cast<unsigned>(others));
    }
}

void callText_lock(CallText& text, int operation)
{
    name_add(text, kLocks, operation);
}

void callText_whence(CallText& text, int whence)
{
    name_add(text, kWhences, whence);
}

void callText_request(CallText& text, uint32_t number, const RequestDescription* request,
                      const void* argument)
{
    const auto value = reinterpret_cast<unsigned long>(argument);
    callText_add(text, "0x%04X", number);
    if (request == nullptr) {
        callText_add(text, ", 0x%08lx", value);
        return;
    }
    callText_add(text, " %s%s", request->name, request_verb(*request));
    if (request->argument == RequestArgument::kValue) {
        callText_add(text, ", 0x%0*lx", request->size == 1 ? 2 : 4, value);
    } else if (request->argument == RequestArgument::kRecord) {
        fields_add(text, *request, static_cast<const uint8_t*>(argument), false, ", ");
    }
}

void callText_answer(CallText& text, const RequestDescription& request, const uint8_t* record)
{
    fields_add(text, request, record, true, ", ");
}

void callText_error(CallText& text, int error)
{
    callText_add(text, " ");
    name_add(text, kErrors, error);
}

void callText_print(CallText& text, FILE* file)
{
    text.text[text.length++] = '\n'; // in the place of the terminating zero
    fwrite(text.text, 1, text.length, file);
}

bool line_write(const char* text, FILE* file)
{
    return fprintf(file, "%s\n", text) >= 0;
}
