/*
 * Device commands of every group, as another program of the appliance gives them, and what the
 * devices saw of them: each line of the tables below is written out by hand. Prints a line for
 * each group; ends with 1 when something is not as it should be.
 */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <maint/commands/address_entry.h>
#include <maint/commands/address_table.h>
#include <maint/commands/bandwidth.h>
#include <maint/commands/counter.h>
#include <maint/commands/device_word.h>
#include <maint/commands/id_entry.h>
#include <maint/commands/led.h>
#include <maint/commands/mtu.h>
#include <maint/commands/phy.h>
#include <maint/commands/port.h>
#include <maint/commands/register.h>
#include <maint/commands/rule.h>
#include <maint/commands/statistics.h>
#include <maint/commands/unit.h>
#include <maint/fpga.h>
#include <maint/ini_file.h>
#include <maint/led_state.h>
#include <maint/user_log.h>
#include <maint/vpn_id.h>

#include "device_model.h"

#define READS "open /dev/fpga O_RDONLY|O_NONBLOCK\n"
#define WRITES "open /dev/fpga O_RDWR|O_NONBLOCK\n"
#define CLOSES "close /dev/fpga\n"

static int failures;

static void check(int good, int line, const char* what)
{
    if (!good) {
        printf("commands: line %d: %s\n", line, what);
        ++failures;
    }
}
#define CHECK(condition) check((condition) != 0, __LINE__, #condition)

/* Runs a command; what the devices see of it must be this and nothing else. */
static void expect(int line, DeviceCommandCode command, void* argument, int32_t result,
                   const char* saw)
{
    char* before = model_saw(0);
    const int32_t got = Fpga_Register_Set(command, argument);
    char* after = model_saw(0);
    const char* seen = after + strlen(before);
    if (got != result || strcmp(seen, saw) != 0) {
        printf("commands: line %d: command 0x%04lX: result %ld, expected %ld; the devices saw\n%s"
               "expected\n%s",
               line, (unsigned long)command, (long)got, (long)result, seen, saw);
        ++failures;
    }
    free(before);
    free(after);
}
#define EXPECT(command, argument, result, saw) expect(__LINE__, command, argument, result, saw)

/* The same for what is not worth writing out whole: how it ends. */
static void expect_end(int line, DeviceCommandCode command, void* argument, int32_t result,
                       const char* end)
{
    const int32_t got = Fpga_Register_Set(command, argument);
    char* saw = model_saw(0);
    const size_t size = strlen(saw);
    const size_t end_size = strlen(end);
    if (got != result || size < end_size || strcmp(saw + size - end_size, end) != 0) {
        printf("commands: line %d: command 0x%04lX: result %ld, expected %ld; the devices saw\n%s"
               "expected at the end\n%s",
               line, (unsigned long)command, (long)got, (long)result, saw, end);
        ++failures;
    }
    free(saw);
}
#define EXPECT_END(command, argument, result, end)                                                 \
    expect_end(__LINE__, command, argument, result, end)

static void file_put(const char* path, const void* bytes, size_t size)
{
    FILE* file = fopen(path, "wb");
    if (file == NULL || fwrite(bytes, 1, size, file) != size || fclose(file) != 0) {
        perror(path);
        exit(EXIT_FAILURE);
    }
}

static long file_size(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 ? (long)status.st_size : -1;
}

static void ports(void)
{
    ControlBits bits = {{1, 0, 1}};
    ControlBits read = {{9, 9, 9}};
    EXPECT(WR_CONTROL_BITS, &bits, DEVICE_OK, WRITES "ioctl 6B08 =0006\n" CLOSES);
    EXPECT(RD_CONTROL_BITS, &read, DEVICE_OK, READS "ioctl 6B07 00 00\n" CLOSES);
    CHECK(read.flags[0] == 1 && read.flags[1] == 0 && read.flags[2] == 9);
}

