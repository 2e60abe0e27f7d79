#include "device_model.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static void fail(const char* what)
{
    perror(what);
    exit(EXIT_FAILURE);
}

static int model_open(void)
{
    const int model = open("/dev/device_model", O_RDWR);
    if (model < 0) {
        fail("/dev/device_model");
    }
    return model;
}

static void line_write(int model, const char* line)
{
    const size_t length = strlen(line);
    if (write(model, line, length) != (ssize_t)length) {
        fail(line);
    }
}

void model_tell(const char* line)
{
    const int model = model_open();
    line_write(model, line);
    close(model);
}

void model_state(unsigned number)
{
    char line[32];
    snprintf(line, sizeof line, "state %u", number);
    model_tell(line);
}

char* model_saw(pid_t process)
{
    enum { STEP = 16384 };
    const int model = model_open();
    char line[32];
    char* text = NULL;
    size_t size = 0;
    ssize_t got = 0;
    snprintf(line, sizeof line, "of %ld", (long)process);
    line_write(model, line);
    do {
        size += (size_t)got;
        text = realloc(text, size + STEP + 1);
        if (text == NULL) {
            fail("memory");
        }
        got = read(model, text + size, STEP);
        if (got < 0) {
            fail("reading /dev/device_model");
        }
    } while (got > 0);
    text[size] = '\0';
    close(model);
    return text;
}
