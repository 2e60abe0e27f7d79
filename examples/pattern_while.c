/*
 * Shows a pattern on the front panel while a program runs, and then what the panel showed before.
 *
 * usage: pattern_while PROGRAM [ARGUMENT...]
 */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <maint/commands/led.h>

int main(int argc, char** argv)
{
    LedStateRecord restored;
    int status = 0;
    pid_t child;
    if (argc < 2) {
        fprintf(stderr, "usage: pattern_while PROGRAM [ARGUMENT...]\n");
        return EXIT_FAILURE;
    }
    if (maint_wr_led_pattern_1() < 0) {
        /* The program runs all the same. */
        fprintf(stderr, "pattern_while: the pattern is not shown\n");
    }
    child = fork();
    if (child == 0) {
        execvp(argv[1], argv + 1);
        perror(argv[1]);
        _exit(127);
    }
    /* Ctrl-C ends the program; the panel is still restored. */
    signal(SIGINT, SIG_IGN);
    signal(SIGQUIT, SIG_IGN);
    if (child < 0 || waitpid(child, &status, 0) != child) {
        perror("pattern_while");
        status = -1;
    }
    /* Also after a pattern that failed half way: it may have begun the inhibit. */
    if (maint_wr_led_restore(&restored) < 0) {
        fprintf(stderr, "pattern_while: the panel is not restored\n");
        return EXIT_FAILURE;
    }
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}
