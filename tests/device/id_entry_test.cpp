// The entries of peer identifiers.
#include "device/command_test.h"

namespace
{

constexpr uint32_t kId = 12;
constexpr uint32_t kOutside[] = {0, 31, 32, 0x010C, 0xFFFF};

// The device's entry: fields A, B, C at 2, 6, 8, out of range on purpose, and two spare words.
const Bytes kHeld = hex("0C 00 A1 A2 41 42 B1 B2 C1 C2 43 44");

// What two runs of a failing command look like.
Course twice(const Course& course)
{
    const Course retry{{"usleep 1", kIgnored}};
    return course + retry + course + retry;
}

Bytes entry_of(uint32_t id, unsigned mask, uint32_t a, uint32_t b, uint32_t c)
{
    return le16(id) + byte(mask) + hex("5E") + le16(a) + le16(b) + le16(c);
}

class IdEntryTest : public CommandTest
{
  protected:
    // None of these commands changes its record.
    void expect_result(DeviceCommandCode command, const Bytes& entry, int32_t result)
    {
        expect_run(command, entry, result, entry);
    }
};

const Course kReadCourse{opens_to_write(), record_read(0x6B4A, le16(kId) + zeros(10)), closes()};

TEST_F(IdEntryTest, ConfirmsAnEntryWithoutReportingIt)
{
    board.fpga.id_entries[kId] = kHeld;
    const Bytes entry = entry_of(kId, 0xFF, 0xFFFF, 4095, 7);
    prove_record(RD_ID_ENTRY, entry, kReadCourse, entry);
}

TEST_F(IdEntryTest, CallersFieldOutOfRangeIsUnmappedAfterTheReadAndRetried)
{
    const struct {
        uint32_t b;
        uint32_t c;
    } cases[] = {{4096, 7}, {4095, 8}, {4096, 8}, {0xFFFF, 0}, {0, 0xFFFF}};
    board.fpga.id_entries[kId] = kHeld;
    for (const auto& [b, c] : cases) {
        for (const unsigned mask : {0U, 1U, 7U}) {
            SCOPED_TRACE(std::to_string(b) + " " + std::to_string(c));
            const Bytes entry = entry_of(kId, mask, 0, b, c);
            expect_course(RD_ID_ENTRY, put(entry), twice(kReadCourse), -3);
            EXPECT_EQ(record(), entry);
        }
    }
}

TEST_F(IdEntryTest, ReadFailureCountsBeforeTheCallersFields)
{
    board.fpga.results[0x6B4A] = -1;
    expect_result(RD_ID_ENTRY, entry_of(kId, 0, 0, 4096, 8), -2);
    expect_result(RD_ID_ENTRY, entry_of(kId, 0, 0, 0, 0), -2);
    board.fpga_present = false;
    expect_result(RD_ID_ENTRY, entry_of(kId, 0, 0, 4096, 8), -1);
}

TEST_F(IdEntryTest, ChecksEveryValueOfTheCallersFields)
{
    board.fpga.id_entries[kId] = kHeld;
    for_every_word([this](uint16_t value) {
        expect_result(RD_ID_ENTRY, entry_of(kId, 0, value, 0, 0), 0);
        expect_result(RD_ID_ENTRY, entry_of(kId, 0, 0, value, 0), value < 4096 ? 0 : -3);
        expect_result(RD_ID_ENTRY, entry_of(kId, 0, 0, 0, value), value < 8 ? 0 : -3);
    });
}

TEST_F(IdEntryTest, WritesTheEntryThatItReadWithTheFieldsChanged)
{
    device_put = [this] { board.fpga.id_entries[kId] = kHeld; };
    const Bytes entry = entry_of(kId, 0, 0x1234, 4095, 7);
    prove_record(WR_ID_ENTRY, entry,
                 {opens_to_write(), record_read(0x6B4A, le16(kId) + zeros(10)),
                  record_write(0x6B4B, hex("0C 00 34 12 41 42 FF 0F 07 00 43 44")), closes()},
                 entry);
}

TEST_F(IdEntryTest, WritesTheIdentifierThatTheDriverReturned)
{
    board.fpga.id_entries[kId] = kHeld;
    board.fpga.answered = [](uint32_t request, char* entry) {
        if (request == 0x6B4A) {
            entry[0] = 0x1D;
            entry[1] = 0x2E;
        }
    };
    expect_result(WR_ID_ENTRY, entry_of(kId, 0, 0x1234, 4095, 7), 0);
    EXPECT_EQ(board.fpga.id_entries,
              (std::map<uint32_t, Bytes>{{kId, kHeld},
                                         {0x2E1D, hex("1D 2E 34 12 41 42 FF 0F 07 00 43 44")}}));
}

TEST_F(IdEntryTest, MaskSelectsTheFields)
{
    const Bytes given = le16(0x1234) + le16(0x0567) + le16(5);
    for (unsigned mask = 0; mask <= 0xFF; ++mask) {
        SCOPED_TRACE(mask);
        board.fpga.id_entries[kId] = kHeld;
        Bytes expected = kHeld;
        if (mask == 0 || (mask & 0x01) != 0) {
            expected.replace(2, 2, given, 0, 2);
        }
        if (mask == 0 || (mask & 0x02) != 0) {
            expected.replace(6, 2, given, 2, 2);
        }
        if (mask == 0 || (mask & 0x04) != 0) {
            expected.replace(8, 2, given, 4, 2);
        }
        expect_result(WR_ID_ENTRY, entry_of(kId, mask, 0x1234, 0x0567, 5), 0);
        EXPECT_EQ(board.fpga.id_entries[kId], expected);
    }
}

TEST_F(IdEntryTest, SelectedFieldOutOfRangeIsRefusedAfterTheRead)
{
    const struct {
        unsigned mask;
        uint32_t b;
        uint32_t c;
    } cases[] = {{0, 4096, 7}, {0, 4095, 8},   {0, 4096, 8}, {2, 4096, 0}, {4, 0, 8},
                 {7, 4096, 0}, {3, 0xFFFF, 0}, {5, 0, 8},    {6, 0, 8},    {7, 0, 0xFFFF}};
    for (const auto& [mask, b, c] : cases) {
        SCOPED_TRACE(std::to_string(mask) + " " + std::to_string(b) + " " + std::to_string(c));
        board.fpga.id_entries[kId] = kHeld;
        const Bytes entry = entry_of(kId, mask, 1, b, c);
        prove_record(WR_ID_ENTRY, entry, kReadCourse, entry, -5);
        EXPECT_EQ(board.fpga.id_entries[kId], kHeld);
    }
}

TEST_F(IdEntryTest, FieldThatIsNotSelectedMayHoldAnything)
{
    expect_result(WR_ID_ENTRY, entry_of(kId, 0x01, 1, 5000, 9), 0);
    expect_result(WR_ID_ENTRY, entry_of(kId, 0x02, 1, 4095, 8), 0);
    expect_result(WR_ID_ENTRY, entry_of(kId, 0x04, 1, 4096, 7), 0);
    expect_result(WR_ID_ENTRY, entry_of(kId, 0xF8, 1, 4096, 8), 0); // selects none
    EXPECT_EQ(board.fpga.id_entries[kId],
              le16(kId) + le16(1) + le16(0) + le16(4095) + le16(7) + le16(0));
}

TEST_F(IdEntryTest, WritesEveryValueInRange)
{
    for_every_word([this](uint16_t value) {
        board.fpga.id_entries[kId] = kHeld;
        expect_result(WR_ID_ENTRY, entry_of(kId, 1, value, 0, 0), 0);
        Bytes expected = kHeld;
        expected.replace(2, 2, le16(value));
        EXPECT_EQ(board.fpga.id_entries[kId], expected) << value;

        expect_result(WR_ID_ENTRY, entry_of(kId, 2, 0, value, 0), value < 4096 ? 0 : -5);
        if (value < 4096) {
            expected.replace(6, 2, le16(value));
        }
        EXPECT_EQ(board.fpga.id_entries[kId], expected) << value;

        expect_result(WR_ID_ENTRY, entry_of(kId, 4, 0, 0, value), value < 8 ? 0 : -5);
        if (value < 8) {
            expected.replace(8, 2, le16(value));
        }
        EXPECT_EQ(board.fpga.id_entries[kId], expected) << value;
    });
}

TEST_F(IdEntryTest, KeepsWhateverTheDeviceHoldsInTheRestOfTheEntry)
{
    for_every_word([this](uint16_t held) {
        const auto other = static_cast<uint16_t>(~held);
        board.fpga.id_entries[kId] =
            le16(kId) + le16(held) + le16(other) + le16(held) + le16(held) + le16(held ^ 0x5A5AU);
        expect_result(WR_ID_ENTRY, entry_of(kId, 2, 1, 0x0ABC, 1), 0);
        EXPECT_EQ(board.fpga.id_entries[kId], le16(kId) + le16(held) + le16(other) + le16(0x0ABC) +
                                                  le16(held) + le16(held ^ 0x5A5AU))
            << held;
    });
}

TEST_F(IdEntryTest, TakesEachIdentifierOfTheRangeAlone)
{
    for (uint32_t id = 0; id <= 0xFFFF; ++id) {
        board.recording = id < 40;
        board.restart();
        const bool valid = id >= 1 && id <= 30;
        expect_result(RD_ID_ENTRY, entry_of(id, 0, 0, 0, 0), valid ? 0 : -5);
        EXPECT_EQ(board.call_count(), valid ? 3U : 0U) << id;
        expect_result(WR_ID_ENTRY, entry_of(id, 0, 1, 2, 3), valid ? 0 : -5);
        EXPECT_EQ(board.call_count(), valid ? 7U : 0U) << id;
    }
    board.recording = true;
    EXPECT_EQ(board.fpga.id_entries.size(), 30U);
    for (const auto& [id, entry] : board.fpga.id_entries) {
        EXPECT_EQ(entry, le16(id) + le16(1) + le16(0) + le16(2) + le16(3) + le16(0));
    }
    for (const uint32_t id : kOutside) { // whatever the other fields hold
        expect_refused(RD_ID_ENTRY, entry_of(id, 0, 0, 4096, 8));
        expect_refused(WR_ID_ENTRY, entry_of(id, 0, 0, 4096, 8));
    }
}

// The value of an identifier -----------------------------------------------------------------

constexpr uint32_t kOwn = 5;
constexpr uint32_t kOld = 0x7172;

Bytes value_of(uint32_t own, uint32_t id, uint32_t value)
{
    return le16(own) + le16(id) + le16(value);
}

Course value_course(uint32_t id)
{
    return {opens_to_write(), map_read(0x6B3D), map_read(0x6B3B),
            record_read(0x6B4C, le32(id) + zeros(6) + le16(1) + zeros(4)), closes()};
}

class IdEntryValueTest : public CommandTest
{
  protected:
    uint32_t& map_d = board.fpga.words[0x6B3D];
    uint32_t& map_e = board.fpga.words[0x6B3B];
};

TEST_F(IdEntryValueTest, ReportsTheValueOfAnAdmittedIdentifier)
{
    map_d = ~(1U << kId);
    map_e = 1U << kId;
    board.fpga.id_values[kId] = 0xBEEF;
    prove_record(RD_ID_ENTRY_VALUE, value_of(kOwn, kId, kOld), value_course(kId),
                 value_of(kOwn, kId, 0xBEEF));
    expect_kept(RD_ID_ENTRY_VALUE, value_of(kOwn, kId, kOld));
}

TEST_F(IdEntryValueTest, FollowsBothBitmapsForEveryIdentifier)
{
    const Course refused{opens_to_write(), map_read(0x6B3D), map_read(0x6B3B), closes()};
    for (uint32_t id = 1; id <= 30; ++id) {
        board.fpga.id_values = {{id, 0xC000U + id}};
        const uint32_t bit = 1U << id;
        for (const uint32_t in_d : {0U, bit}) {
            for (const uint32_t in_e : {0U, bit}) {
                for (const uint32_t others : {0U, ~bit}) { // every other bit, in both bitmaps
                    map_d = others | in_d;
                    map_e = others | in_e;
                    SCOPED_TRACE(std::to_string(id) + " with maps " + hex_number(map_d) + " and " +
                                 hex_number(map_e));
                    const bool admitted = in_d == 0 && in_e != 0;
                    expect_course(RD_ID_ENTRY_VALUE, put(value_of(0, id, kOld)),
                                  admitted ? value_course(id) : twice(refused), admitted ? 0 : -3);
                    EXPECT_EQ(record(), value_of(0, id, admitted ? 0xC000U + id : kOld));
                }
            }
        }
    }
}

TEST_F(IdEntryValueTest, ReportsEveryValue)
{
    map_e = 1U << kId;
    for_every_word([this](uint16_t value) {
        board.fpga.id_values[kId] = value;
        expect_run(RD_ID_ENTRY_VALUE, value_of(kOwn, kId, kOld), 0, value_of(kOwn, kId, value));
    });
}

TEST_F(IdEntryValueTest, RefusesTheOwnIdentifier)
{
    map_e = ~0U;
    for (uint32_t id = 1; id <= 30; ++id) {
        expect_refused(RD_ID_ENTRY_VALUE, value_of(id, id, kOld));
    }
}

TEST_F(IdEntryValueTest, RefusesIdentifiersOutsideTheRange)
{
    map_e = ~0U;
    for (const uint32_t id : kOutside) {
        for (const uint32_t own : {kOwn, id}) {
            expect_refused(RD_ID_ENTRY_VALUE, value_of(own, id, kOld));
        }
    }
    for (const uint32_t id : {1U, 30U}) { // beside any own identifier
        for (const uint32_t own : {0U, 31U, 0xFFFFU, id + 0x100U}) {
            EXPECT_EQ(run(RD_ID_ENTRY_VALUE, value_of(own, id, kOld)), 0);
        }
    }
}

} // namespace
