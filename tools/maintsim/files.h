// Files of a unit's folder, by the kernel's calls themselves: in a program that maintsim runs, the C
// library's lead into the unit.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

int64_t machine_time(); // CLOCK_REALTIME in nanoseconds
// The function that tells it, where the C library's own leads into a unit: in maintsim, when it is
// itself run on one. There, a look at the clock under a unit's lock would wait for that lock.
void machineClock_use(int (*read)(clockid_t clock, timespec* time));
int process_id();

int file_open(const char* path, int flags, unsigned mode = 0);
void file_close(int file);

// The whole file. False: errno says why not.
bool file_read(const std::string& path, std::string& text);

// A file of this content, in place of the one that is there; nobody sees half of it. False: errno
// says why not, and the file is as it was.
bool file_replace(const std::string& path, std::string_view text);
// The same in two steps: the bytes, beside the file, and then the file.
bool file_prepare(const std::string& path, std::string_view text);
bool file_takePrepared(const std::string& path);

// A path in a line for people: whole, and in one line.
std::string path_shown(std::string path);

// To standard error, as far as it takes it.
void standardError_write(std::string_view text);
