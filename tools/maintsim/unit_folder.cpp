#include "tools/maintsim/unit_folder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>

#include "sim/new_unit.h"
#include "sim/state_text.h"
#include "tools/maintsim/files.h"
#include "tools/maintsim/snapshot.h"
#include "tools/maintsim/unit_tool.h"
#include "tools/sample_image.h"

namespace fs = std::filesystem;

namespace
{

constexpr unsigned kSampleRecords = 640;
constexpr size_t kErasedSize = 100012; // a header and 1000 records
constexpr int64_t kSecond = 1000000000;
constexpr int64_t kSecondsLimit =
    INT64_MAX / kSecond - int64_t{30} * 365 * 24 * 3600; // the kernel's

// Files under /tmp that the unit's own start makes anew.
constexpr const char* kMadeAtStart[] = {"serialno", "ks8995_nor.dat", "ks8995_pri.dat"};

bool fail(std::string& error, const std::string& path)
{
    error = path_shown(path) + ": " + strerror(errno);
    return false;
}

bool copy(const std::string& from, const std::string& to, std::string& error)
{
    std::string text;
    if (!file_read(from, text)) {
        return fail(error, from);
    }
    return file_replace(to, text) || fail(error, to);
}

bool files_make(const std::string& files, std::string& error)
{
    for (const auto& [path, bytes] : newUnit_files()) {
        if (!file_replace(files + path, bytes)) {
            return fail(error, files + path);
        }
    }
    return true;
}

bool flash_make(const std::string& path, const NewUnit& choice, std::string& error)
{
    if (!choice.image.empty()) {
        return copy(choice.image, path, error);
    }
    if (choice.blank) {
        return file_replace(path, std::string(kErasedSize, '\xFF')) || fail(error, path);
    }
    return sampleImage_write(path.c_str(), kSampleRecords, 1) == 0 || fail(error, path);
}

RtcTime local_time()
{
    const time_t now = machine_time() / kSecond;
    tm local{};
    localtime_r(&now, &local);
    return {local.tm_sec,  local.tm_min,  local.tm_hour,
            local.tm_mday, local.tm_mon,  local.tm_year,
            local.tm_wday, local.tm_yday, 0};
}

// Takes over what the snapshot tells; the other files are a new unit's.
bool snapshot_take(const std::string& path, const std::string& files, UnitState& state,
                   std::string& error)
{
    std::string text;
    if (!file_read(path, text)) {
        return fail(error, path);
    }
    Snapshot snapshot;
    if (!snapshot_parse(text, snapshot, error)) {
        error.insert(0, path_shown(path) + ": ");
        return false;
    }
    for (const auto& [name, bytes] : snapshot.files) {
        if (!file_replace(files + name, bytes)) {
            return fail(error, files + name);
        }
    }
    for (const std::string& name : snapshot.missing) {
        std::error_code code;
        fs::remove(files + name, code);
    }
    for (const auto& [request, count] : snapshot.partly) {
        fprintf(stderr,
                "maintsim: note: request 0x%04X failed for %zu of its indexes; here it does not\n",
                request, count);
    }
    state = std::move(snapshot.state);
    return true;
}

bool content_make(const std::string& folder, const NewUnit& choice, std::string& error)
{
    UnitState state;
    if (!choice.blank) {
        newUnit_put(state, local_time(), machine_time());
    }
    const std::string files = folder + "/files";
    for (const char* part : {"", "/conf", "/tmp", "/dev"}) {
        std::error_code code;
        if (!fs::create_directory(files + part, code)) {
            error = path_shown(files + part) + ": " + code.message();
            return false;
        }
    }
    if (!flash_make(files + "/dev/mtd_systemlog", choice, error) ||
        (!choice.blank && !files_make(files, error)) ||
        (!choice.snapshot.empty() && !snapshot_take(choice.snapshot, files, state, error)) ||
        (!choice.config.empty() && !copy(choice.config, files + "/conf/config", error))) {
        return false;
    }
    return unit_create(folder, state, error) &&
           (file_replace(folder + "/made", stateText_make(state)) || fail(error, folder + "/made"));
}

// What the devices were made with.
bool made_read(const std::string& folder, UnitState& state, std::string& error)
{
    const std::string path = folder + "/made";
    std::string text;
    if (!file_read(path, text)) {
        return fail(error, path);
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t length = std::min(rest.find('\n'), rest.size());
        if (!stateText_put(state, rest.substr(0, length), 0, error)) {
            error.insert(0, ": damaged: ").insert(0, path_shown(path));
            return false;
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return true;
}

// The devices without what a tester put into them to see what then happens.
void fpga_restore(FpgaModel& fpga, FpgaModel made)
{
    made.results = std::move(fpga.results);
    made.filled = std::move(fpga.filled);
    made.fills_when_failing = fpga.fills_when_failing;
    fpga = std::move(made);
}

// The unit's clock holds the local time. One that shows no time of the calendar, or one that no kernel
// takes, leaves the system clock as the machine's.
int64_t clock_difference(const UnitState& state, int64_t now)
{
    const RtcTime time = unitState_rtcTime(state, now);
    int64_t checked = 0;
    if (!rtcTime_seconds(time, checked)) {
        return 0;
    }
    tm local{};
    local.tm_sec = time[0];
    local.tm_min = time[1];
    local.tm_hour = time[2];
    local.tm_mday = time[3];
    local.tm_mon = time[4];
    local.tm_year = time[5];
    local.tm_isdst = -1;
    const int64_t seconds = mktime(&local);
    return seconds < 0 || seconds >= kSecondsLimit ? 0 : (seconds - now / kSecond) * kSecond;
}

bool volatile_remove(const std::string& files, std::string& error)
{
    std::error_code code;
    for (const fs::directory_entry& entry : fs::directory_iterator(files + "/tmp", code)) {
        const std::string name = entry.path().filename();
        if (std::ranges::find(kMadeAtStart, name) == std::end(kMadeAtStart)) {
            fs::remove_all(entry.path(), code);
        }
        if (code) {
            break;
        }
    }
    if (!code) {
        fs::remove(files + "/conf/system.log", code);
    }
    if (code) {
        error = path_shown(files) + ": " + code.message();
    }
    return !code;
}

} // namespace

bool unitFolder_make(const std::string& folder, const NewUnit& choice, std::string& error)
{
    std::string path = folder;
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    const std::string shown = path_shown(path);
    std::error_code code;
    if (fs::exists(path, code) && !(fs::is_directory(path, code) && fs::is_empty(path, code))) {
        error = shown + ": exists already";
        return false;
    }
    const std::string beside = path + ".new-" + std::to_string(getpid());
    if (!fs::create_directory(beside, code)) {
        error = shown + ": " + (code ? code.message() : "exists already");
        return false;
    }
    const bool made = content_make(beside, choice, error);
    if (made && rename(beside.c_str(), path.c_str()) == 0) {
        return true;
    }
    if (made) {
        error = shown + ": " +
                (errno == ENOTEMPTY || errno == EEXIST ? "exists already" : strerror(errno));
    }
    fs::remove_all(beside, code);
    // Nobody has heard of the folder beside.
    const std::string beside_shown = path_shown(beside);
    if (const size_t at = error.find(beside_shown); at != std::string::npos) {
        error.replace(at, beside_shown.size(), shown);
    }
    return false;
}

bool unit_restart(Unit* unit, const std::string& folder, Restart kind, std::string& error)
{
    UnitState made;
    const bool cycle = kind == Restart::kPowerCycle;
    if (cycle && !made_read(folder, made, error)) {
        return false;
    }
    const auto change = [&](UnitState& state, int64_t now, std::string&) {
        if (cycle) {
            fpga_restore(state.fpga, std::move(made.fpga));
        }
        state.clock_difference = clock_difference(state, now);
        return true;
    };
    // Files only after the state: if that cannot be written, nothing is lost.
    return unit_change(unit, cycle ? "power-cycle" : "warm-restart", change, error) &&
           (!cycle || volatile_remove(folder + "/files", error));
}
