// What the tests of maintctl's layer below the library start from: commands that run through it, and
// what it shows of them.
#pragma once

#include <sstream>

#include "device/device_trials.h"
#include "tools/maintctl/library_calls.h"

// How a command is run.
struct Watch {
    bool trace = false;
    bool dry_run = false;
    bool listener = false;
};

// What a listener was told of a request.
struct Told {
    std::string device;
    uint32_t request;
    Bytes before;
    Bytes after;
    uint32_t value;
    int32_t result;
    int error;
};

class LibraryCallsTest : public DeviceTrials
{
  protected:
    void TearDown() override
    {
        libraryCalls_set(nullptr);
        DeviceTrials::TearDown();
    }

    // Does some work with the layer set so; afterwards it is set to nothing.
    template <class Work> auto watched(const Watch& watch, const Work& work)
    {
        char* console_text = nullptr;
        char* trace_text = nullptr;
        size_t console_length = 0;
        size_t trace_length = 0;
        LibraryCalls calls{};
        calls.console = open_memstream(&console_text, &console_length);
        FILE* trace_file = open_memstream(&trace_text, &trace_length);
        calls.trace = watch.trace ? trace_file : nullptr;
        calls.dry_run = watch.dry_run;
        calls.answered = watch.listener ? listen : nullptr;
        calls.listener = this;
        told.clear();
        libraryCalls_set(&calls);
        const auto result = work();
        held = libraryCalls_held();
        libraryCalls_set(nullptr);
        fclose(calls.console);
        fclose(trace_file);
        console.assign(console_text, console_length);
        trace = lines_of(std::string(trace_text, trace_length));
        free(console_text);
        free(trace_text);
        return result;
    }

    int32_t command(const Watch& watch, DeviceCommandCode number, void* record)
    {
        return watched(watch, [=] { return Fpga_Register_Set(number, record); });
    }

    static Trace lines_of(const std::string& text)
    {
        Trace lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    // The lines without the microseconds that each must end with.
    static Trace timeless(const Trace& lines)
    {
        Trace left;
        for (const std::string& line : lines) {
            const size_t blanks = line.rfind("  ");
            const std::string time = blanks == std::string::npos ? "" : line.substr(blanks + 2);
            const size_t digits = time.find_first_not_of("0123456789");
            EXPECT_TRUE(digits > 0 && digits != std::string::npos && time.substr(digits) == " us")
                << line;
            left.push_back(line.substr(0, blanks));
        }
        return left;
    }

    // What the last work printed, showed, told and left undone.
    std::string console;
    Trace trace;
    std::vector<Told> told;
    unsigned held = 0;

  private:
    static void listen(void* listener, const AnsweredRequest& request)
    {
        const auto bytes = [&](const uint8_t* from) {
            return from == nullptr ? Bytes()
                                   : Bytes(reinterpret_cast<const char*>(from), request.size);
        };
        static_cast<LibraryCallsTest*>(listener)->told.push_back(
            {request.device, request.request, bytes(request.before), bytes(request.after),
             request.value, request.result, request.error});
    }
};

// The devices' whole state as text; what has only been read does not count.
std::string devices_text(const Board& board);
// Every file of the board, but for the empty one of the save lock.
std::map<std::string, Bytes> files_of(const Board& board);
