// Serves /dev/fpga of the virtual board, a real character device by way of CUSE, around the model
// that the tests on the simulated board use; /dev/rtc_model likewise, for the clock's whole set of
// requests; and /dev/device_model, which sets the models and tells what they saw:
//   write "state 17"           puts the devices into this state and forgets what they saw
//   write "answers 6B42 -1"    from now on this request returns this
//   write "of 123"             of what they saw, only what this process did is read
//   read                       what they saw, as text, a call a line
//
// Speaks the kernel's own protocol (linux/fuse.h). Ends when it cannot.
#include <fcntl.h>
#include <linux/fuse.h>
#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "sim/call_text.h"
#include "sim/device_state.h"
#include "sim/fpga_model.h"
#include "sim/rtc_model.h"

namespace
{

struct Device {
    const char* name;                          // under /dev
    const char* path;                          // the product's, as the text of a call names it
    const RequestForm* (*form_find)(uint32_t); // null: the device that sets and tells
    int cuse = -1;
};

enum { kFpga, kClock, kControl, kDevices };

std::array<Device, kDevices> devices{{{"fpga", "/dev/fpga", requestForm_find},
                                      {"rtc_model", "/dev/rtc", rtcRequestForm_find},
                                      {"device_model", "", nullptr}}};

FpgaModel fpga;
RtcModel rtc;

// What the devices saw, and from whom.
struct Call {
    uint32_t process;
    std::string text;
};
std::vector<Call> calls;

// What was opened, by the number that the kernel hands back with every call on it.
struct Handle {
    uint32_t process;
    uint32_t of;      // of the control: the process whose calls are read; 0: everybody's
    std::string text; // of the control: what is read, made at the first read
    size_t position;
};
std::map<uint64_t, Handle> handles;
uint64_t last_handle = 0;

void answer(const Device& device, uint64_t unique, int error, const void* first = nullptr,
            size_t first_size = 0, const void* second = nullptr, size_t second_size = 0)
{
    fuse_out_header header{};
    header.len = static_cast<uint32_t>(sizeof header + first_size + second_size);
    header.error = -error;
    header.unique = unique;
    const iovec parts[] = {{&header, sizeof header},
                           {const_cast<void*>(first), first_size},
                           {const_cast<void*>(second), second_size}};
    // A caller that was killed meanwhile waits for nothing any more.
    if (writev(device.cuse, parts, 3) < 0 && errno != ENOENT) {
        perror(device.name);
    }
}

void init_answer(const Device& device, uint64_t unique)
{
    cuse_init_out out{};
    out.major = FUSE_KERNEL_VERSION;
    out.minor = FUSE_KERNEL_MINOR_VERSION;
    out.flags = CUSE_UNRESTRICTED_IOCTL; // records are where the caller says, not behind a size
    out.max_read = out.max_write = 65536;
    const std::string name = std::string("DEVNAME=") + device.name;
    answer(device, unique, 0, &out, sizeof out, name.c_str(), name.size() + 1);
}

void open_answer(const Device& device, const fuse_in_header& header, const fuse_open_in& in)
{
    handles[++last_handle] = {header.pid, 0, "", 0};
    if (device.form_find != nullptr) {
        constexpr int kLargeFile = 0400000; // the kernel's own, for callers with 64-bit offsets
        const int flags = static_cast<int>(in.flags) & ~kLargeFile;
        calls.push_back(
            {header.pid, std::string("open ") + device.path + " " + openFlags_text(flags)});
    }
    fuse_open_out out{};
    out.fh = last_handle;
    out.open_flags = FOPEN_DIRECT_IO;
    answer(device, header.unique, 0, &out, sizeof out);
}

void release_answer(const Device& device, const fuse_in_header& header, const fuse_release_in& in)
{
    if (device.form_find != nullptr) {
        // The kernel does not say who closes: the one who opened, as far as the product goes.
        calls.push_back({handles[in.fh].process, std::string("close ") + device.path});
    }
    handles.erase(in.fh);
    answer(device, header.unique, 0);
}

void ioctl_answer(const Device& device, const fuse_in_header& header, const fuse_ioctl_in& in,
                  char* record)
{
    const std::string call =
        std::string("ioctl ") + (&device == &devices[kFpga] ? "" : std::string(device.path) + " ");
    const RequestForm* form = device.form_find == nullptr ? nullptr : device.form_find(in.cmd);
    if (form == nullptr) {
        char number[16];
        snprintf(number, sizeof number, "%04X", in.cmd);
        calls.push_back({header.pid, call + number + " unknown"});
        answer(device, header.unique, ENOTTY);
        return;
    }
    const bool has_record = form->argument != Argument::kValue && form->size > 0;
    fuse_ioctl_out out{};
    if (has_record && in.in_size < form->size) {
        // First the kernel has to fetch the caller's record.
        out.flags = FUSE_IOCTL_RETRY;
        out.in_iovs = 1;
        out.out_iovs = form->fills_count > 0 ? 1 : 0;
        const fuse_ioctl_iovec places[] = {{in.arg, form->size},
                                           {in.arg + form->fills, form->fills_count}};
        answer(device, header.unique, 0, &out, sizeof out, places,
               sizeof places[0] * (1 + out.out_iovs));
        return;
    }
    const auto value = static_cast<uint32_t>(in.arg);
    calls.push_back({header.pid, call + request_text(*form, record, value)});
    if (form->argument == Argument::kNothing && value != 0) {
        calls.back().text += " with an argument";
    }
    out.result =
        &device == &devices[kFpga] ? fpga.serve(*form, record, value) : rtc.serve(*form, record);
    answer(device, header.unique, 0, &out, sizeof out, record + form->fills,
           has_record ? form->fills_count : 0);
}

// One line that sets something; false: it is none.
bool control_set(Handle& handle, const char* line)
{
    unsigned number = 0;
    int result = 0;
    if (sscanf(line, "state %u", &number) == 1) {
        deviceState_put(number, fpga, rtc);
        calls.clear();
    } else if (sscanf(line, "answers %x %d", &number, &result) == 2) {
        fpga.results[number] = result;
    } else if (sscanf(line, "of %u", &number) == 1) {
        handle.of = number;
    } else {
        return false;
    }
    return true;
}

void write_answer(const Device& device, const fuse_in_header& header, const fuse_write_in& in,
                  const char* data)
{
    const std::string line(data, in.size);
    if (device.form_find != nullptr || !control_set(handles[in.fh], line.c_str())) {
        answer(device, header.unique, EINVAL);
        return;
    }
    fuse_write_out out{};
    out.size = in.size;
    answer(device, header.unique, 0, &out, sizeof out);
}

void read_answer(const Device& device, const fuse_in_header& header, const fuse_read_in& in)
{
    if (device.form_find != nullptr) {
        answer(device, header.unique, EINVAL);
        return;
    }
    Handle& handle = handles[in.fh];
    if (handle.position == 0) {
        for (const Call& call : calls) {
            if (handle.of == 0 || handle.of == call.process) {
                handle.text += call.text + "\n";
            }
        }
    }
    const size_t rest = handle.text.size() - handle.position;
    const size_t size = rest < in.size ? rest : in.size;
    answer(device, header.unique, 0, handle.text.data() + handle.position, size);
    handle.position += size;
}

// What stands at the beginning of a message's part.
template <class Part> Part part_at(const char* place)
{
    Part part;
    memcpy(&part, place, sizeof part);
    return part;
}

void serve(const Device& device)
{
    static char message[FUSE_MIN_READ_BUFFER + 65536];
    if (read(device.cuse, message, sizeof message) < 0) {
        if (errno == EINTR || errno == ENOENT || errno == EAGAIN) {
            return;
        }
        perror(device.name);
        exit(1);
    }
    const auto header = part_at<fuse_in_header>(message);
    char* const body = message + sizeof header;
    switch (header.opcode) {
    case CUSE_INIT:
        init_answer(device, header.unique);
        break;
    case FUSE_OPEN:
        open_answer(device, header, part_at<fuse_open_in>(body));
        break;
    case FUSE_RELEASE:
        release_answer(device, header, part_at<fuse_release_in>(body));
        break;
    case FUSE_IOCTL:
        ioctl_answer(device, header, part_at<fuse_ioctl_in>(body), body + sizeof(fuse_ioctl_in));
        break;
    case FUSE_WRITE:
        write_answer(device, header, part_at<fuse_write_in>(body), body + sizeof(fuse_write_in));
        break;
    case FUSE_READ:
        read_answer(device, header, part_at<fuse_read_in>(body));
        break;
    case FUSE_FLUSH:
        answer(device, header.unique, 0);
        break;
    case FUSE_INTERRUPT: // nothing here takes long
    case FUSE_FORGET:    // neither has an answer
        break;
    default:
        answer(device, header.unique, ENOSYS);
    }
}

} // namespace

int main()
{
    deviceState_put(0, fpga, rtc);
    std::array<pollfd, kDevices> ready{};
    for (size_t i = 0; i < kDevices; ++i) {
        devices[i].cuse = open("/dev/cuse", O_RDWR | O_CLOEXEC);
        if (devices[i].cuse < 0) {
            perror("/dev/cuse");
            return 1;
        }
        ready[i] = {devices[i].cuse, POLLIN, 0};
    }
    for (;;) {
        if (poll(ready.data(), ready.size(), -1) < 0) {
            perror("poll");
            return 1;
        }
        for (size_t i = 0; i < kDevices; ++i) {
            if (ready[i].revents != 0) {
                serve(devices[i]);
            }
        }
    }
}
