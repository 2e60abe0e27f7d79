/*
 * Several processes at once on the devices, then on the system log and the save lock. Each works on
 * things of its own in the devices and checks every result; what the devices saw of it must be what
 * it asked for. Of the log no line may be lost or torn, and what the save lock guards is counted.
 *
 * usage: together PROCESSES ROUNDS
 */
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <maint/commands/counter.h>
#include <maint/commands/phy.h>
#include <maint/commands/register.h>
#include <maint/fpga.h>
#include <maint/save_lock.h>
#include <maint/system_log.h>

#include "device_model.h"

static const char guarded_file[] = "/tmp/guarded_count";

/* What the devices should have seen of this process. */
static char* expected;
static size_t expected_size;

__attribute__((format(printf, 1, 2))) static void expect(const char* format, ...)
{
    char line[256];
    va_list values;
    size_t length;
    va_start(values, format);
    vsnprintf(line, sizeof line, format, values);
    va_end(values);
    length = strlen(line);
    expected = realloc(expected, expected_size + length + 1);
    if (expected == NULL) {
        exit(EXIT_FAILURE);
    }
    memcpy(expected + expected_size, line, length + 1);
    expected_size += length;
}

static void reads(void)
{
    expect("open /dev/fpga O_RDONLY|O_NONBLOCK\n");
}

static void writes(void)
{
    expect("open /dev/fpga O_RDWR|O_NONBLOCK\n");
}

static void closes(void)
{
    expect("close /dev/fpga\n");
}

static int phy_round(unsigned number, unsigned round)
{
    PhyRegisterAccess access = {number % 5 + 1, 20, (uint16_t)round};
    int good;
    access.number = (uint16_t)(8 + number / 5);
    good = Fpga_Register_Set(WR_PHY_REGISTER, &access) == DEVICE_OK;
    access.value = 0xFFFF;
    good = good && Fpga_Register_Set(RD_PHY_REGISTER, &access) == DEVICE_OK;
    writes();
    expect("ioctl 6B88 %02X 00 %02X 00 %02X %02X 00 00\n", number % 5 + 1, 8 + number / 5,
           round & 0xFFU, round >> 8);
    closes();
    writes();
    expect("ioctl 6B87 %02X 00 %02X 00 00 00 00 00\n", number % 5 + 1, 8 + number / 5);
    closes();
    return good && access.value == round;
}

static int counter_round(unsigned number, unsigned round)
{
    CounterRecord counter = {0, 0, 32};
    int good;
    counter.index = number;
    counter.value = round;
    good = Fpga_Register_Set(WR_COUNTER, &counter) == DEVICE_OK;
    good = good && Fpga_Register_Set(RD_COUNTER, &counter) == DEVICE_OK && counter.value == round;
    good = good && Fpga_Register_Set(RD_COUNTER, &counter) == DEVICE_OK && counter.value == 0;
    writes();
    expect("ioctl 6B9F %02X 00 00 00 %02X %02X 00 00 20 00 00 00\n", number, round & 0xFFU,
           round >> 8);
    closes();
    reads();
    expect("ioctl 6B9A %02X 00 00 00 %02X %02X 00 00 20 00 00 00\n", number, round & 0xFFU,
           round >> 8);
    closes();
    reads();
    expect("ioctl 6B9A %02X 00 00 00 %02X %02X 00 00 20 00 00 00\n", number, round & 0xFFU,
           round >> 8);
    closes();
    return good;
}

/* A register of its own: 0x180 and up. */
static int register_round(unsigned number, unsigned round)
{
    RegisterValue value = {0, 0, 0};
    int good;
    value.address = 0x180 + 2 * number;
    value.value = (uint16_t)round;
    good = Fpga_Register_Set(WR_REGISTER, &value) == DEVICE_OK;
    value.value = 0xFFFF;
    good = good && Fpga_Register_Set(RD_REGISTER, &value) == DEVICE_OK;
    writes();
    expect("ioctl 6B43 %02X 01 00 00 %02X %02X 00 00\n", 0x80 + 2 * number, round & 0xFFU,
           round >> 8);
    closes();
    reads();
    expect("ioctl 6B42 %02X 01 00 00 00 00 00 00\n", 0x80 + 2 * number);
    closes();
    return good && value.value == round;
}

