#include "device/led_panel_words.h"

namespace
{

constexpr auto kA = &PanelWords::a;
constexpr auto kB = &PanelWords::b;
constexpr auto kC = &PanelWords::c;

uint16_t number_random(std::mt19937& random)
{
    return static_cast<uint16_t>(random());
}

void bit_put(uint16_t& word, uint16_t bit, bool on)
{
    word = static_cast<uint16_t>(on ? word | bit : word & ~bit);
}

} // namespace

const std::array<ElementPlace, 21> kElements{{
    {15, kB, 0x0040}, {16, kB, 0x0010}, {17, kB, 0x0020}, // group 1
    {19, kC, 0x0004}, {20, kC, 0x0001}, {21, kC, 0x0002}, // group 2
    {25, kA, 0x0004}, {26, kA, 0x0001}, {27, kA, 0x0002}, // group 3
    {29, kA, 0x0040}, {30, kA, 0x0010}, {31, kA, 0x0020}, // group 4
    {33, kA, 0x0400}, {34, kA, 0x0100}, {35, kA, 0x0200}, // group 5
    {37, kA, 0x4000}, {38, kA, 0x1000}, {39, kA, 0x2000}, // group 6
    {41, kB, 0x0004}, {42, kB, 0x0001}, {43, kB, 0x0002}, // group 7
}};

const std::array<IndicatorPlace, 5> kIndicators{{
    {9, kB, 0x0400, 0x0800},
    {10, kB, 0x0100, 0x0200},
    {11, kC, 0x0100, 0x0200},
    {12, kC, 0x0040, 0x0080},
    {13, kC, 0x0010, 0x0020},
}};

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
    board.fpga.words[kRegisterA] = words.a;
    board.fpga.words[kRegisterB] = words.b;
    board.fpga.words[kRegisterC] = words.c;
    board.fpga.words[kDeviceWord03] = words.word03;
}

PanelWords panel_get(Board& board)
{
    const auto word = [&board](uint32_t request) {
        return static_cast<uint16_t>(board.fpga.words[request]);
    };
    return {word(kRegisterA), word(kRegisterB), word(kRegisterC), word(kDeviceWord03)};
}

PanelWords panel_random(std::mt19937& random)
{
    const uint16_t a = number_random(random);
    const uint16_t b = number_random(random);
    const uint16_t c = number_random(random);
    return {a, b, c, number_random(random)};
}

void panel_decode(const PanelWords& words, Bytes& record)
{
    constexpr std::array<char, 4> kLedA{0, 1, 3, 2}; // by bits 13 and 12
    record[8] = kLedA.at((words.b >> 12) & 3);
    for (const IndicatorPlace& place : kIndicators) {
        const uint16_t word = words.*place.word;
        const char low = (word & place.low) != 0 ? '\1' : '\0';
        record[place.byte] = (word & place.high) != 0 ? '\2' : low;
    }
    for (const ElementPlace& place : kElements) {
        record[place.byte] = (words.*place.word & place.bit) != 0 ? '\1' : '\0';
    }
}

Bytes snapshot_of(uint32_t identifier, const PanelWords& words)
{
    Bytes record = le32(identifier) + le32(identifier) + Bytes(36, '\0');
    panel_decode(words, record);
    return record;
}

PanelWords restored(const Bytes& record, PanelWords words)
{
    bit_put(words.word03, 0x0080, false);
    for (const ElementPlace& place : kElements) {
        bit_put(words.*place.word, place.bit, record[place.byte] == 1);
    }
    for (const IndicatorPlace& place : kIndicators) {
        const char value = record[place.byte];
        if (place.byte == kLedFByte) {
            continue; // ledF is not restored
        }
        if (value == 2) {
            bit_put(words.*place.word, place.high, true);
        } else if (value == 0 || value == 1) {
            bit_put(words.*place.word, place.high, false);
            bit_put(words.*place.word, place.low, value == 1);
        }
    }
    const auto ledA = static_cast<uint8_t>(record[8]);
    if (ledA <= 3) {
        bit_put(words.b, 0x2000, ledA >= 2);
        bit_put(words.b, 0x1000, ledA == 1 || ledA == 2);
    }
    if (ledA == 3) {
        bit_put(words.word03, 0x0040, true);
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

namespace
{

constexpr const char* kNoFile = "puts fileAccess_lock : 001 : /tmp/Saveing file open error";
constexpr const char* kNoLock =
    "puts fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error";
constexpr const char* kNoHandle =
    "puts fileAccess_unlock : 001 : /tmp/Saveing file pointer (==0) error";
constexpr const char* kNotClosed = "puts fileAccess_unlock : 002 : /tmp/Saveing file close error";

Trace locked(const Trace& calls)
{
    return Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX"} + calls +
           Trace{"fclose /tmp/Saveing"};
}

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
        return {Trace{kNoFile} + work + Trace{kNoHandle} + after, course.result};
    }
    if (failing == 1) {
        return {Trace{"fclose /tmp/Saveing", kNoLock} + work + Trace{kNoHandle} + after,
                course.result};
    }
    if (failing == 2) {
        return {course.unseen, course.unseenResult};
    }
    if (failing == released) {
        return {Trace{kNotClosed} + after, course.result};
    }
    const bool inWork = failing < released;
    const Course& part = inWork ? course.work : course.after;
    const size_t place = inWork ? failing - 2 : failing - released - 1;
    const Trace release = inWork ? Trace{"fclose /tmp/Saveing"} : Trace{};
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
    Bytes record(44, '\0');
    for (char& byte : record) {
        byte = static_cast<char>(random() % values);
    }
    return record;
}

int32_t command_run(DeviceCommandCode command, Bytes& record)
{
    alignas(8) std::array<char, 44> memory{};
    record.copy(memory.data(), memory.size());
    const int32_t result = Fpga_Register_Set(command, memory.data());
    record.assign(memory.data(), memory.size());
    return result;
}

int32_t command_run(DeviceCommandCode command, Bytes&& record)
{
    return command_run(command, record);
}
