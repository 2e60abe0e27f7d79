#include "device/led_panel_words.h"

namespace
{

uint16_t number_random(std::mt19937& random)
{
    return static_cast<uint16_t>(random());
}

uint16_t with_bit(unsigned word, unsigned bit, bool on)
{
    return static_cast<uint16_t>(on ? word | bit : word & ~bit);
}

} // namespace

const Course kSnapshot{{"stat /tmp/led_rewrite_inh", kElsewhere},
                       opens_to_read(-1),
                       word_read(0x6B29, -1),
                       closes(),
                       opens_to_read(-1),
                       word_read(0x6B0F, -1),
                       word_read(0x6B11, -1),
                       word_read(0x6B4F, -1),
                       word_read(0x6B51, -1),
                       closes(),
                       {"open /tmp/led_rewrite_inh O_RDWR|O_CREAT|O_TRUNC 0666", -1},
                       {"write /tmp/led_rewrite_inh 44", -1},
                       {"close /tmp/led_rewrite_inh", kIgnored}};

std::ostream& operator<<(std::ostream& out, const PanelWords& words)
{
    return out << std::hex << "A " << words.a << " B " << words.b << " C " << words.c << " word 03 "
               << words.word03 << std::dec;
}

void panel_put(Board& board, const PanelWords& words)
{
    for (const PanelRegister& panel : {kRegisterA, kRegisterB, kRegisterC}) {
        board.fpga.words[panel.read] = words.*panel.word;
    }
    board.fpga.words[kDeviceWord03] = words.word03;
}

PanelWords panel_get(Board& board)
{
    const auto word = [&board](uint32_t request) {
        return static_cast<uint16_t>(board.fpga.words[request]);
    };
    return {word(kRegisterA.read), word(kRegisterB.read), word(kRegisterC.read),
            word(kDeviceWord03)};
}

PanelWords panel_random(std::mt19937& random)
{
    const uint16_t a = number_random(random);
    const uint16_t b = number_random(random);
    const uint16_t c = number_random(random);
    return {a, b, c, number_random(random)};
}

Bytes with_recorded(Bytes held, DeviceCommandCode command, const Bytes& callers)
{
    for (const RecordedBytes& row : kRecordedBytes) {
        if (row.command == command) {
            held.replace(row.first, row.count, callers, row.first, row.count);
        }
    }
    return held;
}

void PrintTo(const Indicator& indicator, std::ostream* out)
{
    *out << command_name(indicator.command);
}

void PrintTo(const Group& group, std::ostream* out)
{
    *out << command_name(group.command);
}

uint16_t ledA_word(uint16_t word, uint8_t value)
{
    word = with_bit(word, kLedA.high, value == 2 || value == 3);
    return with_bit(word, kLedA.low, value == 1 || value == 2);
}

uint16_t indicator_word(const Indicator& indicator, uint16_t word, uint8_t value)
{
    if (value == 2) {
        return with_bit(word, indicator.high, true);
    }
    return with_bit(with_bit(word, indicator.high, false), indicator.low, value == 1);
}

bool selects(unsigned mask, unsigned bit)
{
    return mask == 0 || (mask >> bit & 1U) == 1U;
}

uint16_t group_word(const Group& group, uint16_t word, const Bytes& record)
{
    const auto mask = static_cast<uint8_t>(record[group.mask]);
    for (unsigned n = 0; n < group.elements.size(); ++n) {
        const Element& element = group.elements.at(n);
        if (selects(mask, n)) {
            word = with_bit(word, element.bit, record[element.byte] == 1 || element.one_way);
        }
    }
    return word;
}

void panel_decode(const PanelWords& words, Bytes& record)
{
    constexpr std::array<char, 4> kStates{0, 1, 3, 2}; // of ledA, by bits 13 and 12
    record[kLedA.byte] = kStates.at((words.b >> 12) & 3);
    for (const Indicator& indicator : kIndicators) {
        const uint16_t word = words.*indicator.panel.word;
        const char low = (word & indicator.low) != 0 ? '\1' : '\0';
        record[indicator.byte] = (word & indicator.high) != 0 ? '\2' : low;
    }
    for (const Group& group : kGroups) {
        for (const Element& element : group.elements) {
            const bool on = (words.*group.panel.word & element.bit) != 0;
            record[element.byte] = on ? '\1' : '\0';
        }
    }
}

Bytes snapshot_of(uint32_t identifier, const PanelWords& words)
{
    Bytes record = le32(identifier) + le32(identifier) + zeros(36);
    panel_decode(words, record);
    return record;
}

