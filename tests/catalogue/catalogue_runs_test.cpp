// The catalogue against what the commands do: over random records, files, device states and
// failures, each command reads, fills, opens and changes what its description says, and nothing
// else.
#include <algorithm>
#include <iterator>
#include <map>
#include <random>

#include "catalogue/catalogue.h"
#include "device/command_test.h"
#include "sim/device_state.h"

namespace
{

// The requests that change nothing, typed in by hand. 0x6B9A and 0x6BA0 fill a record as well, but
// restart the counter.
const Requests kOnlyReading{0x6B01, 0x6B02, 0x6B03, 0x6B07, 0x6B09, 0x6B0B, 0x6B0F, 0x6B11, 0x6B21,
                            0x6B23, 0x6B27, 0x6B29, 0x6B2D, 0x6B35, 0x6B39, 0x6B3B, 0x6B3D, 0x6B3E,
                            0x6B40, 0x6B42, 0x6B48, 0x6B4A, 0x6B4C, 0x6B4E, 0x6B4F, 0x6B51, 0x6B5C,
                            0x6B5E, 0x6B60, 0x6B67, 0x6B6A, 0x6B6E, 0x6B72, 0x6B83, 0x6B85, 0x6B87,
                            0x6B8D, 0x6B98, 0x6BA2, 0x6BA3, 0x6BA5};
const Requests kRestarting{0x6B9A, 0x6BA0};
const Requests kClockReading{0x80247009, 0x80047013};

// Bytes of `in` fields that never matter here, and why.
struct ByteRange {
    size_t first;
    size_t last;
};
const std::multimap<uint32_t, ByteRange> kNeverMatter{
    {WR_CONTROL_BLOCK, {16, 495}}, // the simulated driver takes 16 of them
    {WR_REGFE_NIBBLE, {1, 1}},     // bits that are ignored
    {RD_ID_ENTRY, {6, 6}},         // a number is above 0x0FFF whatever its low byte
};

// Bytes of `out` fields that are always what they were, and why.
const std::multimap<uint32_t, ByteRange> kNeverFilled{
    {RD_RULE_ENTRY, {0, 0}},  // the simulated driver answers with the index that it was asked for
    {WR_REG168_MODE, {1, 1}}, // the high byte of 4 and of 0
};

// Fields whose values beyond the range do something else, and why; all of a command, or one.
const std::multimap<uint32_t, std::string> kOpenRanges{
    {WR_RTC_TIME, ""}, // what a date has; nothing is tested
    // anything but 0 is 1 to the PHY, but not where it is compared, nor to the switch port
    {WR_PHY_CONFIG, "speed100"},
    {WR_PHY_CONFIG, "full_duplex"},
    {WR_LED_GROUP_1, "group1.element"}, // anything but 0 is on, but three of 1 are told from others
};

bool is_open(const CommandDescription& command, const Field& field)
{
    const auto [first, last] = kOpenRanges.equal_range(command.code);
    return std::any_of(first, last, [&](const auto& entry) {
        return entry.second.empty() || entry.second == field.name;
    });
}

// Bytes that a command overwrites though they are nobody's.
const std::multimap<uint32_t, ByteRange> kOverwritten{
    {RD_RULE_ENTRY, {38, 495}},
    {WR_LED_RESTORE, {22, 23}},
};

// Commands that may succeed without filling their record, as their notes say: no inhibit was on.
const std::set<uint32_t> kMayLeave{WR_LED_RESTORE};

using Files = std::map<std::string, Bytes>;

struct Start {
    Bytes record;
    uint32_t state;
    Files files;
};

// Which calls of a run fail.
struct Failing {
    size_t first = 0; // 0: none
    bool and_after = false;
    size_t second = 0; // one more; 0: none
};

struct Outcome {
    int32_t result;
    Bytes record;
    Trace calls; // without what records hold where the driver fills them
    Files files; // that it has named, afterwards

