// The library's calls, as library_calls.syms names them.
#include "tools/maintctl/library_calls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include "catalogue/requests.h"
#include "tools/maintctl/call_text.h"

namespace
{

constexpr const char* kSaveLockPath = "/tmp/Saveing"; // an empty file, there only to be locked
constexpr const char* kNowherePath = "/dev/null";

constexpr size_t kPathSize = 48;
constexpr size_t kFiles = 16;
constexpr size_t kTextSize = 512;   // of what is printed
constexpr size_t kRecordSize = 260; // of a request: the longest

struct OpenFile {
    int descriptor;
    char path[kPathSize]; // empty: none is open
};

struct {
    const LibraryCalls* settings;
    unsigned held;
    OpenFile files[kFiles];
    size_t next; // of files, when all are taken
} state;

// A call of the library on its way.
struct Call {
    CallText text;
    int errno_before;
    int error = 0; // 0: the call did not set errno
    long microseconds = 0;
    const char* held = nullptr; // what a dry run says of it
};

constexpr const char* kNotSent = "not sent";
constexpr const char* kNotDone = "not done";

bool traced()
{
    return state.settings != nullptr && state.settings->trace != nullptr;
}

bool dryRun()
{
    return state.settings != nullptr && state.settings->dry_run;
}

// Open files -------------------------------------------------------------------------------------

OpenFile* file_find(int descriptor)
{
    auto* file = std::find_if(std::begin(state.files), std::end(state.files), [=](const auto& row) {
        return row.path[0] != '\0' && row.descriptor == descriptor;
    });
    return file == std::end(state.files) ? nullptr : file;
}

void file_closed(int descriptor)
{
    if (OpenFile* file = file_find(descriptor)) {
        file->path[0] = '\0';
    }
}

// A path that is too long is not remembered.
void file_opened(int descriptor, const char* path)
{
    file_closed(descriptor);
    if (strlen(path) >= kPathSize) {
        return;
    }
    auto* file = std::find_if(std::begin(state.files), std::end(state.files),
                              [](const auto& row) { return row.path[0] == '\0'; });
    if (file == std::end(state.files)) {
        file = &state.files[state.next++ % kFiles];
    }
    file->descriptor = descriptor;
    strcpy(file->path, path);
}

// A call's course --------------------------------------------------------------------------------

Call call_begin(const char* name)
{
    Call call;
    call.errno_before = errno;
    callText_begin(call.text, traced() || dryRun());
    callText_add(call.text, "%s(", name);
    return call;
}

Call call_begin(const char* name, int descriptor)
{
    Call call = call_begin(name);
    if (const OpenFile* file = file_find(descriptor)) {
        callText_add(call.text, "%s", file->path);
    } else {
        callText_add(call.text, "%d", descriptor);
    }
    return call;
}

Call call_begin(const char* name, FILE* stream)
{
    return call_begin(name, fileno(stream));
}

Call call_begin(const char* name, const char* path)
{
    Call call = call_begin(name);
    callText_quote(call.text, path);
    return call;
}

// Whether a dry run keeps the call from being made.
bool call_hold(Call& call, const char* words = kNotDone)
{
    if (!dryRun()) {
        return false;
    }
    ++state.held;
    call.held = words;
    CallText line;
    callText_begin(line, true);
    callText_widen(line);
    callText_add(line, "%s: %.*s)", words, static_cast<int>(call.text.length), call.text.text);
    callText_print(line, state.settings->console);
    return true;
}

template <class Make> auto call_make(Call& call, const Make& make)
{
    timespec begin{};
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &begin);
    errno = 0;
    const auto result = make();
    call.error = errno;
    clock_gettime(CLOCK_MONOTONIC, &end);
    call.microseconds =
        (end.tv_sec - begin.tv_sec) * 1'000'000L + (end.tv_nsec - begin.tv_nsec) / 1000;
    return result;
}

// The result, and errno's name where the call failed and has set it.
void call_result(Call& call, long result, bool failed)
{
    callText_widen(call.text);
    callText_add(call.text, ") = %ld", result);
    if (failed && call.error != 0) {
        callText_error(call.text, call.error);
    }
}