static void phys(void)
{
    PhyRegisterAccess access = {1, 9, 0x1E00};
    PhyRegisterAccess none = {7, 0, 0};
    PhyConfig config = {2, 0, 0, 1, 1, 0, {0, 0, 0}};
    struct timeval begun;
    struct timeval ended;
    EXPECT(WR_PHY_REGISTER, &access, DEVICE_OK,
           WRITES "ioctl 6B88 01 00 09 00 00 1E 00 00\n" CLOSES);
    access.value = 0;
    EXPECT(RD_PHY_REGISTER, &access, DEVICE_OK,
           WRITES "ioctl 6B87 01 00 09 00 00 00 00 00\n" CLOSES);
    CHECK(access.value == 0x1E00);
    EXPECT(RD_PHY_REGISTER, &none, DEVICE_BAD_ARGUMENT, "");
    /* Between the two writes of the control register it sleeps a second. */
    gettimeofday(&begun, NULL);
    EXPECT(WR_PHY_CONFIG, &config, DEVICE_OK,
           WRITES "ioctl 6B88 02 00 00 00 02 10 00 00\n"
                  "ioctl 6B88 02 00 00 00 00 21 00 00\n"
                  "ioctl 6B88 02 00 1F 00 00 05 00 00\n" CLOSES);
    gettimeofday(&ended, NULL);
    CHECK(ended.tv_sec - begun.tv_sec + (ended.tv_usec - begun.tv_usec) / 1e6 >= 0.99);
}

static void bandwidth(void)
{
    PhyRegisterAccess fast = {0, 0, 0x2100}; /* 100 Mb/s, full duplex, no autonegotiation */
    uint16_t id = 20;
    uint16_t read = 0;
    CHECK(Fpga_Register_Set(WR_PHY_REGISTER, &fast) == DEVICE_OK);
    EXPECT_END(WR_BANDWIDTH, &id, DEVICE_OK, WRITES "ioctl 6B43 12 00 00 00 40 00 00 00\n" CLOSES);
    EXPECT_END(RD_BANDWIDTH, &read, DEVICE_OK,
               WRITES "ioctl 6B42 12 00 00 00 00 00 00 00\n" CLOSES);
    CHECK(read == 20);
    id = BANDWIDTH_ID_MAX + 1;
    EXPECT(WR_BANDWIDTH, &id, DEVICE_BAD_ARGUMENT, "");
}

static void mtu(void)
{
    MtuDatasize sizes;
    uint16_t flag = 1;
    memset(&sizes, 0, sizeof sizes);
    sizes.size[0] = 1500;
    CHECK(Fpga_Register_Set(WR_VLANT_MAP_ENABLE, &flag) == DEVICE_OK);
    flag = 0;
    EXPECT(RD_VLANT_MAP_ENABLE, &flag, DEVICE_OK, READS "ioctl 6B03 00 00\n" CLOSES);
    CHECK(flag == 1);
    EXPECT(WR_MTU_DATASIZE, &sizes, DEVICE_OK, WRITES "ioctl 6B03 00 00\n" CLOSES);
    CHECK(sizes.data_size[0] == 1474 && file_size("/tmp/mtu_datasize") == sizeof sizes);
    memset(&sizes, 0, sizeof sizes);
    EXPECT(RD_MTU_DATASIZE, &sizes, DEVICE_OK, "");
    CHECK(sizes.size[0] == 1500 && sizes.data_size[0] == 1474);
}

static void addresses(void)
{
    AddressEntry entry;
    memset(&entry, 0, sizeof entry);
    entry.own_id = 1;
    entry.id = 1;
    memcpy(entry.bytes, "\xC0\xA8\x01\x02", 4);
    EXPECT(WR_ADDR_ENTRY, &entry, DEVICE_OK, WRITES "ioctl 6B24 C0 A8 01 02\n" CLOSES);
    memset(entry.bytes, 0, sizeof entry.bytes);
    EXPECT(RD_ADDR_ENTRY, &entry, DEVICE_OK, READS "ioctl 6B23 00 00 00 00\n" CLOSES);
    CHECK(entry.number == 0xC0A80102UL);
    entry.id = 31;
    EXPECT(RD_ADDR_ENTRY, &entry, DEVICE_BAD_ARGUMENT, "");
}

static void words(void)
{
    uint16_t code = 4;
    uint16_t none = 3;
    uint16_t own = 0;
    uint16_t read;
    EXPECT(WR_DEVICE_WORD_49, &none, DEVICE_BAD_ARGUMENT, "");
    CHECK(Fpga_Register_Set(WR_DEVICE_WORD_49, &code) == DEVICE_OK);
    CHECK(Fpga_Register_Set(RD_DEVICE_WORD_48, &read) == DEVICE_OK && read == 4);
    read = 0;
    own = 7;
    EXPECT(WR_DEVICE_WORD_2A, &own, DEVICE_OK, WRITES "ioctl 6B2A =0007\n" CLOSES);
    EXPECT(RD_DEVICE_WORD_29, &read, DEVICE_OK, READS "ioctl 6B29 00 00\n" CLOSES);
    CHECK(read == 7);
}