    bool operator==(const Outcome& other) const
    {
        return result == other.result && record == other.record && calls == other.calls &&
               files == other.files;
    }
};

// What all runs of a command together have shown.
struct Seen {
    Places opened = 0;
    Places read = 0;
    Places locked = 0;
    Places changed = 0;
    bool cleared = false;
    std::set<size_t> out_changed; // bytes of the record
    std::set<size_t> in_mattered;
    std::map<size_t, std::set<uint32_t>> values; // of `out` fields, by the field's number
};

bool starts(const std::string& text, const char* with)
{
    return text.rfind(with, 0) == 0;
}

Place place_of(const std::string& path)
{
    unsigned place = 0;
    while (place < kPlaceCount && path != place_name(static_cast<Place>(place))) {
        ++place;
    }
    EXPECT_LT(place, kPlaceCount) << path << " is no place";
    return static_cast<Place>(place);
}

uint32_t number_at(const Bytes& record, size_t offset, size_t width)
{
    uint32_t number = 0;
    for (size_t i = width; i-- > 0;) {
        number = number << 8 | static_cast<unsigned char>(record.at(offset + i));
    }
    return number;
}

void number_put(Bytes& record, size_t offset, size_t width, uint32_t number)
{
    record.replace(offset, width, le32(number), 0, width);
}

bool is_number(const Field& field)
{
    return field.most != 0;
}

uint32_t widest(const Field& field)
{
    return static_cast<uint32_t>((uint64_t{1} << 8 * field.width) - 1);
}

bool is_narrowed(const Field& field)
{
    return is_number(field) &&
           (field.least != 0 || field.most != widest(field) || !field.codes().empty());
}

// All values of a narrow range, some of a wide one.
constexpr uint32_t kNarrow = 256;

std::vector<uint32_t> values_of(const Field& field)
{
    std::vector<uint32_t> values;
    for (const CodeName& code : field.codes()) {
        values.push_back(code.code);
    }
    if (!values.empty()) {
        return values;
    }
    if (field.most - field.least >= kNarrow) {
        return {field.least, field.least + 1, field.most / 2, field.most - 1, field.most};
    }
    for (uint32_t value = field.least; value <= field.most; ++value) {
        values.push_back(value);
    }
    return values;
}

template <class Map> bool holds_all(const Map& one, const Map& other)
{
    return std::all_of(one.begin(), one.end(), [&](const auto& entry) {
        const auto found = other.find(entry.first);
        return found == other.end() ? entry.second == typename Map::mapped_type{}
                                    : found->second == entry.second;
    });
}

// Reading makes entries of zeros.
template <class Map> bool same_map(const Map& one, const Map& other)
{
    return holds_all(one, other) && holds_all(other, one);
}

bool same_model(const FpgaModel& one, const FpgaModel& other)
{
    return same_map(one.words, other.words) && same_map(one.registers, other.registers) &&
           same_map(one.phys, other.phys) && same_map(one.switch_ports, other.switch_ports) &&
           one.device_info == other.device_info && one.own_address == other.own_address &&
           one.own_address_set == other.own_address_set &&
           same_map(one.addresses, other.addresses) &&
           same_map(one.address_sets, other.address_sets) &&
           same_map(one.id_entries, other.id_entries) && same_map(one.id_values, other.id_values) &&
           same_map(one.unit_words, other.unit_words) &&
           same_map(one.address_pairs, other.address_pairs) &&
           same_map(one.address_table, other.address_table) &&
           same_map(one.port_entries, other.port_entries) && same_map(one.rules, other.rules) &&
           same_map(one.indexed_words, other.indexed_words) &&
           same_map(one.counters, other.counters) &&
           same_map(one.counters_alt, other.counters_alt) && same_map(one.written, other.written);
}

class CatalogueRuns : public CommandTest
{
  protected:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(engine_()) % limit; }
    uint32_t within(uint32_t least, uint32_t most)
    {
        const uint32_t count = most - least + 1; // 0: all numbers
        return least + (count == 0 ? static_cast<uint32_t>(engine_()) : below(count));
    }

    // Small numbers of one width all along, some of them alike; or any bytes.
    Bytes bytes_draw(size_t size)
    {
        const uint32_t width = 1U << below(4); // 1, 2, 4; 8: any bytes
        const uint32_t first = below(9);
        const bool alike = below(2) == 0;
        Bytes record;
        while (record.size() < size) {
            const uint32_t value = width == 8 ? within(0, UINT32_MAX) : alike ? first : below(9);
            record += width == 8 ? le32(value) : le32(value).substr(0, width);
        }
        return record.substr(0, size);
    }

    uint32_t value_draw(const Field& field)
    {
        if (!field.codes().empty()) {
            return field.codes()[below(static_cast<uint32_t>(field.codes().size()))].code;
        }
        if (field.role == Role::kIndex && below(2) == 0) {
            return within(field.sweep.first, field.sweep.last);
        }
        const uint32_t small = std::min(field.most, field.least + 8);
        return within(field.least, below(2) == 0 ? small : field.most);
    }

