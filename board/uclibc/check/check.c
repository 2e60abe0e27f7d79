/* Calls that programs for the board depend on the C library's configuration for. */
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

int main(void)
{
    const struct timespec moment = {0, 1};
    const time_t now = time(NULL);
    const int file = open("/dev/null", O_RDONLY);
    char text[32];
    strftime(text, sizeof text, "%c", localtime(&now));
    if (now < 0) {
        stime(&now);
    }
    flock(file, LOCK_EX);
    ioctl(file, FIONREAD, &file);
    usleep(1);
    nanosleep(&moment, NULL);
    return printf("%s %lld\n", text, (long long)now / file) < 0;
}