void call_end(Call& call)
{
    if (traced()) {
        if (call.held != nullptr) {
            callText_add(call.text, " %s", call.held);
        }
        callText_add(call.text, "  %ld us", call.microseconds);
        callText_print(call.text, state.settings->trace);
    }
    errno = call.error != 0 ? call.error : call.errno_before;
}

// Of a call that fails with a negative result.
template <class Result> Result call_end(Call& call, Result result)
{
    call_result(call, static_cast<long>(result), static_cast<long>(result) < 0);
    call_end(call);
    return result;
}

// Of a call that fails with less than it was asked for.
size_t call_endItems(Call& call, size_t done, size_t asked)
{
    call_result(call, static_cast<long>(done), done < asked);
    call_end(call);
    return done;
}

void call_endNull(Call& call)
{
    callText_widen(call.text);
    callText_add(call.text, ") = null");
    if (call.error != 0) {
        callText_error(call.text, call.error);
    }
    call_end(call);
}

// Pieces of calls --------------------------------------------------------------------------------

// "fread(/conf/config, 1 x 12 bytes"
void items_add(Call& call, size_t size, size_t count)
{
    callText_add(call.text, ", %zu x %zu bytes", count, size);
}

bool mode_creates(const char* mode)
{
    return mode[0] != 'r';
}

// A file that a dry run must not create or cut, is replaced by one that takes everything.
const char* path_toOpen(Call& call, const char* path, bool creates)
{
    return creates && strcmp(path, kSaveLockPath) != 0 && call_hold(call) ? kNowherePath : path;
}

template <class Set> int clock_set(Call& call, time_t now, const Set& set)
{
    callText_add(call.text, "%lld", static_cast<long long>(now));
    return call_hold(call) ? call_end(call, 0) : call_end(call, call_make(call, set));
}

// What is printed is put together here, to be shown; a longer text is cut.
using PrintedText = char[kTextSize];

__attribute__((format(printf, 2, 0))) int printed_make(PrintedText& text, const char* format,
                                                       va_list values)
{
    va_list copy;
    va_copy(copy, values);
    const int length = vsnprintf(text, sizeof text, format, copy);
    va_end(copy);
    return length;
}

bool printed_isWhole(int length)
{
    return length >= 0 && static_cast<size_t>(length) < kTextSize;
}

// On the console or, without settings, as the library does it.
__attribute__((format(printf, 3, 0))) int text_print(const PrintedText& text, int length,
                                                     const char* format, va_list values)
{
    if (state.settings != nullptr) {
        return vfprintf(state.settings->console, format, values);
    }
    return printed_isWhole(length) ? printf("%s", text) : vprintf(format, values);
}

int line_print(const char* text)
{
    if (state.settings == nullptr) {
        return puts(text);
    }
    // The length is what the C library's own puts tells.
    return line_write(text, state.settings->console) ? static_cast<int>(strlen(text) + 1) : EOF;
}

// A request's course -----------------------------------------------------------------------------

struct Request {
    uint32_t number;
    const uint8_t* argument;               // the record, or a value
    const RequestDescription* description; // null: not known
    size_t size;                           // of the record; 0: there is none
    uint8_t before[kRecordSize];           // as the driver gets it
};

void request_begin(Request& request, uint32_t number, const void* argument)
{
    request.number = number;
    request.argument = static_cast<const uint8_t*>(argument);
    request.description = request_find(number);
    const bool record =
        request.description != nullptr && request.description->argument == RequestArgument::kRecord;
    request.size = record ? std::min<size_t>(request.description->size, kRecordSize) : 0;
    if (record) {
        memcpy(request.before, request.argument, request.size);
    }
}

// What is not known may change anything.
bool request_changes(const Request& request)
{
    return request.description == nullptr || request.description->changes;
}

void request_tell(const Request& request, const OpenFile* device, int result, int error)
{
    if (state.settings == nullptr || state.settings->answered == nullptr || device == nullptr) {
        return;
    }
    const bool record = request.size != 0;
    const auto value = static_cast<uint32_t>(reinterpret_cast<unsigned long>(request.argument));
    const AnsweredRequest answer{device->path,
                                 request.number,
                                 record ? request.before : nullptr,
                                 record ? request.argument : nullptr,
                                 request.size,
                                 record ? 0 : value,
                                 result,
                                 result < 0 ? error : 0};
    state.settings->answered(state.settings->listener, answer);
}

} // namespace

