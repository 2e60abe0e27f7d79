#include "tools/maintctl/maintctl.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    // With a closed standard output a device would be opened in its place, and be printed to. What
    // takes the place here can be written as little.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
    signal(SIGPIPE, SIG_IGN); // it would end a command between two requests
    return maintctl_run(argc, argv, stdout, stderr);
}
