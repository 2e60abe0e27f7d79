// The entries of peer identifiers.
#include "device/caller_record.h"
#include "device/device_test.h"

namespace
{

constexpr uint32_t kId = 12;
constexpr uint32_t kOutside[] = {0, 31, 32, 0x010C, 0xFFFF};

const Bytes kNothing = Bytes(10, '\0');
// The device's entry: fields A, B, C at 2, 6, 8, out of range on purpose, and two spare words.
const Bytes kHeld = hex("0C 00 A1 A2 41 42 B1 B2 C1 C2 43 44");

// What two runs of a failing command look like.
Course twice(const Course& course)
{
    const Course retry{{"usleep 1", kIgnored}};
    return course + retry + course + retry;
}

class IdEntryTest : public DeviceTest
{
  protected:
    static Bytes entry_of(uint32_t id, unsigned mask, uint32_t a, uint32_t b, uint32_t c)
    {
        return le16(id) + Bytes(1, static_cast<char>(mask)) + hex("5E") + le16(a) + le16(b) +
               le16(c);
    }

    int32_t run(DeviceCommandCode command, const Bytes& start)
    {
        record = CallerRecord(start);
        const int32_t result = Fpga_Register_Set(command, record.pointer());
        EXPECT_EQ(record.bytes(), untouched_after(start)); // none of these changes its record
        return result;
    }

    // Prepares a run on such a record, with the device's entry as above.
    std::function<void*()> with(const Bytes& start)
    {
        return [this, start] {
            board.fpga.id_entries[kId] = kHeld;
            record = CallerRecord(start);
            return record.pointer();
        };
    }

    CallerRecord record;
};

const Course kReadCourse{opens_to_write(), record_read(0x6B4A, le16(kId) + kNothing), closes()};

TEST_F(IdEntryTest, ConfirmsAnEntryWithoutReportingIt)
{
    prove(RD_ID_ENTRY, with(entry_of(kId, 0xFF, 0xFFFF, 4095, 7)), kReadCourse);
    board.fpga.id_entries[kId] = kHeld;
    EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0xFF, 0xFFFF, 4095, 7)), 0);
}

TEST_F(IdEntryTest, CallersFieldOutOfRangeIsUnmappedAfterTheReadAndRetried)
{
    const struct {
        uint32_t b;
        uint32_t c;
    } cases[] = {{4096, 7}, {4095, 8}, {4096, 8}, {0xFFFF, 0}, {0, 0xFFFF}};
    for (const auto& [b, c] : cases) {
        for (const unsigned mask : {0U, 1U, 7U}) {
            SCOPED_TRACE(std::to_string(b) + " " + std::to_string(c));
            expect_course(RD_ID_ENTRY, with(entry_of(kId, mask, 0, b, c))(), twice(kReadCourse),
                          -3);
        }
    }
}

TEST_F(IdEntryTest, ReadFailureCountsBeforeTheCallersFields)
{
    board.fpga.results[0x6B4A] = -1;
    EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, 0, 4096, 8)), -2);
    EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, 0, 0, 0)), -2);
    board.fpga_present = false;
    EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, 0, 4096, 8)), -1);
}

TEST_F(IdEntryTest, ChecksEveryValueOfTheCallersFields)
{
    board.fpga.id_entries[kId] = kHeld;
    for_every_word([this](uint16_t value) {
        EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, value, 0, 0)), 0) << value;
        EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, 0, value, 0)), value < 4096 ? 0 : -3) << value;
        EXPECT_EQ(run(RD_ID_ENTRY, entry_of(kId, 0, 0, 0, value)), value < 8 ? 0 : -3) << value;
    });
}

