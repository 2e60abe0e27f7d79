/*
 * Watches link and speed of the ports, and tells what changes.
 *
 * usage: watch_ports [ROUNDS]     one a second; without it, for ever
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <maint/commands/phy.h>

enum { PORTS = 7, TEXT = 48 };

/* What a port's PHY tells, in words. */
static void port_tell(uint32_t port, char text[TEXT])
{
    PhyStatus status = {0}; /* cleared: with the link down some fields keep what they held */
    int32_t result;
    status.port = port;
    result = maint_rd_phy_status(&status);
    if (result == DEVICE_READ_FAILED && status.link) {
        snprintf(text, TEXT, "up, speed not negotiated yet");
    } else if (result != DEVICE_OK) {
        snprintf(text, TEXT, "cannot be read (%d)", (int)result);
    } else if (!status.link) {
        snprintf(text, TEXT, "down");
    } else {
        snprintf(text, TEXT, "up, %s Mb/s, %s duplex", status.speed100 ? "100" : "10",
                 status.full_duplex ? "full" : "half");
    }
}

int main(int argc, char** argv)
{
    char before[PORTS][TEXT] = {{0}};
    char* end = NULL;
    const long rounds = argc > 1 ? strtol(argv[1], &end, 10) : -1;
    long round;
    if (argc > 2 || (end != NULL && (end == argv[1] || *end != '\0' || rounds < 0))) {
        fprintf(stderr, "usage: watch_ports [ROUNDS]\n");
        return EXIT_FAILURE;
    }
    for (round = 0; round != rounds; ++round) {
        uint32_t port;
        if (round > 0) {
            sleep(1);
        }
        for (port = 0; port < PORTS; ++port) {
            char now[TEXT];
            port_tell(port, now);
            if (strcmp(now, before[port]) != 0) {
                printf("port %d: %s\n", (int)port, now);
                strcpy(before[port], now);
            }
        }
        fflush(stdout);
    }
    return EXIT_SUCCESS;
}