void libraryCalls_set(const LibraryCalls* calls)
{
    state.settings = calls;
    state.held = 0;
}

const LibraryCalls* libraryCalls_get()
{
    return state.settings;
}

unsigned libraryCalls_held()
{
    return state.held;
}

// The calls --------------------------------------------------------------------------------------

extern "C" {

int watched_open(const char* path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list values;
        va_start(values, flags);
        mode = va_arg(values, mode_t);
        va_end(values);
    }
    Call call = call_begin("open", path);
    callText_add(call.text, ", ");
    callText_openFlags(call.text, flags);
    if ((flags & O_CREAT) != 0) {
        callText_add(call.text, ", 0%o", mode);
    }
    const char* opened = path_toOpen(call, path, (flags & (O_CREAT | O_TRUNC)) != 0);
    const int descriptor = call_make(call, [=] { return open(opened, flags, mode); });
    if (descriptor >= 0) {
        file_opened(descriptor, path);
    }
    return call_end(call, descriptor);
}

int watched_close(int descriptor)
{
    Call call = call_begin("close", descriptor);
    file_closed(descriptor);
    return call_end(call, call_make(call, [=] { return close(descriptor); }));
}

int watched_ioctl(int descriptor, unsigned long number, ...)
{
    va_list values;
    va_start(values, number);
    void* argument = va_arg(values, void*);
    va_end(values);
    Request request;
    request_begin(request, static_cast<uint32_t>(number), argument);
    Call call = call_begin("ioctl", descriptor);
    callText_add(call.text, ", ");
    callText_request(call.text, request.number, request.description, argument);
    if (request_changes(request) && call_hold(call, kNotSent)) {
        return call_end(call, 0);
    }
    const int result = call_make(call, [=] { return ioctl(descriptor, number, argument); });
    request_tell(request, file_find(descriptor), result, call.error);
    call_result(call, result, result < 0);
    if (result >= 0 && request.size != 0) {
        callText_answer(call.text, *request.description, request.argument);
    }
    call_end(call);
    return result;
}

ssize_t watched_read(int descriptor, void* data, size_t size)
{
    Call call = call_begin("read", descriptor);
    callText_add(call.text, ", %zu bytes", size);
    return call_end(call, call_make(call, [=] { return read(descriptor, data, size); }));
}

ssize_t watched_write(int descriptor, const void* data, size_t size)
{
    Call call = call_begin("write", descriptor);
    callText_add(call.text, ", %zu bytes", size);
    if (call_hold(call)) {
        return call_end(call, static_cast<ssize_t>(size));
    }
    return call_end(call, call_make(call, [=] { return write(descriptor, data, size); }));
}

off_t watched_lseek(int descriptor, off_t offset, int whence)
{
    Call call = call_begin("lseek", descriptor);
    callText_add(call.text, ", %ld, ", static_cast<long>(offset));
    callText_whence(call.text, whence);
    return call_end(call, call_make(call, [=] { return lseek(descriptor, offset, whence); }));
}

int watched_stat(const char* path, struct stat* status)
{
    Call call = call_begin("stat", path);
    return call_end(call, call_make(call, [=] { return stat(path, status); }));
}

int watched_unlink(const char* path)
{
    Call call = call_begin("unlink", path);
    if (call_hold(call)) {
        return call_end(call, 0);
    }
    return call_end(call, call_make(call, [=] { return unlink(path); }));
}

int watched_flock(int descriptor, int operation)
{
    Call call = call_begin("flock", descriptor);
    callText_add(call.text, ", ");
    callText_lock(call.text, operation);
    return call_end(call, call_make(call, [=] { return flock(descriptor, operation); }));
}

FILE* watched_fopen(const char* path, const char* mode)
{
    Call call = call_begin("fopen", path);
    callText_add(call.text, ", ");
    callText_quote(call.text, mode);
    const char* opened = path_toOpen(call, path, mode_creates(mode));
    FILE* stream = call_make(call, [=] { return fopen(opened, mode); });
    if (stream == nullptr) {
        call_endNull(call);
        return nullptr;
    }
    file_opened(fileno(stream), path);
    call_end(call, fileno(stream));
    return stream;
}