/* The log's lines of all processes together: many, so that they get into each other's way. */
static unsigned log_lines(unsigned processes)
{
    return SYSTEM_LOG_SLOTS / processes;
}

/* A log line, and a count in a file that only the save lock keeps whole. */
static int files_round(unsigned number, unsigned round)
{
    char text[40];
    FILE* lock;
    FILE* file;
    unsigned count = 0;
    int good;
    snprintf(text, sizeof text, "process %u round %u", number, round);
    good = systemLog_put(text) == 0 && fileAccess_lock(&lock, SAVE_LOCK_WAIT) == 0;
    if (!good) {
        return 0;
    }
    file = fopen(guarded_file, "r+");
    good = file != NULL && fscanf(file, "%u", &count) == 1;
    rewind(file);
    good = good && fprintf(file, "%u\n", count + 1) > 0 && fclose(file) == 0;
    return fileAccess_unlock(lock) == 0 && good;
}

static int process_run(unsigned number, unsigned processes, unsigned rounds)
{
    const unsigned lines = log_lines(processes);
    unsigned round;
    char* saw;
    for (round = 1; round <= rounds; ++round) {
        if (!phy_round(number, round) || !counter_round(number, round) ||
            !register_round(number, round)) {
            printf("together: process %u: FAILED in round %u\n", number, round);
            return EXIT_FAILURE;
        }
    }
    saw = model_saw(getpid());
    if (strcmp(saw, expected) != 0) {
        printf("together: process %u: FAILED: the devices saw something else of it\n", number);
        return EXIT_FAILURE;
    }
    for (round = 1; round <= lines; ++round) {
        if (!files_round(number, round)) {
            printf("together: process %u: FAILED at line %u\n", number, round);
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

/* Each process's lines are all there, in order, each in a record that is whole. */
static int log_check(unsigned processes)
{
    char record[SYSTEM_LOG_RECORD_SIZE + 1];
    unsigned next[32] = {0};
    unsigned total = 0;
    SystemLogHeader header;
    FILE* file = fopen("/conf/system.log", "rb");
    int good = file != NULL && fread(&header, sizeof header, 1, file) == 1;
    record[SYSTEM_LOG_RECORD_SIZE] = '\0';
    while (good && fread(record, SYSTEM_LOG_RECORD_SIZE, 1, file) == 1) {
        unsigned number;
        unsigned round;
        good = record[SYSTEM_LOG_RECORD_SIZE - 1] == '\n' &&
               strlen(record) == SYSTEM_LOG_RECORD_SIZE &&
               sscanf(record + 20, "process %u round %u ", &number, &round) == 2 &&
               number < processes && ++next[number] == round;
        ++total;
    }
    if (file != NULL) {
        fclose(file);
    }
    return good && total == processes * log_lines(processes) && header.number == total &&
           header.location == total;
}

static int guarded_check(unsigned total)
{
    unsigned count = 0;
    FILE* file = fopen(guarded_file, "r");
    const int good = file != NULL && fscanf(file, "%u", &count) == 1 && count == total;
    if (file != NULL) {
        fclose(file);
    }
    return good;
}

int main(int argc, char** argv)
{
    const unsigned processes = argc == 3 ? (unsigned)atoi(argv[1]) : 0;
    const unsigned rounds = argc == 3 ? (unsigned)atoi(argv[2]) : 0;
    FILE* guarded = fopen(guarded_file, "w");
    int good = guarded != NULL && fputs("0\n", guarded) >= 0 && fclose(guarded) == 0;
    unsigned i;
    if (processes < 2 || processes > 32 || rounds == 0) {
        fprintf(stderr, "usage: together PROCESSES ROUNDS     2 to 32 processes\n");
        return EXIT_FAILURE;
    }
    model_state(2);
    good = good && systemLogFileInit() == 0;
    fflush(stdout);
    for (i = 0; i < processes; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            const int result = process_run(i, processes, rounds);
            fflush(stdout);
            _exit(result);
        }
        good = good && child > 0;
    }
    for (i = 0; i < processes; ++i) {
        int status = 0;
        good = wait(&status) > 0 && status == 0 && good;
    }
    good = good && log_check(processes);
    good = good && guarded_check(processes * log_lines(processes));
    printf("together: %u processes, %u rounds each: %s\n", processes, rounds,
           good ? "ok" : "FAILED");
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
