// Loading the tables of the Ethernet switch.
#include <algorithm>

#include "device/command_facts.h"
#include "device/device_test.h"

namespace
{

constexpr const char* kNormal = "/tmp/ks8995_nor.dat";
constexpr const char* kPriority = "/tmp/ks8995_pri.dat";

struct Load {
    DeviceCommandCode command;
    uint32_t request;
    int32_t refused;
};
constexpr Load kLoads[] = {{WR_SWITCH_TABLES_1, 0x6B79, -2}, {WR_SWITCH_TABLES_2, 0x6B78, -4}};

// Bytes that tell their place.
Bytes table_of(unsigned seed, size_t length)
{
    Bytes bytes;
    for (size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(seed + 3 * i);
    }
    return bytes;
}

Bytes record_of(uint16_t status, const Bytes& normal, const Bytes& priority)
{
    return le16(status) + normal + priority + hex("00 00");
}

class SwitchTables : public DeviceTest
{
  protected:
    void files_put(size_t length)
    {
        board.file_put(kNormal, table_of(1, length));
        board.file_put(kPriority, table_of(100, length));
    }

    static Course course_of(const Load& load, const Bytes& record)
    {
        return {
            opens_to_write(),
            word_read(0x6B02),
            {std::string("fopen ") + kNormal + " r", -5},
            {std::string("fread ") + kNormal + " 128", -5},
            {std::string("fclose ") + kNormal, kIgnored},
            {std::string("fopen ") + kPriority + " r", -5},
            {std::string("fread ") + kPriority + " 128", -5},
            {std::string("fclose ") + kPriority, kIgnored},
            record_write(load.request, record, load.refused),
            closes(),
        };
    }
};

TEST_F(SwitchTables, AreLoadedWithTheStatusBit)
{
    const struct {
        uint32_t word;
        uint16_t status;
        size_t length; // of the files, of which the first 128 bytes count
    } rows[] = {{0x0F3F, 0x0100, 128}, {0xFEFF, 0, 128}, {0xFFFF, 0x0100, 200}, {0, 0, 200}};
    for (const Load& load : kLoads) {
        for (const auto& row : rows) {
            SCOPED_TRACE("status word " + hex_number(row.word));
            files_put(row.length);
            board.fpga.words[0x6B02] = row.word;
            const Bytes record = record_of(row.status, table_of(1, 128), table_of(100, 128));
            prove(
                load.command, [] { return nullptr; }, course_of(load, record));
            EXPECT_EQ(board.fpga.written.at(load.request), record);
        }
    }
}

TEST_F(SwitchTables, MissingOrShortFilesSendNothing)
{
    for (const Load& load : kLoads) {
        for (const bool normal : {true, false}) {
            for (const int length : {-1, 0, 1, 127}) { // -1: no file
                SCOPED_TRACE(command_name(load.command) + " " + std::to_string(length));
                files_put(128);
                board.fpga.written.clear();
                const char* file = normal ? kNormal : kPriority;
                board.file_put(file, table_of(1, static_cast<size_t>(std::max(length, 0))));
                if (length < 0) {
                    board.file_remove(file);
                }
                board.restart();
                EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), -5);
                EXPECT_EQ(board.fpga.written.count(load.request), 0U);
                // A bad argument's code: not run twice.
                EXPECT_EQ(std::count(board.calls.begin(), board.calls.end(),
                                     "open /dev/fpga O_RDWR|O_NONBLOCK"),
                          1);
                EXPECT_EQ(board.calls.back(), "close /dev/fpga");
            }
        }
    }
}

} // namespace