int watched_fclose(FILE* stream)
{
    Call call = call_begin("fclose", stream);
    file_closed(fileno(stream));
    return call_end(call, call_make(call, [=] { return fclose(stream); }));
}

size_t watched_fread(void* data, size_t size, size_t count, FILE* stream)
{
    Call call = call_begin("fread", stream);
    items_add(call, size, count);
    const auto read_items = [=] { return fread(data, size, count, stream); };
    return call_endItems(call, call_make(call, read_items), count);
}

size_t watched_fwrite(const void* data, size_t size, size_t count, FILE* stream)
{
    Call call = call_begin("fwrite", stream);
    items_add(call, size, count);
    if (call_hold(call)) {
        return call_endItems(call, count, count);
    }
    const auto write_items = [=] { return fwrite(data, size, count, stream); };
    return call_endItems(call, call_make(call, write_items), count);
}

int watched_fseek(FILE* stream, long offset, int whence)
{
    Call call = call_begin("fseek", stream);
    callText_add(call.text, ", %ld, ", offset);
    callText_whence(call.text, whence);
    return call_end(call, call_make(call, [=] { return fseek(stream, offset, whence); }));
}

char* watched_fgets(char* text, int size, FILE* stream)
{
    Call call = call_begin("fgets", stream);
    callText_add(call.text, ", %d bytes", size);
    char* line = call_make(call, [=] { return fgets(text, size, stream); });
    if (line == nullptr) {
        call_endNull(call);
    } else {
        call_end(call, strlen(line));
    }
    return line;
}

__attribute__((format(printf, 2, 3))) int watched_fprintf(FILE* stream, const char* format, ...)
{
    Call call = call_begin("fprintf", stream);
    PrintedText text;
    va_list values;
    va_start(values, format);
    const int length = printed_make(text, format, values);
    callText_add(call.text, ", ");
    callText_quote(call.text, text);
    int result = length;
    if (!call_hold(call)) {
        result = call_make(call, [&] {
            return printed_isWhole(length) ? fprintf(stream, "%s", text)
                                           : vfprintf(stream, format, values);
        });
    }
    va_end(values);
    return call_end(call, result);
}

__attribute__((format(printf, 1, 2))) int watched_printf(const char* format, ...)
{
    Call call = call_begin("printf");
    PrintedText text;
    va_list values;
    va_start(values, format);
    const int length = printed_make(text, format, values);
    callText_quote(call.text, text);
    const int result = call_make(call, [&] { return text_print(text, length, format, values); });
    va_end(values);
    return call_end(call, result);
}

int watched_puts(const char* text)
{
    Call call = call_begin("puts", text);
    return call_end(call, call_make(call, [=] { return line_print(text); }));
}

time_t watched_time(time_t* now)
{
    Call call = call_begin("time");
    return call_end(call, call_make(call, [=] { return time(now); }));
}

#ifdef MAINT_HAVE_STIME
int watched_stime(const time_t* now)
{
    Call call = call_begin("stime");
    return clock_set(call, *now, [=] { return stime(now); });
}
#endif

int watched_clock_settime(clockid_t clock, const timespec* now)
{
    Call call = call_begin("clock_settime");
    return clock_set(call, now->tv_sec, [=] { return clock_settime(clock, now); });
}

// A dry run waits for nothing.
unsigned watched_sleep(unsigned seconds)
{
    Call call = call_begin("sleep");
    callText_add(call.text, "%u", seconds);
    if (dryRun()) {
        call.held = kNotDone;
        return call_end(call, 0U);
    }
    return call_end(call, call_make(call, [=] { return sleep(seconds); }));
}

int watched_usleep(useconds_t microseconds)
{
    Call call = call_begin("usleep");
    callText_add(call.text, "%u", microseconds);
    if (dryRun()) {
        call.held = kNotDone;
        return call_end(call, 0);
    }
    return call_end(call, call_make(call, [=] { return usleep(microseconds); }));
}

} // extern "C"
