// The unit's devices and its clock, for the parts of the preloaded object.
//
// A descriptor of a device is a real one: of the empty file that stands for the device in the unit's
// folder, opened with the access mode that allows neither reading nor writing. A device's descriptor
// is known by the file's identity, so that nothing has to follow what becomes of descriptors: dup,
// fork, exec, a socket.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>

#include "tools/maintsim/preload_paths.h"
#include "tools/maintsim/unit.h"

inline constexpr int kNoAccess = O_ACCMODE; // "check for reading and writing, and allow neither"

// Opens the device that the way leads to; a descriptor, or -1 with errno.
int device_open(const Way& way, int flags);

// Whose descriptor it is; nothing for any other descriptor. Keeps errno.
std::optional<UnitDevice> device_ofDescriptor(int descriptor);
std::optional<UnitDevice> device_ofFile(dev_t device, ino_t file);

// Tells the unit that a descriptor is about to be closed, if it is a device's.
void device_closing(int descriptor);

int device_request(UnitDevice device, unsigned long request, unsigned long argument);

// A device shows itself as a character device.
inline constexpr mode_t kDeviceMode = S_IFCHR | 0666;
inline constexpr unsigned kDeviceMajor = 240;
unsigned device_minor(UnitDevice device);

template <typename Status> // struct stat or struct stat64
void device_show(Status* status)
{
    if (const auto device = device_ofFile(status->st_dev, status->st_ino)) {
        status->st_mode = kDeviceMode;
        status->st_rdev = (kDeviceMajor << 8U) | device_minor(*device);
    }
}

// The unit's clock: nanoseconds that it is ahead of the machine's.
int64_t clock_difference();
void clock_setDifference(int64_t nanoseconds);