    // A record that the command takes, as far as its description goes.
    Bytes record_draw(const CommandDescription& command)
    {
        Bytes record = bytes_draw(command.record);
        const uint32_t own = 1 + below(30);
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            if (!is_number(field) || !field_in(command.in, i)) {
                continue;
            }
            const bool mask = field.kind == Kind::kBits;
            for (size_t n = 0; n < field.count; ++n) {
                const bool is_own = field.role == Role::kOwnId ||
                                    (field.most >= 30 && field.least <= 1 && below(4) == 0);
                const uint32_t value = is_own && field.most >= own ? own
                                       : mask && below(2) == 0     ? 0
                                                                   : value_draw(field);
                number_put(record, field.offset + n * field.width, field.width, value);
            }
        }
        return record;
    }

    // A panel as the inhibit saves it.
    Bytes panel_draw()
    {
        Bytes panel = le32(1 + below(30)) + le32(1 + below(30)) + byte(below(4));
        while (panel.size() < 14) {
            panel += byte(below(3));
        }
        for (unsigned group = 1; group <= 7; ++group) {
            panel += byte(below(8)) + byte(below(2)) + byte(below(2)) + byte(below(2));
            panel += group == 2 ? bytes_draw(2) : Bytes();
        }
        return panel;
    }

    Files files_draw()
    {
        static constexpr const char* kConfigs[] = {
            "OWN_VPN_ID='12'\nWAN_TYPE='5'\n", "OWN_VPN_ID='3'\nWAN_TYPE='1'\n",
            "OWN_VPN_ID='x'\nWAN_TYPE='3'\n", "", "WAN_TYPE='2'\n"};
        Files files{{"/conf/config", kConfigs[below(std::size(kConfigs))]},
                    {"/conf/statistics", bytes_draw(496)},
                    {"/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00")},
                    {"/conf/user.log", Bytes(16, '\0')},
                    {"/tmp/ks8995_nor.dat", bytes_draw(128)},
                    {"/tmp/ks8995_pri.dat", bytes_draw(128)},
                    {"/tmp/mtu_datasize", bytes_draw(20)},
                    {"/tmp/serialno", bytes_draw(9)}};
        if (below(2) == 0) {
            files["/tmp/vornapppoe.mtu"] = std::to_string(1300 + below(300)) + "\n";
        }
        if (below(2) == 0) {
            files["/tmp/led_rewrite_inh"] = panel_draw();
        }
        return files;
    }

    Start start_draw(const CommandDescription& command)
    {
        Start start{below(3) == 0 ? bytes_draw(command.record) : record_draw(command),
                    below(100000), files_draw()};
        if (below(4) == 0) { // one is missing, or cut
            const auto file =
                std::next(start.files.begin(), below(static_cast<uint32_t>(start.files.size())));
            if (below(2) == 0) {
                start.files.erase(file);
            } else {
                file->second.resize(file->second.size() / 2);
            }
        }
        return start;
    }

    void files_put(const Files& files)
    {
        for (unsigned place = 0; place < kPlaceCount; ++place) {
            const std::string path = place_name(static_cast<Place>(place));
            if (!starts(path, "/conf/") && !starts(path, "/tmp/")) {
                continue;
            }
            const auto file = files.find(path);
            if (file != files.end()) {
                board.file_put(path, file->second);
            } else {
                board.file_remove(path);
            }
        }
    }

    Outcome run_from(const CommandDescription& command, const Start& start, Failing failing = {})
    {
        if (uses_files_) {
            files_put(start.files);
        }
        deviceState_put(start.state, board.fpga, board.rtc);
        board.now = 1141203907;
        board.restart();
        if (failing.first != 0) {
            failing.and_after ? board.fail_from(failing.first)
                              : board.fail_calls({failing.first, failing.second});
        }
        Outcome outcome{run(command.code, start.record), record(), {}, {}};
        while (board.open_descriptors() > 0) { // two commands leave the device open
            board.closing(board.descriptors().begin()->first);
        }
        if (!uses_files_ && std::any_of(board.calls.begin(), board.calls.end(), names_file)) {
            uses_files_ = true; // from now on there are files
            return run_from(command, start, failing);
        }
        outcome.calls = board.calls;
        for (std::string& call : outcome.calls) {
            filled_hide(call);
            if (names_file(call)) {
                const std::string file = path_of(call);
                outcome.files[file] =
                    board.file_exists(file) ? "with " + board.file_get(file) : "none";
            }
        }
        return outcome;
    }

    // The path of a call on a file or device; empty: it is none.
    static std::string path_of(const std::string& call)
    {
        const size_t path = call.find(' ') + 1;
        for (const char* other : {"printf ", "puts ", "ioctl ", "time ", "stime "}) {
            if (starts(call, other)) {
                return "";
            }
        }
        return call[path] == '/' ? call.substr(path, call.find(' ', path) - path) : "";
    }

    static bool names_file(const std::string& call)
    {
        return !path_of(call).empty() && !starts(path_of(call), "/dev/");
    }

    // The request of a call, and where its argument begins; 0: it is none.
    static uint32_t request_of(const std::string& call, size_t& argument)
    {
        if (!starts(call, "ioctl ")) {
            return 0;
        }
        size_t at = 6;
        for (const char* path : {"(closed) ", "/dev/rtc "}) {
            if (call.compare(at, strlen(path), path) == 0) {
                at += strlen(path);
            }
        }
        size_t digits = 0;
        const auto request = static_cast<uint32_t>(std::stoul(call.substr(at), &digits, 16));
        argument = at + digits;
        return request;
    }

    // What lies in a record where the driver fills it does not matter to the driver.
    static void filled_hide(std::string& call)
    {
        size_t argument = 0;
        const uint32_t request = request_of(call, argument);
        if (request == 0) {
            return;
        }
        const RequestForm* form =
            request > UINT16_MAX ? rtcRequestForm_find(request) : requestForm_find(request);
        for (size_t byte = form->fills; byte < form->fills + form->fills_count; ++byte) {
            call.replace(argument + 3 * byte + 1, 2, "..");
        }
    }

    static bool fills(uint32_t request)
    {
        const RequestForm* form =
            request > UINT16_MAX ? rtcRequestForm_find(request) : requestForm_find(request);
        return form->fills_count != 0 || request == 0x6BA2;
    }

    // Where the last run has been.
    void places_see(const Files& files, Seen& seen)
    {
        for (const std::string& call : board.calls) {
            size_t argument = 0;
            if (const uint32_t request = request_of(call, argument); request != 0) {
                const Places place = place_bit(request > UINT16_MAX ? Place::kRtc : Place::kFpga);
                const bool only_reads =
                    kOnlyReading.count(request) + kClockReading.count(request) != 0;
                seen.read |= fills(request) ? place : Places{0};
                seen.changed |= only_reads ? Places{0} : place;
                seen.cleared = seen.cleared || kRestarting.count(request) != 0;
                continue;
            }
            const std::string name = call.substr(0, call.find(' '));
            if (name == "stime") {
                seen.opened |= place_bit(Place::kSystemClock);
                seen.changed |= place_bit(Place::kSystemClock);
                continue;
            }
            const std::string file = path_of(call);
            if (file.empty()) {
                continue;
            }
            const Place place = place_of(file);
            seen.opened |= place_bit(place);
            for (const char* reading : {"read", "fread", "fgets", "stat"}) {
                // who adds a line to a log reads where
                const bool log = place == Place::kSystemLog || place == Place::kUserLog;
                seen.read |= name == reading && !log ? place_bit(place) : Places{0};
            }
            seen.locked |= name == "flock" ? place_bit(place) : Places{0};
            if (place == Place::kFpga || place == Place::kRtc) {
                continue;
            }
            const auto before = files.find(file);
            const bool was = before != files.end();
            if (place == Place::kSaveLock && !was && board.file_exists(file) &&
                board.file_get(file).empty()) {
                continue; // nobody looks into it
            }
            if (board.file_exists(file) != was || (was && board.file_get(file) != before->second)) {
                seen.changed |= place_bit(place);
            }
        }
    }

    // The bytes of a set of fields.
    static std::vector<bool> bytes_in(const CommandDescription& command, FieldSet set)
    {
        std::vector<bool> bytes(command.record, false);
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            for (size_t n = 0; field_in(set, i) && n < size_t{field.width} * field.count; ++n) {
                bytes.at(field.offset + n) = true;
            }
        }
        return bytes;
    }

    static bool is_within(const std::multimap<uint32_t, ByteRange>& list, uint32_t code,
                          size_t byte)
    {
        const auto [first, last] = list.equal_range(code);
        return std::any_of(first, last, [=](const auto& entry) {
            return byte >= entry.second.first && byte <= entry.second.last;
        });
    }

    // Fields in `out` hold what they may hold.
    static void values_see(const CommandDescription& command, const Outcome& outcome, Seen& seen)
    {
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            if (!field_in(command.out & ~command.in, i) || !is_narrowed(field) ||
                outcome.result < 0) {
                continue;
            }
            for (size_t n = 0; n < field.count; ++n) {
                const uint32_t value =
                    number_at(outcome.record, field.offset + n * field.width, field.width);
                EXPECT_GE(value, field.least) << field.name;
                EXPECT_LE(value, field.most) << field.name;
                seen.values[i].insert(value);
            }
        }
    }

    void check(const CommandDescription& command, bool whole_model, Seen& seen)
    {
        const std::vector<bool> in = bytes_in(command, command.in);
        const std::vector<bool> out = bytes_in(command, command.out);
        const Start start = start_draw(command);
        Failing failing;
        Outcome one = run_from(command, start);
        if (below(3) == 0) {
            places_see(start.files, seen);
            failing = {1 + below(static_cast<uint32_t>(one.calls.size()) + 1), below(2) == 0};
            one = run_from(command, start, failing);
        }
        places_see(start.files, seen);
        if (one.record != start.record) {
            values_see(command, one, seen);
        }
        if (whole_model && (command.changes & place_bit(Place::kFpga)) == 0) {
            FpgaModel model;
            RtcModel rtc;
            deviceState_put(start.state, model, rtc);
            EXPECT_TRUE(same_model(board.fpga, model)) << "the device has changed";
        }

        // The same with other bytes where the command should not look.
        Start other = start;
        for (size_t byte = 0; byte < command.record; ++byte) {
            if (!in[byte]) {
                other.record[byte] = static_cast<char>(below(256));
            }
        }
        const Outcome two = run_from(command, other, failing);
        EXPECT_EQ(one.result, two.result);
        EXPECT_EQ(one.calls, two.calls);
        EXPECT_EQ(one.files, two.files);
        for (size_t byte = 0; byte < command.record; ++byte) {
            const bool kept =
                one.record[byte] == start.record[byte] && two.record[byte] == other.record[byte];
            const bool same = one.record[byte] == two.record[byte];
            if (out[byte]) {
                const bool may_keep = one.result < 0 || kMayLeave.count(command.code) != 0;
                EXPECT_TRUE(same || (kept && may_keep)) << "byte " << byte;
                if (one.record[byte] != start.record[byte]) {
                    seen.out_changed.insert(byte);
                }
            } else if (!is_within(kOverwritten, command.code, byte)) {
                EXPECT_TRUE(kept) << "byte " << byte << " is not in `out`";
            }
        }
        byte_try(command, start, one, failing, seen);
    }

    // Changes one byte of `in` that has not been seen to matter so far.
    void byte_try(const CommandDescription& command, const Start& start, const Outcome& one,
                  Failing failing, Seen& seen)
    {
        const std::vector<bool> in = bytes_in(command, command.in);
        std::vector<size_t> open;
        for (size_t byte = 0; byte < command.record; ++byte) {
            if (in[byte] && seen.in_mattered.count(byte) == 0 &&
                !is_within(kNeverMatter, command.code, byte)) {
                open.push_back(byte);
            }
        }
        if (open.empty()) {
            return;
        }
        const size_t byte = open[below(static_cast<uint32_t>(open.size()))];
        Start other = start;
        const auto held = static_cast<uint8_t>(start.record[byte]);
        const uint32_t choice = below(3);
        const uint32_t value = choice == 0   ? below(3)
                               : choice == 1 ? below(256)
                                             : held ^ 1U << below(8);
        other.record[byte] = static_cast<char>(value);
        if (other.record[byte] == start.record[byte]) {
            return;
        }
        Outcome two = run_from(command, other, failing);
        const bool is_out = bytes_in(command, command.out)[byte];
        if (!is_out || two.result < 0) {
            two.record[byte] = one.record[byte]; // its own, of course
        }
        if (!(two == one)) {
            seen.in_mattered.insert(byte);
        }
    }

    // What is still to be seen of a command; empty: nothing.
    static std::string missing(const CommandDescription& command, const Seen& seen)
    {
        std::string text;
        const auto add = [&](const std::string& what) {
            text += (text.empty() ? "" : ", ") + what;
        };
        const auto add_places = [&](const char* what, Places places) {
            for (unsigned place = 0; place < kPlaceCount; ++place) {
                if ((places >> place & 1) != 0) {
                    add(what + (" " + std::string(place_name(static_cast<Place>(place)))));
                }
            }
        };
        add_places("not opened:", (command.reads | command.changes) & ~seen.opened);
        add_places("not read:", command.reads & ~(seen.read | seen.locked));
        add_places("not changed:", command.changes & ~seen.changed);
        if (command.clears && !seen.cleared) {
            add("nothing restarted");
        }
        const std::vector<bool> in = bytes_in(command, command.in);
        const std::vector<bool> out = bytes_in(command, command.out);
        for (size_t byte = 0; byte < command.record; ++byte) {
            if (in[byte] && seen.in_mattered.count(byte) == 0 &&
                !is_within(kNeverMatter, command.code, byte)) {
                add("byte " + std::to_string(byte) + " does not matter");
            }
            if (out[byte] && seen.out_changed.count(byte) == 0 &&
                !is_within(kNeverFilled, command.code, byte)) {
                add("byte " + std::to_string(byte) + " is not filled");
            }
        }
        // Narrow ranges and codes: every value comes out at some time.
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            if (!field_in(command.out & ~command.in, i) || !is_narrowed(field) ||
                values_of(field).size() > 16 || field.most - field.least > 16) {
                continue;
            }
            const auto values = seen.values.find(i);
            for (const uint32_t value : values_of(field)) {
                if (values == seen.values.end() || values->second.count(value) == 0) {
                    add(std::string(field.name) + " is never " + std::to_string(value));
                }
            }
        }
        return text;
    }

    static int failures()
    {
        return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
    }

    // Each command by itself; under an emulator some of them.
    template <class Check> void for_every_command(const Check& check_command)
    {
        size_t number = 0;
        for (const CommandGroup* group : catalogue_get()) {
            for (const CommandDescription& command : group->commands) {
                if (number++ % kLoopShare.roundsPerRound != 0) {
                    continue;
                }
                SCOPED_TRACE(command.name);
                uses_files_ = false;
                files_put({});
                failures_before_ = failures();
                check_command(command);
            }
        }
        board.restart();
    }

    // Whether a value is as good as none: it is refused, or nothing is done.
    static bool is_refused(const Outcome& outcome)
    {
        return outcome.result < 0 || outcome.calls.empty();
    }

    Outcome run_with(const CommandDescription& command, Start start, const Field& field,
                     size_t element, uint32_t value, bool is_out)
    {
        const size_t offset = field.offset + element * field.width;
        number_put(start.record, offset, field.width, value);
        Outcome outcome = run_from(command, start);
        if (!is_out || number_at(outcome.record, offset, field.width) == value) { // kept
            number_put(outcome.record, offset, field.width, 0);
        }
        return outcome;
    }

    void range_check(const CommandDescription& command, const Field& field, bool is_out);
    void mask_check(const CommandDescription& command, const Field& field, bool is_out);

    bool uses_files_ = false; // the command at hand
    int failures_before_ = 0; // it
    std::mt19937 engine_{20061101};
};

