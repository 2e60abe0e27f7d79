/* What the boot restore's calls of the C library cost without the boot restore: makes each once, to no
   purpose. sizes.sh checks that they are the same. */
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

static char* formatted(char* text, size_t size, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    vsnprintf(text, size, format, values);
    va_end(values);
    return text;
}

int main(int argc, char** argv)
{
    char text[100];
    struct stat status;
    struct tm local;
    const char* path = argv[0];
    const time_t now = time(NULL);
    const int file = open(path, O_RDONLY);
    FILE* const stream = fopen(path, "r+");

    puts(formatted(text, sizeof text, path, argc));
    printf("%d\n", stat(path, &status));
    tzset();
    localtime_r(&now, &local);
    memset(text, argc, sizeof text);
    strftime(text, sizeof text, path, &local);
    read(file, text, sizeof text);
    close(file);
    flock(fileno(stream), LOCK_EX);
    fread(text, sizeof text, 1, stream);
    fseek(stream, argc, SEEK_SET);
    fprintf(stream, "%s %-79.79s\n", text, path);
    fwrite(text, sizeof text, 1, stream);
    fclose(stream);
    return unlink(path);
}