static void identifiers(void)
{
    IdEntry entry = {5, 7, 0, 0x1234, 4095, 7};
    IdEntry none = {31, 0, 0, 0, 0, 0};
    uint16_t mode = 1;
    CHECK(Fpga_Register_Set(WR_ID_ENTRY, &entry) == DEVICE_OK);
    EXPECT(RD_ID_ENTRY, &entry, DEVICE_OK,
           WRITES "ioctl 6B4A 05 00 00 00 00 00 00 00 00 00 00 00\n" CLOSES);
    EXPECT(WR_ID_ENTRY, &none, DEVICE_BAD_ARGUMENT, "");
    CHECK(Fpga_Register_Set(WR_MODE_SWITCH, &mode) == DEVICE_OK);
    mode = 0;
    CHECK(Fpga_Register_Set(RD_MODE_SWITCH, &mode) == DEVICE_OK && mode == 1);
}

/* The life of the rewrite inhibit: a pattern, a setter that is only recorded, the restore. */
static void panel(void)
{
    LedStateRecord record;
    memset(&record, 0, sizeof record);
    record.ledB = 1;
    CHECK(Fpga_Register_Set(WR_LED_B, &record) == DEVICE_OK);
    CHECK(Fpga_Register_Set(WR_LED_PATTERN_1, NULL) == DEVICE_OK);
    CHECK(file_size("/tmp/led_rewrite_inh") == sizeof record);
    record.ledB = 0;
    EXPECT(WR_LED_B, &record, LED_CHANGE_RECORDED, "");
    memset(&record, 0xEE, sizeof record);
    CHECK(Fpga_Register_Set(WR_LED_RESTORE, &record) == DEVICE_OK);
    CHECK(record.ownId == 7 && record.ledB == 0);
    CHECK(file_size("/tmp/led_rewrite_inh") == -1);
}

static void register_fields(void)
{
    RegisterValue value = {0x158, 0xFFBF, 0};
    uint8_t bit = 1;
    EXPECT(WR_REGISTER, &value, DEVICE_OK, WRITES "ioctl 6B43 58 01 00 00 BF FF 00 00\n" CLOSES);
    EXPECT(WR_REG158_BIT6, &bit, DEVICE_OK,
           WRITES "ioctl 6B42 58 01 00 00 00 00 00 00\n"
                  "ioctl 6B43 58 01 00 00 FF FF 00 00\n" CLOSES);
    bit = 0;
    EXPECT(RD_REG158_BIT6, &bit, DEVICE_OK, READS "ioctl 6B42 58 01 00 00 00 00 00 00\n" CLOSES);
    CHECK(bit == 1);
    /* A driver that refuses: the command is tried twice. */
    model_tell("answers 6B42 -1");
    EXPECT(RD_REG158_BIT6, &bit, DEVICE_READ_FAILED,
           READS "ioctl 6B42 58 01 00 00 00 00 00 00\n" CLOSES READS
                 "ioctl 6B42 58 01 00 00 00 00 00 00\n" CLOSES);
    model_tell("answers 6B42 0");
}

static void address_maps(void)
{
    AddressTableEntry entry = {3, 0, {10, 0, 0, 1}, {1, 2, 3, 4, 5, 6}, 0x5A, 0};
    CHECK(Fpga_Register_Set(WR_ADDR_TABLE_ENTRY, &entry) == DEVICE_OK);
    memset(entry.address, 0, sizeof entry.address);
    entry.attribute = 0;
    CHECK(Fpga_Register_Set(RD_ADDR_TABLE_ENTRY, &entry) == DEVICE_OK);
    CHECK(memcmp(entry.address, "\x0A\x00\x00\x01", 4) == 0 && entry.attribute == 0x5A);
    entry.index = 128;
    EXPECT(RD_ADDR_TABLE_ENTRY, &entry, DEVICE_BAD_ARGUMENT, "");
}

static void counters(void)
{
    CounterRecord counter = {3, 1000, 33};
    EXPECT(WR_COUNTER, &counter, DEVICE_OK,
           WRITES "ioctl 6B9F 03 00 00 00 E8 03 00 00 21 00 00 00\n" CLOSES);
    counter.value = 0;
    CHECK(Fpga_Register_Set(RD_COUNTER, &counter) == DEVICE_OK && counter.value == 1000);
    CHECK(Fpga_Register_Set(RD_COUNTER, &counter) == DEVICE_OK && counter.value == 0);
}