TEST_F(CatalogueRuns, KnowTheRequestsThatOnlyRead)
{
    for (uint32_t request = 0x6B00; request <= 0x6BFF; ++request) {
        const RequestForm* form = requestForm_find(request);
        if (form != nullptr) {
            EXPECT_EQ(kOnlyReading.count(request) + kRestarting.count(request), fills(request))
                << hex_number(request);
        }
    }
}

TEST_F(CatalogueRuns, ReadFillOpenAndChangeWhatTheDescriptionSays)
{
    constexpr int kRounds = 40;
    constexpr int kRoundsAtMost = 4000; // before something is said to be out of reach
    for_every_command([&](const CommandDescription& command) {
        Seen seen;
        for (int round = 0;
             round < kRounds || (round < kRoundsAtMost && !missing(command, seen).empty());
             ++round) {
            check(command, round < 5, seen);
            EXPECT_EQ(seen.opened & ~(command.reads | command.changes), 0U);
            EXPECT_EQ(seen.read & ~command.reads, 0U);
            EXPECT_EQ(seen.changed & ~command.changes, 0U);
            EXPECT_TRUE(command.clears || !seen.cleared);
            if (failures() != failures_before_) {
                break;
            }
        }
        EXPECT_EQ(missing(command, seen), "");
    });
}

