// Folders that are no whole unit, and disks that are full: the program says it in one line, ends with 1,
// and leaves everything as it was.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

#include "sim/device_state.h"
#include "sim/units.h"

namespace fs = std::filesystem;

namespace
{

// Every use of a unit that is there.
const Words kUses[] = {{"/bin/true"},      {"show"},        {"set", "word.0x6B29=2"},
                       {"fail", "0x6B42"}, {"calls"},       {"calls", "--json"},
                       {"power-cycle"},    {"warm-restart"}};

UnitState any_state()
{
    UnitState state;
    deviceState_put(1, state.fpga, state.rtc);
    return state;
}

// A unit whose journal has a call.
std::string unit_make(const Units& units, const std::string& name)
{
    std::string folder = units.make(name, any_state());
    const Ended set = program_run(units, on_unit(folder, {"set", "word.0x6B29=3"}));
    EXPECT_EQ(set.status, 0) << set.err;
    bytes_put(folder + "/files/tmp/led_rewrite_inh", "x");
    bytes_put(folder + "/files/conf/system.log", "log");
    return folder;
}

// A folder without what the lock of a journal is: whoever looks at a unit takes it.
std::map<std::string, std::string> content_get(const std::string& folder)
{
    std::map<std::string, std::string> content =
        fs::is_directory(folder) ? folder_get(folder) : std::map<std::string, std::string>{};
    const auto journal = content.find(folder + "/journal");
    if (journal != content.end() && journal->second.size() > 4096) {
        const size_t head = journal->second.find("maintsim-journ");
        if (head != std::string::npos) {
            journal->second.replace(head + 24, 104, "");
            journal->second.replace(head + 32, 4096 - 24 - 104 - 8, "");
        }
    }
    return content;
}

void expect_oneLine(const Ended& ended, const std::string& begin)
{
    EXPECT_TRUE(WIFEXITED(ended.status) && WEXITSTATUS(ended.status) == 1) << ended.status;
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
    EXPECT_TRUE(!ended.err.empty() && ended.err.back() == '\n') << ended.err;
    EXPECT_EQ(ended.err.substr(0, begin.size()), begin);
}

struct Damage {
    const char* name;
    const char* says; // behind the folder's name
    std::function<void(const std::string& folder)> make;
};

void bytes_change(const std::string& path, size_t at, char to)
{
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(pwrite(file, &to, 1, static_cast<off_t>(at)), 1);
    close(file);
}

void text_change(const std::string& path, const std::string& from, const std::string& to)
{
    std::string text = bytes_get(path);
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << path;
    bytes_put(path, text.replace(at, from.size(), to));
}

const Damage kDamages[] = {
    {"missing", ": no simulated unit; `new` makes one", [](const auto& f) { fs::remove_all(f); }},
    {"empty", ": no simulated unit; `new` makes one",
     [](const auto& f) {
         fs::remove_all(f);
         fs::create_directory(f);
     }},
    {"a file", "/unit: Not a directory",
     [](const auto& f) {
         fs::remove_all(f);
         bytes_put(f, "text");
     }},
    {"unit 2", ": a unit of another version: maintsim unit 2",
     [](const auto& f) { bytes_put(f + "/unit", "maintsim unit 2\n"); }},
    {"another unit", ": not a simulated unit",
     [](const auto& f) { bytes_put(f + "/unit", "x\n"); }},
    {"state 2", "/state: of another version: maintsim state 2 generation",
     [](const auto& f) { text_change(f + "/state", "maintsim state 1", "maintsim state 2"); }},
    {"no state", "/state: No such file", [](const auto& f) { fs::remove(f + "/state"); }},
    {"empty state", "/state: not the state", [](const auto& f) { bytes_put(f + "/state", ""); }},
    {"half a state", "/state: damaged: ",
     [](const auto& f) { fs::resize_file(f + "/state", fs::file_size(f + "/state") / 2); }},
    {"no such item", "/state: damaged: line ",
     [](const auto& f) { text_change(f + "/state", "word.0x6B30", "wurd.0x6B30"); }},
    {"an item less", "/state: damaged: ",
     [](const auto& f) {
         const std::string text = bytes_get(f + "/state");
         const size_t at = text.find("word.0x6B30");
         bytes_put(f + "/state", text.substr(0, at) + text.substr(text.find('\n', at) + 1));
     }},
    {"old state", "/state: damaged: of generation 1, and the journal is of ",
     [](const auto& f) { text_change(f + "/state", "generation 2 ", "generation 1 "); }},
    {"state is a folder", "/state: Is a directory",
     [](const auto& f) {
         fs::remove(f + "/state");
         fs::create_directory(f + "/state");
     }},
    {"no journal", "/journal: No such file", [](const auto& f) { fs::remove(f + "/journal"); }},
    {"half a journal", "/journal: damaged: not a file of ",
     [](const auto& f) { fs::resize_file(f + "/journal", 4096 + 100); }},
    {"another file as journal", "/journal: not the journal",
     [](const auto& f) { bytes_change(f + "/journal", 0, 'x'); }},
    {"journal 2", "/journal: of version 2",
     [](const auto& f) { bytes_change(f + "/journal", 16, 2); }},
    {"damaged entry", "/journal: damaged: entry 2",
     [](const auto& f) { bytes_change(f + "/journal", 4096 + 96 + 60, '\x7F'); }},
    {"length of a journal", "/journal: damaged: its length is ",
     [](const auto& f) { bytes_change(f + "/journal", 131, '\x7F'); }},
};

TEST(Folder, ThatIsNoWholeUnitIsNamedInOneLineAndLeftAsItIs)
{
    const Units units;
    int number = 0;
    for (const Damage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        const std::string folder = unit_make(units, "unit" + std::to_string(++number));
        damage.make(folder);
        const auto before = content_get(folder);
        for (const Words& use : kUses) {
            SCOPED_TRACE(use[0]);
            expect_oneLine(program_run(units, on_unit(folder, use)),
                           "maintsim: " + folder + damage.says);
        }
        EXPECT_EQ(content_get(folder), before);
        fs::remove_all(folder);
    }
}

// The state is whole and can be looked at; but a program would find no device.
TEST(Folder, WithoutItsFilesRunsNoProgram)
{
    const Units units;
    const std::string folder = unit_make(units, "unit");
    fs::remove_all(folder + "/files");
    const auto before = content_get(folder);
    expect_oneLine(program_run(units, on_unit(folder, {"/bin/true"})),
                   "maintsim: " + folder + "/files/dev/fpga: No such file or directory\n");
    EXPECT_EQ(content_get(folder), before);
    EXPECT_EQ(program_run(units, on_unit(folder, {"show"})).status, 0);
    fs::create_directories(folder + "/files/dev/rtc");
    expect_oneLine(program_run(units, on_unit(folder, {"/bin/true"})),
                   "maintsim: " + folder + "/files/dev/rtc: ");
}

void user_become()
{
    // Root may write everywhere.
    if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) {
        _exit(125);
    }
}