TEST_F(IdEntryTest, WritesTheEntryThatItReadWithTheFieldsChanged)
{
    prove(WR_ID_ENTRY, with(entry_of(kId, 0, 0x1234, 4095, 7)),
          {opens_to_write(), record_read(0x6B4A, le16(kId) + kNothing),
           record_write(0x6B4B, hex("0C 00 34 12 41 42 FF 0F 07 00 43 44")), closes()});
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
        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, mask, 0x1234, 0x0567, 5)), 0);
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
        prove(WR_ID_ENTRY, with(entry_of(kId, mask, 1, b, c)), kReadCourse, -5);
        EXPECT_EQ(board.fpga.id_entries[kId], kHeld);
    }
}

TEST_F(IdEntryTest, FieldThatIsNotSelectedMayHoldAnything)
{
    EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 0x01, 1, 5000, 9)), 0);
    EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 0x02, 1, 4095, 8)), 0);
    EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 0x04, 1, 4096, 7)), 0);
    EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 0xF8, 1, 4096, 8)), 0); // selects none
    EXPECT_EQ(board.fpga.id_entries[kId],
              le16(kId) + le16(1) + le16(0) + le16(4095) + le16(7) + le16(0));
}

TEST_F(IdEntryTest, WritesEveryValueInRange)
{
    for_every_word([this](uint16_t value) {
        board.fpga.id_entries[kId] = kHeld;
        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 1, value, 0, 0)), 0);
        Bytes expected = kHeld;
        expected.replace(2, 2, le16(value));
        EXPECT_EQ(board.fpga.id_entries[kId], expected) << value;

        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 2, 0, value, 0)), value < 4096 ? 0 : -5);
        if (value < 4096) {
            expected.replace(6, 2, le16(value));
        }
        EXPECT_EQ(board.fpga.id_entries[kId], expected) << value;

        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 4, 0, 0, value)), value < 8 ? 0 : -5);
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
        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(kId, 2, 1, 0x0ABC, 1)), 0);
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
        EXPECT_EQ(run(RD_ID_ENTRY, entry_of(id, 0, 0, 0, 0)), valid ? 0 : -5) << id;
        EXPECT_EQ(board.call_count(), valid ? 3U : 0U) << id;
        EXPECT_EQ(run(WR_ID_ENTRY, entry_of(id, 0, 1, 2, 3)), valid ? 0 : -5) << id;
        EXPECT_EQ(board.call_count(), valid ? 7U : 0U) << id;
    }
    board.recording = true;
    EXPECT_EQ(board.fpga.id_entries.size(), 30U);
    for (const auto& [id, entry] : board.fpga.id_entries) {
        EXPECT_EQ(entry, le16(id) + le16(1) + le16(0) + le16(2) + le16(3) + le16(0));
    }
    for (const uint32_t id : kOutside) { // whatever the other fields hold
        record = CallerRecord(entry_of(id, 0, 0, 4096, 8));
        expect_refused(RD_ID_ENTRY, record.pointer());
        expect_refused(WR_ID_ENTRY, record.pointer());
    }
}

class IdEntryValueTest : public IdEntryTest
{
  protected:
    static Bytes value_of(uint32_t own, uint32_t id, uint32_t value)
    {
        return le16(own) + le16(id) + le16(value);
    }

    void* given(uint32_t own, uint32_t id)
    {
        record = CallerRecord(value_of(own, id, kOld));
        return record.pointer();
    }

    void expect_value(uint32_t own, uint32_t id, uint32_t value) const
    {
        EXPECT_EQ(record.bytes(), untouched_after(value_of(own, id, value)));
    }

    static Bytes request_of(uint32_t id)
    {
        return le32(id) + Bytes(6, '\0') + le16(1) + Bytes(4, '\0');
    }

    static constexpr uint32_t kOwn = 5;
    static constexpr uint32_t kOld = 0x7172;
};

TEST_F(IdEntryValueTest, ReportsTheValueOfAnAdmittedIdentifier)
{
    board.fpga.words[0x6B3D] = ~(1U << kId);
    board.fpga.words[0x6B3B] = 1U << kId;
    board.fpga.id_values[kId] = 0xBEEF;
    prove(RD_ID_ENTRY_VALUE, [this] { return given(kOwn, kId); },
          {opens_to_write(), map_read(0x6B3D), map_read(0x6B3B),
           record_read(0x6B4C, request_of(kId)), closes()});
    EXPECT_EQ(Fpga_Register_Set(RD_ID_ENTRY_VALUE, given(kOwn, kId)), 0);
    expect_value(kOwn, kId, 0xBEEF);
}