// While the inhibit is on, any value is recorded as it stands.
constexpr const char* kInhibit = "/tmp/led_rewrite_inh";

// Every value of a field's range is taken, and no two of its ends do the same; what lies beside it
// is refused, ignored, or taken for a value of the range.
void CatalogueRuns::range_check(const CommandDescription& command, const Field& field, bool is_out)
{
    const std::vector<uint32_t> values = values_of(field);
    std::vector<uint32_t> beside;
    if (!field.codes().empty()) {
        for (uint32_t value = 0; value <= 2 * values.back() && value < kNarrow; ++value) {
            if (std::find(values.begin(), values.end(), value) == values.end()) {
                beside.push_back(value);
            }
        }
    } else {
        if (field.least > 0) {
            beside.push_back(field.least - 1);
        }
        if (field.most < widest(field)) {
            beside.push_back(field.most + 1);
        }
    }
    std::set<uint32_t> taken;
    std::set<uint32_t> like_last; // what has done the same as the last value, so far
    if (!is_out) {                // what is only kept is kept whatever it is
        like_last.insert(values.begin(), values.end() - 1);
    }
    const int bases = values.size() > 40 ? 4 : 16;
    for (int base = 0;
         base < 200 && (base < bases || taken.size() < values.size() || !like_last.empty());
         ++base) {
        Start start = start_draw(command);
        start.record = record_draw(command);
        start.files.erase(kInhibit);
        const size_t element = below(field.count);
        std::vector<Outcome> outcomes;
        for (const uint32_t value : values) {
            outcomes.push_back(run_with(command, start, field, element, value, is_out));
            if (!is_refused(outcomes.back())) {
                taken.insert(value);
            }
        }
        for (size_t i = 0; i + 1 < values.size(); ++i) {
            if (!(outcomes[i] == outcomes.back())) {
                like_last.erase(values[i]);
            }
        }
        for (const uint32_t value : beside) {
            const Outcome outcome = run_with(command, start, field, element, value, is_out);
            EXPECT_TRUE(is_refused(outcome) ||
                        std::find(outcomes.begin(), outcomes.end(), outcome) != outcomes.end())
                << field.name << " " << value << " is taken, too";
        }
        if (failures() != failures_before_) {
            return;
        }
    }
    EXPECT_EQ(taken.size(), values.size()) << field.name << ": a value is never taken";
    EXPECT_EQ(hex_list(like_last), "") << field.name << " does the same as " << values.back();
}