PanelWords restored(const Bytes& record, PanelWords words)
{
    words.word03 = with_bit(words.word03, 0x0080, false);
    for (const Group& group : kGroups) {
        for (const Element& element : group.elements) {
            uint16_t& word = words.*group.panel.word;
            word = with_bit(word, element.bit, record[element.byte] == 1);
        }
    }
    for (const Indicator& indicator : kIndicators) {
        const auto value = static_cast<uint8_t>(record[indicator.byte]);
        if (value <= 2 && indicator.command != WR_LINE_MODE) { // ledF is not restored
            uint16_t& word = words.*indicator.panel.word;
            word = indicator_word(indicator, word, value);
        }
    }
    const auto ledA = static_cast<uint8_t>(record[kLedA.byte]);
    if (ledA <= 3) {
        words.b = ledA_word(words.b, ledA);
        words.word03 = with_bit(words.word03, ledA == 3 ? 0x0040 : 0, true);
    }
    return words;
}

PanelWords shown(const PatternBits& pattern, PanelWords words)
{
    words.b = static_cast<uint16_t>((words.b & ~pattern.clearB) | pattern.setB);
    words.c = static_cast<uint16_t>((words.c & ~pattern.clearC) | pattern.setC);
    words.word03 |= 0x0080;
    return words;
}

Trace locked(const Trace& calls)
{
    return Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX"} + calls + Trace{kRelease};
}

namespace
{

// What is open after the course's first calls, as the calls that close it.
Trace closes_of(const Course& course, size_t count)
{
    Trace closes;
    for (size_t i = 0; i < count; ++i) {
        const std::string& call = course[i].call;
        if (call.rfind("open ", 0) == 0) {
            closes.insert(closes.begin(), "close " + call.substr(5, call.find(' ', 5) - 5));
        } else if (call.rfind("close ", 0) == 0) {
            closes.erase(closes.begin());
        }
    }
    return closes;
}

struct Outcome {
    Trace rest; // the calls behind the failed one
    int32_t result;
};

Outcome outcome_of(const LockedCourse& course, size_t failing)
{
    const Trace work = calls_of(course.work);
    const Trace after = calls_of(course.after);
    const size_t released = 2 + work.size();
    if (failing == 0) {
        return {Trace{puts_of(kLockUnopened)} + work + Trace{puts_of(kLockAbsent)} + after,
                course.result};
    }
    if (failing == 1) {
        return {Trace{kRelease, puts_of(kLockUntaken)} + work + Trace{puts_of(kLockAbsent)} + after,
                course.result};
    }
    if (failing == 2) {
        return {course.unseen, course.unseenResult};
    }
    if (failing == released) {
        return {Trace{puts_of(kLockUnclosed)} + after, course.result};
    }
    const bool inWork = failing < released;
    const Course& part = inWork ? course.work : course.after;
    const size_t place = inWork ? failing - 2 : failing - released - 1;
    const Trace release = inWork ? Trace{kRelease} : Trace{};
    if (part[place].failure == kIgnored) {
        return {calls_of(part, place + 1) + (inWork ? release + after : Trace{}), course.result};
    }
    return {closes_of(part, place) + release, part[place].failure};
}

} // namespace

void LedTest::prove_locked(const std::function<void()>& prepare,
                           const std::function<int32_t()>& action, const LockedCourse& course,
                           const std::function<void(size_t, const std::string&)>& check)
{
    const Trace complete = locked(calls_of(course.work)) + calls_of(course.after);
    prepare();
    board.restart();
    EXPECT_EQ(action(), course.result);
    ASSERT_EQ(board.calls, complete);
    EXPECT_EQ(board.console, "");

    failure_sweep(board, prepare, action,
                  [&](size_t failing, const std::string& call, int32_t result) {
                      const Outcome outcome = outcome_of(course, failing);
                      EXPECT_EQ(result, outcome.result);
                      const auto begin = complete.begin();
                      Trace expected(begin, begin + static_cast<std::ptrdiff_t>(failing));
                      expected.push_back(call + " -> failed");
                      EXPECT_EQ(board.calls, expected + outcome.rest);
                      check(failing, call);
                  });
}

Bytes LedTest::record_random(std::mt19937& random, unsigned values)
{
    Bytes record = zeros(44);
    for (char& byte : record) {
        byte = static_cast<char>(random() % values);
    }
    return record;
}