TEST(Folder, ThatCannotBeWrittenIsNamedInOneLineAndLeftAsItIs)
{
    const Units units;
    if (program_run(units, {MAINTSIM, "--version"}, user_become).status != 0) {
        GTEST_SKIP() << "another user cannot run the programs here";
    }
    const std::string folder = unit_make(units, "unit");
    const auto writable = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        fs::permissions(entry.path(), writable, fs::perm_options::remove);
    }
    fs::permissions(folder, writable, fs::perm_options::remove);
    const auto before = content_get(folder);
    for (const Words& use : kUses) {
        SCOPED_TRACE(use[0]);
        expect_oneLine(program_run(units, on_unit(folder, use), user_become),
                       "maintsim: " + folder + "/journal: Permission denied");
    }
    const Ended made = program_run(units, on_unit(folder + "/below", {"new"}), user_become);
    expect_oneLine(made, "maintsim: " + folder + "/below: Permission denied");
    EXPECT_EQ(content_get(folder), before);
    fs::permissions(folder, fs::perms::owner_all);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        fs::permissions(entry.path(), fs::perms::owner_all);
    }
}

// A disk that is full, as far as a process can have one for itself: its files end here.
void disk_fill()
{
    const rlimit little{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &little);
}

TEST(Folder, OnAFullDiskIsNamedInOneLineAndLeftAsItIs)
{
    const Units units;
    const std::string fresh = units.place("fresh");
    expect_oneLine(program_run(units, on_unit(fresh, {"new"}), disk_fill), "maintsim: " + fresh);
    for (const auto& entry : fs::directory_iterator(units.place(""))) {
        EXPECT_TRUE(entry.path().filename() == "out" || entry.path().filename() == "err")
            << entry.path();
    }
    const std::string folder = units.place("unit");
    EXPECT_EQ(program_run(units, on_unit(folder, {"new"})).status, 0);
    bytes_put(folder + "/files/conf/system.log", "log");
    const auto before = content_get(folder);
    for (const char* verb : {"power-cycle", "warm-restart"}) {
        SCOPED_TRACE(verb);
        expect_oneLine(program_run(units, on_unit(folder, {verb}), disk_fill),
                       "maintsim: " + folder + ": File too large");
        EXPECT_EQ(content_get(folder), before);
    }
    // What has room is done all the same.
    const Ended read = program_run(units, on_unit(folder, {USER_PROGRAM, "read", "40"}), disk_fill);
    EXPECT_EQ(read.status, 0) << read.err;
    EXPECT_EQ(program_run(units, on_unit(folder, {"power-cycle"})).status, 0);
    EXPECT_FALSE(fs::exists(folder + "/files/conf/system.log"));
}

} // namespace
