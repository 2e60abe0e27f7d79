// What stands in for the C library's calls; see calls.syms. Each records itself, fails when a test
// has planned it, and otherwise does the real thing in the private directory.
#include "board/calls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

#include "board/board.h"
#include "sim/call_text.h"

namespace
{

constexpr const char* kFpgaPath = "/dev/fpga";
constexpr const char* kRtcPath = "/dev/rtc";

Board& board()
{
    return Board::current();
}

std::string open_text(int flags, mode_t mode)
{
    char octal[16];
    snprintf(octal, sizeof octal, " 0%o", mode);
    return openFlags_text(flags) + ((flags & O_CREAT) != 0 ? octal : "");
}

std::string seek_text(long offset, int whence)
{
    const std::string from = whence == SEEK_SET ? "" : " from " + std::to_string(whence);
    return std::to_string(offset) + from;
}

std::string lock_text(int operation)
{
    switch (operation) {
    case LOCK_EX:
        return "LOCK_EX";
    case LOCK_EX | LOCK_NB:
        return "LOCK_EX|LOCK_NB";
    case LOCK_UN:
        return "LOCK_UN";
    default:
        return std::to_string(operation);
    }
}

const std::string& path_of(FILE* stream)
{
    return board().path_of(fileno(stream));
}

std::string detail_text(const std::string& text)
{
    return text;
}

std::string detail_text(size_t number)
{
    return std::to_string(number);
}

template <class Make> auto detail_text(const Make& make) -> decltype(make())
{
    return make();
}

// Records "call path detail"; false when the call has to fail, with errno set. The detail is a
// text, a number or what makes the text: nothing is put together that nobody reads.
template <class Detail = std::string>
bool begin(const char* call, std::string_view path, const Detail& detail = {})
{
    std::string text;
    if (board().calls_read()) {
        text.append(call).append(" ").append(path);
        const std::string behind = detail_text(detail);
        text += behind.empty() ? "" : " " + behind;
    }
    if (board().begin(text)) {
        return true;
    }
    errno = EIO;
    return false;
}

__attribute__((format(printf, 1, 0))) std::string format_text(const char* format, va_list values)
{
    char* text = nullptr;
    const int length = vasprintf(&text, format, values);
    std::string result(text, static_cast<size_t>(length));
    free(text);
    return result;
}

// The request as text; of the clock's with the path before it.
std::string ioctl_text(const std::string& path, const RequestForm& form, unsigned long argument)
{
    return (path == kFpgaPath ? "ioctl " : "ioctl " + path + " ") +
           request_text(form, reinterpret_cast<const void*>(argument), argument);
}

// What a failing transfer of so many items answers, as one that got half way: the whole items in
// that half. Of one item that is none, of as many bytes it is not.
size_t items_inHalf(size_t count)
{
    return count / 2;
}

std::string without_newline(std::string text)
{
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

} // namespace

extern "C" {

int board_open(const char* name, int flags, ...)
{
    const std::string_view path = name;
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list values;
        va_start(values, flags);
        mode = va_arg(values, mode_t);
        va_end(values);
    }
    if (!begin("open", path, [=] { return open_text(flags, mode); })) {
        return -1;
    }
    const bool fpga = path == kFpgaPath;
    if (fpga || path == kRtcPath) {
        if (!(fpga ? board().fpga_present : board().rtc_present)) {
            errno = ENOENT;
            return -1;
        }
        return board().device_open(name);
    }
    const int descriptor = open(board().host(name).c_str(), flags, mode);
    if (descriptor >= 0) {
        board().opened(descriptor, name);
    }
    return descriptor;
}

int board_close(int descriptor)
{
    const bool good = begin("close", board().path_of(descriptor));
    board().closing(descriptor);
    const int result = board().is_device(descriptor) ? 0 : close(descriptor);
    if (board().after_close) {
        board().after_close();
    }
    return good ? result : -1;
}

ssize_t board_read(int descriptor, void* data, size_t size)
{
    return begin("read", board().path_of(descriptor), size) ? read(descriptor, data, size) : -1;
}

ssize_t board_write(int descriptor, const void* data, size_t size)
{
    return begin("write", board().path_of(descriptor), size) ? write(descriptor, data, size) : -1;
}

off_t board_lseek(int descriptor, off_t offset, int whence)
{
    return begin("lseek", board().path_of(descriptor), [=] { return seek_text(offset, whence); })
               ? lseek(descriptor, offset, whence)
               : -1;
}

int board_stat(const char* path, struct stat* status)
{
    return begin("stat", path) ? stat(board().host(path).c_str(), status) : -1;
}

int board_unlink(const char* path)
{
    return begin("unlink", path) ? unlink(board().host(path).c_str()) : -1;
}

int board_flock(int descriptor, int operation)
{
    if (!begin("flock", board().path_of(descriptor), [=] { return lock_text(operation); })) {
        return -1;
    }
    if ((operation & LOCK_NB) == 0 && board().own_wait_fails &&
        board().waits_for_itself(descriptor)) {
        ADD_FAILURE() << "waits for its own lock on " << board().path_of(descriptor);
        errno = EDEADLK;
        return -1;
    }
    const int result = flock(descriptor, operation);
    if (result == 0) {
        (operation & LOCK_UN) != 0 ? board().unlocked(descriptor) : board().locked(descriptor);
    }
    return result;
}

FILE* board_fopen(const char* path, const char* mode)
{
    if (!begin("fopen", path, mode)) {
        return nullptr;
    }
    FILE* stream = fopen(board().host(path).c_str(), mode);
    if (stream != nullptr) {
        board().opened(fileno(stream), path);
    }
    return stream;
}

int board_fclose(FILE* stream)
{
    const bool good = begin("fclose", path_of(stream));
    board().closing(fileno(stream));
    const int result = fclose(stream);
    return good ? result : EOF;
}

size_t board_fread(void* data, size_t size, size_t count, FILE* stream)
{
    return begin("fread", path_of(stream), size * count) ? fread(data, size, count, stream)
                                                         : items_inHalf(count);
}

size_t board_fwrite(const void* data, size_t size, size_t count, FILE* stream)
{
    return begin("fwrite", path_of(stream), size * count) ? fwrite(data, size, count, stream)
                                                          : items_inHalf(count);
}

int board_fseek(FILE* stream, long offset, int whence)
{
    return begin("fseek", path_of(stream), [=] { return seek_text(offset, whence); })
               ? fseek(stream, offset, whence)
               : -1;
}

char* board_fgets(char* text, int size, FILE* stream)
{
    return begin("fgets", path_of(stream), static_cast<size_t>(size)) ? fgets(text, size, stream)
                                                                      : nullptr;
}

int board_fprintf(FILE* stream, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const std::string text = format_text(format, values);
    va_end(values);
    if (!begin("fprintf", path_of(stream), text.size())) {
        return -1;
    }
    return static_cast<int>(fwrite(text.data(), 1, text.size(), stream));
}

int board_printf(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const std::string text = format_text(format, values);
    va_end(values);
    if (!begin("printf", without_newline(text))) {
        return -1;
    }
    board().console += text;
    return static_cast<int>(text.size());
}

int board_puts(const char* text)
{
    if (!begin("puts", text)) {
        return EOF;
    }
    const std::string line = std::string(text) + "\n";
    board().console += line;
    return static_cast<int>(line.size()); // as the C library of the development machine does
}

time_t board_time(time_t* out)
{
    const time_t now = begin("time", "now") ? board().now : -1;
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

int board_ioctl(int descriptor, unsigned long request, ...)
{
    va_list values;
    va_start(values, request);
    const unsigned long argument = va_arg(values, unsigned long);
    va_end(values);
    const std::string& path = board().path_of(descriptor);
    const auto number = static_cast<uint32_t>(request);
    const bool fpga = path == kFpgaPath;
    const bool rtc = path == kRtcPath;
    const RequestForm* form = rtc ? rtcRequestForm_find(number) : requestForm_find(number);
    if (form == nullptr || request != form->number) {
        ADD_FAILURE() << "no driver knows request " << std::hex << request << " on " << path;
        errno = ENOTTY;
        return -1;
    }
    if (form->argument == Argument::kNothing && argument != 0) {
        ADD_FAILURE() << "argument " << argument << " for a request that takes none";
    }
    const bool good = board().begin(board().calls_read() ? ioctl_text(path, *form, argument) : "");
    if (!rtc && !fpga) {
        errno = EBADF;
        return -1;
    }
    if (!good) {
        errno = EIO;
        return -1;
    }
    auto* record = reinterpret_cast<char*>(argument);
    return rtc ? board().rtc.serve(*form, record)
               : board().fpga.serve(*form, record, static_cast<uint32_t>(argument));
}

// The board's clock, by whichever call the C library has.
int board_stime(const time_t* now)
{
    if (!begin("stime", std::to_string(*now))) {
        return -1;
    }
    board().now = *now;
    return 0;
}

int board_clock_settime(clockid_t clock, const timespec* now)
{
    if (clock != CLOCK_REALTIME) {
        ADD_FAILURE() << "clock " << clock;
    }
    if (now->tv_nsec != 0) {
        ADD_FAILURE() << "the clock is set to whole seconds, not to " << now->tv_nsec << " ns more";
    }
    return board_stime(&now->tv_sec);
}

unsigned board_sleep(unsigned seconds)
{
    begin("sleep", std::to_string(seconds));
    return 0;
}

int board_usleep(useconds_t microseconds)
{
    begin("usleep", std::to_string(microseconds));
    return 0;
}

} // extern "C"