// Each bit of a mask matters; a bit beside it does not, unless it is the only one.
void CatalogueRuns::mask_check(const CommandDescription& command, const Field& field, bool is_out)
{
    std::set<uint32_t> idle;
    for (uint32_t bit = 1; bit != 0 && bit <= field.most; bit <<= 1) {
        idle.insert(bit);
    }
    for (int base = 0; base < 200 && (base < 8 || !idle.empty()); ++base) {
        Start start = start_draw(command);
        start.record = record_draw(command);
        start.files.erase(kInhibit);
        const size_t element = below(field.count);
        const uint32_t mask = within(1, field.most);
        const Outcome one = run_with(command, start, field, element, mask, is_out);
        for (auto bit = idle.begin(); bit != idle.end();) {
            const uint32_t other = mask ^ *bit;
            const bool matters =
                other != 0 && !(run_with(command, start, field, element, other, is_out) == one);
            bit = matters ? idle.erase(bit) : std::next(bit);
        }
        if (field.most < widest(field)) {
            EXPECT_TRUE(run_with(command, start, field, element, mask | (field.most + 1), is_out) ==
                        one)
                << field.name << ": the bit behind the last matters, too";
        }
    }
    EXPECT_EQ(hex_list(idle), "") << field.name << " has a bit that does not matter";
}

TEST_F(CatalogueRuns, TakeTheRangesOfTheDescriptionAndNoOther)
{
    for_every_command([&](const CommandDescription& command) {
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            const bool is_out = field_in(command.out, i);
            if (!field_in(command.in, i) || is_open(command, field) ||
                (!is_narrowed(field) && field.kind != Kind::kBits)) {
                continue;
            }
            if (field.kind == Kind::kBits) {
                mask_check(command, field, is_out);
            } else {
                range_check(command, field, is_out);
            }
            if (failures() != failures_before_) {
                break;
            }
        }
    });
}

// A part of a record that a bit of a mask selects.
struct Part {
    const Field* field;
    size_t element; // of several numbers
};