static void statistics(void)
{
    static StatisticsFile totals;
    CHECK(Fpga_Register_Set(WR_STATISTICS_SAVE, &totals) == DEVICE_OPEN_FAILED); /* no file */
    file_put("/conf/statistics", &totals, sizeof totals);
    CHECK(Fpga_Register_Set(WR_STATISTICS_CLEAR, &totals) == DEVICE_OK);
    CHECK(Fpga_Register_Set(WR_STATISTICS_SAVE, &totals) == DEVICE_OK);
    CHECK(totals.kib_a[0] == 0 && totals.rest_a[0] == 0 && file_size("/conf/statistics") == 496);
}

static void rules(void)
{
    static RuleEntry rule;
    rule.index = 127;
    rule.value = 443;
    rule.class_code = 2;
    CHECK(Fpga_Register_Set(WR_RULE_ENTRY, &rule) == DEVICE_OK);
    rule.value = 0;
    CHECK(Fpga_Register_Set(RD_RULE_ENTRY, &rule) == DEVICE_OK);
    CHECK(rule.index == 127 && rule.enabled != 0 && rule.value == 443 && rule.class_code == 2);
    CHECK(Fpga_Register_Set(WR_RULE_DELETE, &rule) == DEVICE_OK);
    CHECK(Fpga_Register_Set(RD_RULE_ENTRY, &rule) == DEVICE_OK && rule.enabled == 0);
    rule.index = 128;
    EXPECT(RD_RULE_ENTRY, &rule, DEVICE_BAD_ARGUMENT, "");
}

static void switch_tables(void)
{
    static char table[128];
    EXPECT(WR_SWITCH_TABLES_1, NULL, DEVICE_BAD_ARGUMENT,
           WRITES "ioctl 6B02 00 00\n" CLOSES); /* no files */
    file_put("/tmp/ks8995_nor.dat", table, sizeof table);
    file_put("/tmp/ks8995_pri.dat", table, sizeof table);
    CHECK(Fpga_Register_Set(WR_SWITCH_TABLES_1, NULL) == DEVICE_OK);
    CHECK(Fpga_Register_Set(WR_SWITCH_TABLES_2, NULL) == DEVICE_OK);
}

static void unit(void)
{
    SerialNumber serial;
    PortStateCode state = {32, 9};
    file_put("/tmp/serialno", "SN0123456", 9);
    EXPECT(RD_SERIAL_NUMBER, &serial, DEVICE_OK, "");
    CHECK(memcmp(serial.text, "SN0123456", 9) == 0);
    EXPECT(RD_PORT_STATE_CODE, &state, DEVICE_OK, READS "ioctl 6B3B 00 00 00 00\n" CLOSES);
    CHECK(state.code == 0);
}

/* What the commands stand on beside the devices. */
static void files(void)
{
    static const char config[] = "WAN_TYPE='5'\nOWN_VPN_ID='12'\n";
    char value[INI_VALUE_SIZE];
    UserLogRecord event;
    static const char empty_log[16];
    file_put("/conf/config", config, sizeof config - 1);
    CHECK(GetIniFileString("/conf/config", "", "WAN_TYPE", value) == 0 && strcmp(value, "5") == 0);
    file_put("/conf/user.log", empty_log, sizeof empty_log);
    memset(&event, 0, sizeof event);
    event.code = 300;
    CHECK(userLog_put(&event) == 0 && file_size("/conf/user.log") == 32);
    CHECK(file_size("/tmp/flashsave") == 1);
    EXPECT(0x7D, NULL, DEVICE_OPEN_FAILED, ""); /* no command */
}

int main(void)
{
    static const struct {
        const char* name;
        void (*run)(void);
    } groups[] = {{"ports", ports},
                  {"PHYs", phys},
                  {"bandwidth", bandwidth},
                  {"MTU", mtu},
                  {"address entries", addresses},
                  {"device words", words},
                  {"identifier entries", identifiers},
                  {"panel", panel},
                  {"register fields", register_fields},
                  {"address maps", address_maps},
                  {"counters", counters},
                  {"statistics", statistics},
                  {"rules", rules},
                  {"switch tables", switch_tables},
                  {"unit", unit},
                  {"files", files}};
    size_t i;
    model_state(1);
    for (i = 0; i < sizeof groups / sizeof groups[0]; ++i) {
        const int before = failures;
        groups[i].run();
        printf("commands: %s: %s\n", groups[i].name, failures == before ? "ok" : "FAILED");
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