TEST_F(IdEntryValueTest, FollowsBothBitmapsForEveryIdentifier)
{
    const Course refused{opens_to_write(), map_read(0x6B3D), map_read(0x6B3B), closes()};
    for (uint32_t id = 1; id <= 30; ++id) {
        board.fpga.id_values.clear();
        board.fpga.id_values[id] = static_cast<uint16_t>(0xC000U + id);
        for (const bool in_d : {false, true}) {
            for (const bool in_e : {false, true}) {
                for (const uint32_t others : {0U, ~0U}) { // every other bit, in both bitmaps
                    SCOPED_TRACE(std::to_string(id) + (in_d ? " in D" : "") +
                                 (in_e ? " in E" : ""));
                    const uint32_t bit = 1U << id;
                    board.fpga.words[0x6B3D] = (others & ~bit) | (in_d ? bit : 0);
                    board.fpga.words[0x6B3B] = (others & ~bit) | (in_e ? bit : 0);
                    if (!in_d && in_e) {
                        expect_course(RD_ID_ENTRY_VALUE, given(0, id),
                                      {opens_to_write(), map_read(0x6B3D), map_read(0x6B3B),
                                       record_read(0x6B4C, request_of(id)), closes()});
                        expect_value(0, id, 0xC000U + id);
                    } else {
                        expect_course(RD_ID_ENTRY_VALUE, given(0, id), twice(refused), -3);
                        expect_value(0, id, kOld);
                    }
                }
            }
        }
    }
}

TEST_F(IdEntryValueTest, ReportsEveryValue)
{
    board.fpga.words[0x6B3B] = 1U << kId;
    for_every_word([this](uint16_t value) {
        board.fpga.id_values[kId] = value;
        EXPECT_EQ(Fpga_Register_Set(RD_ID_ENTRY_VALUE, given(kOwn, kId)), 0);
        expect_value(kOwn, kId, value);
    });
}

TEST_F(IdEntryValueTest, RefusesTheOwnIdentifier)
{
    board.fpga.words[0x6B3B] = ~0U;
    for (uint32_t id = 1; id <= 30; ++id) {
        expect_refused(RD_ID_ENTRY_VALUE, given(id, id));
        expect_value(id, id, kOld);
    }
}

TEST_F(IdEntryValueTest, RefusesIdentifiersOutsideTheRange)
{
    board.fpga.words[0x6B3B] = ~0U;
    for (const uint32_t id : kOutside) {
        for (const uint32_t own : {kOwn, id}) {
            expect_refused(RD_ID_ENTRY_VALUE, given(own, id));
            expect_value(own, id, kOld);
        }
    }
    for (const uint32_t id : {1U, 30U}) { // beside any own identifier
        for (const uint32_t own : {0U, 31U, 0xFFFFU, id + 0x100U}) {
            EXPECT_EQ(Fpga_Register_Set(RD_ID_ENTRY_VALUE, given(own, id)), 0);
        }
    }
}

TEST_F(IdEntryValueTest, FailureStoresNothing)
{
    board.fpga.words[0x6B3B] = ~0U;
    board.fpga.id_values[kId] = 0xBEEF;
    for (const uint32_t request : {0x6B3DU, 0x6B3BU, 0x6B4CU}) {
        board.fpga.results = {{request, -1}};
        EXPECT_EQ(Fpga_Register_Set(RD_ID_ENTRY_VALUE, given(kOwn, kId)), -2);
        expect_value(kOwn, kId, kOld);
    }
    board.fpga_present = false;
    EXPECT_EQ(Fpga_Register_Set(RD_ID_ENTRY_VALUE, given(kOwn, kId)), -1);
    expect_value(kOwn, kId, kOld);
}

} // namespace
