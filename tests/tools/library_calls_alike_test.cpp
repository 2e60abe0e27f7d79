// Whatever maintctl's layer below the library shows and tells, the library works as without it; and
// what it shows is what the board has seen.
#include "catalogue/requests.h"
#include "tools/library_calls_fixture.h"

// The library without the layer.
extern "C" int32_t plain_Fpga_Register_Set(uint32_t command, void* record);

namespace
{

// What came of a trial.
struct Whole {
    int32_t result;
    Bytes record;
    Trace calls;
    std::string console;
    std::map<std::string, Bytes> files;
    std::string devices;
};

bool prints(const std::string& call)
{
    return starts(call, "puts ") || starts(call, "printf ");
}

Trace without_prints(Trace calls)
{
    std::erase_if(calls, prints);
    return calls;
}

// A line of the trace, taken apart.
struct Line {
    std::string name;
    std::string arguments;
    std::string result; // with what is behind it
};

Line line_parse(const std::string& text)
{
    const size_t open = text.find('(');
    const size_t close = text.rfind(") = ");
    if (open == std::string::npos || close == std::string::npos) {
        ADD_FAILURE() << text;
        return {};
    }
    return {text.substr(0, open), text.substr(open + 1, close - open - 1), text.substr(close + 4)};
}

// The pieces of a text between separators.
std::vector<std::string> split(const std::string& text, const std::string& separator)
{
    std::vector<std::string> pieces;
    size_t begin = 0;
    for (size_t end; (end = text.find(separator, begin)) != std::string::npos;
         begin = end + separator.size()) {
        pieces.push_back(text.substr(begin, end - begin));
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

std::string unquoted(const std::string& text)
{
    return text.size() > 1 && text.front() == '"' ? text.substr(1, text.size() - 2) : text;
}

// A line as the board has it, but for requests.
std::string board_text(const Line& line)
{
    std::vector<std::string> pieces = split(line.arguments, ", ");
    std::string text = line.name;
    if (line.name == "time") {
        return "time now";
    }
    if (line.name == "fprintf") {
        return text + " " + pieces[0] + " " + line.result; // all of it has been written
    }
    if (line.name == "clock_settime") {
        text = "stime";
    }
    if (pieces[0].find_first_not_of("0123456789") == std::string::npos &&
        (line.name == "close" || line.name == "flock")) {
        pieces[0] = "(closed)";
    }
    for (std::string piece : pieces) {
        const bool read_or_written = line.name == "fread" || line.name == "fwrite";
        if (piece.size() > 6 && piece.substr(piece.size() - 6) == " bytes") {
            piece.resize(piece.size() - 6);
            if (read_or_written) {
                const std::vector<std::string> items = split(piece, " x ");
                piece = std::to_string(std::stoul(items.at(0)) * std::stoul(items.at(1)));
            }
        }
        text += piece == "SEEK_SET" ? "" : " " + unquoted(piece);
    }
    return text;
}

uint32_t number_at(const Bytes& bytes, size_t offset, size_t width)
{
    uint32_t number = 0;
    memcpy(&number, bytes.data() + offset, width);
    return number;
}

// Fields "name=value" against a record: those that the driver fills or the others. What is not
// named is 0.
void expect_fields(const std::string& text, const RequestDescription& request, const Bytes& record,
                   bool filled)
{
    const std::vector<std::string> pieces =
        text.empty() ? std::vector<std::string>() : split(text, " ");
    size_t next = 0;
    RequestField field{};
    for (const char* rest = request.layout; (rest = requestField_next(rest, field)) != nullptr;) {
        if (requestField_isFilled(request, field) != filled) {
            continue;
        }
        const Bytes bytes = record.substr(field.offset, size_t{field.width} * field.count);
        const std::string name = (field.name == "-" ? "spare" : std::string(field.name)) + "=";
        const bool named = next < pieces.size() && starts(pieces[next], name.c_str());
        if (!named || (field.name == "-" && bytes == zeros(bytes.size()))) {
            EXPECT_EQ(bytes, zeros(bytes.size())) << name << " in " << text;
            continue;
        }
        const std::string value = pieces[next++].substr(name.size());
        if (field.width == 1 && field.count > 1) {
            std::string expected;
            for (const char byte : bytes.substr(0, 16)) {
                char pair[4];
                snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
                expected += pair;
            }
            EXPECT_EQ(value, expected + (bytes.size() > 16 ? ".." : ""));
            continue;
        }
        const std::vector<std::string> numbers = split(value, ",");
        ASSERT_EQ(numbers.size(), field.count) << text;
        for (size_t i = 0; i < field.count; ++i) {
            EXPECT_EQ(static_cast<uint32_t>(std::stoll(numbers[i], nullptr, 0)),
                      number_at(bytes, i * field.width, field.width))
                << text;
        }
    }
    EXPECT_EQ(next, pieces.size()) << text;
}

class LibraryCallsAlike : public LibraryCallsTest
{
  protected:
    // Runs a trial with the nth call failing (0: none).
    Whole whole_make(const Trial& trial, size_t failing, const Run& run)
    {
        board.now = 1141203907;
        const Outcome outcome = make(trial, [&](uint32_t number, void* record) {
            if (failing != 0) {
                board.fail_call(failing);
            }
            return run(number, record);
        });
        return {outcome.result, outcome.record,  board.calls,
                board.console,  files_of(board), devices_text(board)};
    }

    // With the layer, which keeps what the library prints from the board.
    void expect_alike(const Trial& trial, const Whole& plain, size_t failing, const Watch& watch)
    {
        // A call that is printed does not count any more.
        const auto end = plain.calls.begin() + static_cast<std::ptrdiff_t>(failing);
        const auto printed = std::count_if(plain.calls.begin(), end, prints);
        const Whole whole = whole_make(
            trial, failing - static_cast<size_t>(printed),
            [&](uint32_t number, void* record) { return command(watch, number, record); });
        EXPECT_EQ(whole.result, plain.result);
        EXPECT_EQ(whole.record, plain.record);
        EXPECT_EQ(whole.calls, without_prints(plain.calls));
        EXPECT_EQ(whole.files, plain.files);
        EXPECT_EQ(whole.devices, plain.devices);
        EXPECT_EQ(console, plain.console);
        EXPECT_EQ(whole.console, "");
        EXPECT_EQ(held, 0U);
        if (watch.trace) {
            expect_shown(whole.calls, plain.console);
        }
        EXPECT_EQ(trace.empty(), !watch.trace || plain.calls.empty());
        EXPECT_TRUE(watch.listener || told.empty());
    }

    // A line for each call, in order; and each line that was printed.
    void expect_shown(const Trace& calls, const std::string& printed)
    {
        size_t next = 0;
        size_t answer = 0;
        std::string shown;
        for (const std::string& text : timeless(trace)) {
            SCOPED_TRACE(text);
            const Line line = line_parse(text);
            if (line.name == "puts") {
                shown += unquoted(line.arguments) + "\n";
                continue;
            }
            ASSERT_LT(next, calls.size());
            std::string call = calls[next++];
            const std::string failed = " -> failed";
            const bool fails =
                call.size() > failed.size() && call.substr(call.size() - failed.size()) == failed;
            call.resize(call.size() - (fails ? failed.size() : 0));
            const bool can_fail = line.name != "sleep" && line.name != "usleep";
            EXPECT_EQ(line.result.find(" EIO") != std::string::npos, fails && can_fail);
            if (line.name == "ioctl") {
                expect_request(line, call, answer);
            } else if (line.name == "fprintf" && fails) {
                EXPECT_EQ(line.result, "-1 EIO");
            } else {
                EXPECT_EQ(board_text(line), call);
            }
        }
        EXPECT_EQ(next, calls.size());
        EXPECT_EQ(answer, told.size());
        EXPECT_EQ(shown, printed);
    }

    // A request against the board's line, and its answer against what the listener was told.
    void expect_request(const Line& line, const std::string& call, size_t& answer)
    {
        std::vector<std::string> words = split(call, " "); // ioctl [PATH] NUMBER BYTES
        std::string path = "/dev/fpga";
        if (words.at(1).front() == '/' || words[1].front() == '(') {
            path = words[1];
            words.erase(words.begin() + 1);
        }
        const auto number = static_cast<uint32_t>(std::stoul(words[1], nullptr, 16));
        const RequestDescription* request = request_find(number);
        ASSERT_NE(request, nullptr);
        std::vector<std::string> pieces = split(line.arguments, ", ");
        if (path == "(closed)") {
            EXPECT_EQ(pieces.at(0).find_first_not_of("0123456789"), std::string::npos);
        } else {
            EXPECT_EQ(pieces.at(0), path);
        }
        char name[80];
        snprintf(name, sizeof name, "0x%04X %s%s", number, request->name, request_verb(*request));
        EXPECT_EQ(pieces.at(1), name);
        const std::string given = pieces.size() > 2 ? pieces[2] : "";
        Bytes record;
        if (request->argument == RequestArgument::kRecord) {
            for (size_t i = 2; i < words.size(); ++i) {
                record += byte(static_cast<uint32_t>(std::stoul(words[i], nullptr, 16)));
            }
            expect_fields(given, *request, record, false);
        } else if (request->argument == RequestArgument::kValue) {
            EXPECT_EQ(std::stoul(given, nullptr, 16),
                      std::stoul(words.at(2).substr(1), nullptr, 16));
        } else {
            EXPECT_EQ(given, "");
        }
        if (path == "(closed)") {
            EXPECT_EQ(line.result, "-1 EBADF");
            return;
        }
        ASSERT_LT(answer, told.size());
        const Told& answered = told[answer++];
        EXPECT_EQ(answered.device, path);
        EXPECT_EQ(answered.request, number);
        EXPECT_EQ(answered.before, record);
        EXPECT_EQ(answered.after.size(), record.size());
        EXPECT_EQ(answered.value, request->argument == RequestArgument::kValue
                                      ? std::stoul(given, nullptr, 16)
                                      : 0);
        const size_t comma = line.result.find(", ");
        EXPECT_EQ(std::stol(line.result), answered.result);
        EXPECT_EQ(answered.error, line.result.find("EIO") != std::string::npos ? EIO : 0);
        const bool filled = answered.result >= 0 && !record.empty();
        expect_fields(comma == std::string::npos ? "" : line.result.substr(comma + 2), *request,
                      filled ? answered.after : zeros(record.size()), true);
    }
};

TEST_F(LibraryCallsAlike, WhateverIsAskedOfTheLayer)
{
    size_t count = 0;
    size_t trials = 0;
    const auto check = [&](const Trial& trial, size_t failing) {
        SCOPED_TRACE(command_name(trial.command) + " call " + std::to_string(failing));
        const Whole plain = whole_make(trial, failing, plain_Fpga_Register_Set);
        const Whole unset = whole_make(trial, failing, Fpga_Register_Set);
        EXPECT_EQ(unset.result, plain.result);
        EXPECT_EQ(unset.record, plain.record);
        EXPECT_EQ(unset.calls, plain.calls);
        EXPECT_EQ(unset.console, plain.console);
        EXPECT_EQ(unset.files, plain.files);
        EXPECT_EQ(unset.devices, plain.devices);
        // What is printed is no call of the board's any more, and cannot fail there.
        if (failing != 0 && prints(plain.calls[failing - 1])) {
            return;
        }
        // One of the two that show nothing, in turns; each with calls that fail, too.
        expect_alike(trial, plain, failing, {.listener = count / 2 % 2 != 0});
        expect_alike(trial, plain, failing, {.trace = true, .listener = true});
        ++count;
    };
    walk([&](const Trial& trial, const Outcome& /*outcome*/) {
        if (HasFailure() || trials++ % kLoopShare.roundsPerRound != 0) {
            return;
        }
        const size_t calls = board.calls.size();
        check(trial, 0);
        if (calls > 0 && !HasFailure()) {
            check(trial, 1 + count % calls);
        }
    });
    EXPECT_GT(count, 1500U / kLoopShare.roundsPerRound);
}

} // namespace