// What the note of a mask says: "bits 0, 1 select address, length; 0: both". Empty: of no parts.
std::vector<Part> parts_selected(const CommandDescription& command, size_t mask)
{
    const std::string name = command.fields()[mask].name;
    const std::string group =
        name.substr(0, name.find('.') == std::string::npos ? 0 : name.find('.') + 1);
    std::string note = command.fields()[mask].note;
    const size_t select = note.find(" select");
    if (select == std::string::npos) {
        return {};
    }
    note = note.substr(note.find(' ', select + 1) + 1);
    EXPECT_EQ(note.find("; 0: "), note.find(';')) << note;
    note = note.substr(0, note.find(';'));
    const auto named = [&](const std::string& part) {
        size_t i = 0;
        while (i < command.fields().size() && group + part != command.fields()[i].name) {
            ++i;
        }
        EXPECT_LT(i, command.fields().size()) << "no field " << group + part;
        return i;
    };
    std::vector<Part> parts;
    if (const size_t to = note.find(" to "); to != std::string::npos) {
        const size_t last = named(note.substr(to + 4, note.find(',') - to - 4));
        for (size_t i = named(note.substr(0, to)); i <= last; ++i) {
            parts.push_back({&command.fields()[i], 0});
        }
        return parts;
    }
    for (size_t from = 0; from < note.size();) {
        const size_t end = std::min(note.find(", ", from), note.size());
        const std::string part = note.substr(from, end - from);
        from = end + 2;
        const size_t bracket = part.find('[');
        const Field* field =
            bracket == 0 ? parts.back().field : &command.fields()[named(part.substr(0, bracket))];
        if (bracket == std::string::npos) {
            parts.push_back({field, 0});
        } else if (part.substr(bracket) == "[n]") {
            for (size_t n = 0; n < field->count; ++n) {
                parts.push_back({field, n});
            }
        } else {
            parts.push_back({field, std::stoul(part.substr(bracket + 1))});
        }
    }
    return parts;
}

// A bit of a mask selects the part that the note names, 0 selects all of them, and a part that is
// not selected does not matter.
TEST_F(CatalogueRuns, SelectTheParts)
{
    size_t masks = 0;
    for_every_command([&](const CommandDescription& command) {
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& mask = command.fields()[i];
            // the alert looks at all elements, and no value of the last one matters
            if (!field_in(command.in, i) || mask.kind != Kind::kBits ||
                command.code == WR_LED_GROUP_1) {
                continue;
            }
            const std::vector<Part> parts = parts_selected(command, i);
            EXPECT_EQ(uint64_t{1} << parts.size(), uint64_t{mask.most} + 1) << mask.name;
            std::set<std::pair<size_t, size_t>> idle; // selected by (bit), but not seen to matter
            for (size_t part = 0; part < parts.size(); ++part) {
                idle.insert({part, part});
                idle.insert({parts.size(), part}); // all
            }
            for (int base = 0; base < 60 && (base < 6 || !idle.empty()); ++base) {
                Start start = start_draw(command);
                start.record = record_draw(command);
                start.files.erase(kInhibit);
                for (size_t bit = 0; bit <= parts.size(); ++bit) {
                    number_put(start.record, mask.offset, mask.width,
                               bit == parts.size() ? 0 : 1U << bit);
                    const Outcome one = run_from(command, start);
                    for (size_t part = 0; part < parts.size(); ++part) {
                        const Field& field = *parts[part].field;
                        const size_t offset = field.offset + parts[part].element * field.width;
                        Start other = start;
                        if (is_number(field)) {
                            number_put(other.record, offset, field.width, value_draw(field));
                        } else {
                            other.record.replace(offset, field.width, bytes_draw(field.width));
                        }
                        Outcome two = run_from(command, other);
                        two.record.replace(offset, field.width, one.record, offset, field.width);
                        if (bit != part && bit != parts.size()) {
                            EXPECT_TRUE(one == two) << "bit " << bit << " selects " << field.name;
                        } else if (!(one == two)) {
                            idle.erase({bit, part});
                        }
                    }
                }
                if (failures() != failures_before_) {
                    return;
                }
            }
            for (const auto& [bit, part] : idle) {
                ADD_FAILURE() << "bit " << bit << " does not select " << parts[part].field->name
                              << "[" << parts[part].element << "]";
            }
            ++masks;
        }
    });
    EXPECT_TRUE(masks == 17 || kLoopShare.roundsPerRound != 1) << masks;
}

// What a result's meaning may say of a call whose failure gives it; typed in by hand.
std::vector<std::string> words_for(const std::string& call, bool only_reads)
{
    const std::string name = call.substr(0, call.find(' '));
    const bool device = call.find(" /dev/") != std::string::npos;
    if (name == "open" && device) {
        return {"device cannot be opened",
                "device or file cannot be opened",
                "device or the file cannot be opened",
                "device or /conf/statistics cannot be opened",
                "no device",
                "panel cannot be saved"};
    }
    if (name == "ioctl") {
        return only_reads ? std::vector<std::string>{"read", "answer", "panel cannot be saved"}
                          : std::vector<std::string>{"refuse", "cannot be written"};
    }
    if (name == "open" || name == "fopen") {
        return {"file cannot be opened", "/conf/statistics cannot be opened", "file is missing",
                "panel cannot be saved"};
    }
    if (name == "read" || name == "fread") {
        return {"less than", "shorter than", "file cannot be read", "panel cannot be saved"};
    }
    return {"cannot be written", "panel cannot be saved"}; // lseek, write, fwrite
}

bool has_any(const std::string& text, const std::vector<std::string>& words)
{
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return text.find(word) != std::string::npos;
    });
}

