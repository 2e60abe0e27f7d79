// The board's stand-ins for the C library's calls, as the product reaches them by calls.syms; for
// the board's own tests.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdio>
#include <ctime>

extern "C" {
int board_open(const char* path, int flags, ...);
int board_close(int descriptor);
ssize_t board_read(int descriptor, void* data, size_t size);
ssize_t board_write(int descriptor, const void* data, size_t size);
off_t board_lseek(int descriptor, off_t offset, int whence);
int board_stat(const char* path, struct stat* status);
int board_unlink(const char* path);
int board_flock(int descriptor, int operation);
FILE* board_fopen(const char* path, const char* mode);
int board_fclose(FILE* stream);
size_t board_fread(void* data, size_t size, size_t count, FILE* stream);
size_t board_fwrite(const void* data, size_t size, size_t count, FILE* stream);
int board_fseek(FILE* stream, long offset, int whence);
char* board_fgets(char* text, int size, FILE* stream);
__attribute__((format(printf, 2, 3))) int board_fprintf(FILE* stream, const char* format, ...);
__attribute__((format(printf, 1, 2))) int board_printf(const char* format, ...);
int board_puts(const char* text);
time_t board_time(time_t* out);
int board_ioctl(int descriptor, unsigned long request, ...);
}