const char* meaning_of(const CommandDescription& command, int32_t result)
{
    for (const ResultMeaning& known : command.results()) {
        if (known.result == result) {
            return known.meaning;
        }
    }
    ADD_FAILURE() << "result " << result << " has no meaning";
    return "";
}

// Each call in turn fails in both runs of a command. What the result then means speaks of it.
TEST_F(CatalogueRuns, SayOfEachResultWhatHasFailed)
{
    size_t told = 0;
    for_every_command([&](const CommandDescription& command) {
        for (int round = 0; round < 4; ++round) {
            Start start = start_draw(command);
            start.record = record_draw(command);
            const Outcome good = run_from(command, start);
            if (good.result < 0) {
                continue;
            }
            const size_t count = good.calls.size();
            for (size_t n = 1; n <= count; ++n) {
                if (n > 8 && n + 8 <= count && below(8) != 0) {
                    continue; // many that are alike
                }
                size_t argument = 0;
                const std::string call = good.calls[n - 1];
                const uint32_t request = request_of(call, argument);
                Outcome failed = run_from(command, start, {n, false});
                for (size_t i = n; i < failed.calls.size(); ++i) {
                    if (starts(failed.calls[i], "usleep ")) {
                        failed = run_from(command, start, {n, false, i + 1 + n});
                        break;
                    }
                }
                // A mode that is 0 in the second run
                if (failed.result >= 0 || (command.code == WR_REG168_MODE && failed.result == -5)) {
                    continue;
                }
                const bool only_reads = kOnlyReading.count(request) + kRestarting.count(request) +
                                            kClockReading.count(request) !=
                                        0;
                const std::string meaning = meaning_of(command, failed.result);
                EXPECT_TRUE(has_any(meaning, words_for(call, only_reads)))
                    << call << " gives " << failed.result << ": " << meaning;
                ++told;
            }
        }
    });
    EXPECT_TRUE(told > 2000 || kLoopShare.roundsPerRound != 1) << told;
}

// Results of the record alone, with nothing failing.
TEST_F(CatalogueRuns, SayOfABadArgumentThatItIsOne)
{
    for_every_command([](const CommandDescription& command) {
        for (const ResultMeaning& result : command.results()) {
            if (result.result == DEVICE_BAD_ARGUMENT) {
                EXPECT_TRUE(has_any(result.meaning, {"out of range", "not within", "above 6",
                                                     "is not 1..4", "file is missing"}))
                    << result.meaning;
            }
            EXPECT_EQ(result.result == 1, has_any(result.meaning, {"recorded in"}));
            EXPECT_EQ(
                strncmp(result.meaning, "done", 4) == 0 ||
                    has_any(result.meaning, {"written to the panel", "entry can be read, and"}),
                result.result == 0)
                << result.meaning;
        }
    });
}

constexpr uint32_t kOwnId = 7;

// Values of a sweep that are refused, with the reason.
bool is_refusedInSweep(const CommandDescription& command, const Bytes& record)
{
    switch (command.code) {
    case RD_FLAG_SET: // between the switch ports 1, 2 and 4
        return record[0] == 3;
    case RD_ID_ENTRY_VALUE: // the own one
        return number_at(record, 2, 2) == kOwnId;
    case RD_ADDR_TABLE_ENTRY: // the small table
        return record[13] != 0 && static_cast<uint8_t>(record[0]) > 29;
    default:
        return false;
    }
}

TEST_F(CatalogueRuns, AnswerEveryValueThatASweepAsksFor)
{
    for_every_command([&](const CommandDescription& command) {
        std::vector<const Field*> swept;
        for (const Field& field : command.fields()) {
            if (field.sweep.step != 0) {
                swept.push_back(&field);
            }
        }
        if (swept.empty() || (command.changes & place_bit(Place::kFpga)) != 0) {
            return;
        }
        Start start{Bytes(command.record, '\0'), 0, files_draw()};
        for (const Field& field : command.fields()) {
            if (field.role == Role::kOwnId) {
                number_put(start.record, field.offset, field.width, kOwnId);
            }
        }
        std::vector<uint32_t> at;
        at.reserve(swept.size());
        for (const Field* field : swept) {
            at.push_back(field->sweep.first);
        }
        for (bool more = true; more && failures() == failures_before_;) {
            for (size_t i = 0; i < swept.size(); ++i) {
                number_put(start.record, swept[i]->offset, swept[i]->width, at[i]);
            }
            const Outcome outcome = run_from(command, start);
            if (is_refusedInSweep(command, start.record)) {
                EXPECT_EQ(outcome.result, DEVICE_BAD_ARGUMENT);
            } else {
                const auto& results = commandFacts_find(command.code)->results;
                EXPECT_EQ(results.count(outcome.result), 1U);
                EXPECT_NE(outcome.result, DEVICE_BAD_ARGUMENT) << testing::PrintToString(at);
            }
            more = false;
            for (size_t i = 0; i < swept.size() && !more; ++i) {
                at[i] += swept[i]->sweep.step;
                more = at[i] <= swept[i]->sweep.last;
                at[i] = more ? at[i] : swept[i]->sweep.first;
            }
        }
    });
}

} // namespace
