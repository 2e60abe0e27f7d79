#include "tools/maintsim/preload_paths.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

#include "tools/maintsim/preload.h"

namespace
{

struct Entry {
    std::string_view name;
    Leads leads;
};

// All that is the unit's: a file, or a folder with everything under it.
constexpr Entry kEntries[] = {
    {"/conf", Leads::kFile},
    {"/dev/fpga", Leads::kFpga},
    {"/dev/rtc", Leads::kRtc},
    {"/dev/mtd_systemlog", Leads::kFile},
    {"/tmp/Saveing", Leads::kFile},
    {"/tmp/flashsave", Leads::kFile},
    {"/tmp/led_rewrite_inh", Leads::kFile},
    {"/tmp/mtu_datasize", Leads::kFile},
    {"/tmp/serialno", Leads::kFile},
    {"/tmp/vornapppoe.mtu", Leads::kFile},
    {"/tmp/ks8995_nor.dat", Leads::kFile},
    {"/tmp/ks8995_pri.dat", Leads::kFile},
};

constexpr std::string_view kFiles = "/files";

// Longer than any path that the kernel takes: it answers what it would to the whole name.
constexpr size_t kTooLong = PATH_MAX + 2;
struct TooLong {
    char name[kTooLong];
    constexpr TooLong() : name() { std::fill(name, name + kTooLong - 1, 'x'); }
};
constexpr TooLong kNameTooLong;

Leads leads_find(std::string_view name)
{
    for (const Entry& entry : kEntries) {
        if (name.starts_with(entry.name) &&
            (name.size() == entry.name.size() || name[entry.name.size()] == '/')) {
            return entry.leads;
        }
    }
    return Leads::kElsewhere;
}

// The next component of a path, which begins behind it then; empty at its end.
std::string_view component_next(const char*& path)
{
    while (*path == '/') {
        path++;
    }
    const char* begin = path;
    while (*path != '\0' && *path != '/') {
        path++;
    }
    return {begin, static_cast<size_t>(path - begin)};
}

// A component of an entry: "conf" and "serialno", but not "con".
bool component_known(std::string_view component)
{
    return std::any_of(std::begin(kEntries), std::end(kEntries), [=](const Entry& entry) {
        const std::string_view name = entry.name.substr(1);
        const size_t slash = name.find('/');
        return component == name.substr(0, slash) ||
               (slash != std::string_view::npos && component == name.substr(slash + 1));
    });
}

// Most paths are settled by this: no component leads up, and the first one is none of ours.
bool may_lead(const char* path)
{
    std::string_view component;
    bool first = true;
    while (!(component = component_next(path)).empty()) {
        if (component == ".." || (first && component_known(component))) {
            return true;
        }
        first = first && component == ".";
    }
    return false;
}

// A normal absolute name: no "." and "..", no slash at its end. The root itself is empty.
class Name
{
  public:
    [[nodiscard]] std::string_view text() const { return {text_, length_}; }

    // The name of a descriptor's folder, or of the current folder. False: it cannot be told.
    bool of_folder(int folder)
    {
        return folder == AT_FDCWD ? syscall(SYS_getcwd, text_, sizeof text_) > 0 && taken()
                                  : of_descriptor(folder);
    }

    bool of_descriptor(int descriptor)
    {
        char link[32];
        snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
        const ssize_t size = syscall(SYS_readlinkat, AT_FDCWD, link, text_, sizeof text_ - 1);
        if (size <= 0) {
            return false;
        }
        text_[size] = '\0';
        return taken();
    }

    // False: it would be too long.
    bool append(std::string_view component)
    {
        if (length_ + 1 + component.size() >= sizeof text_) {
            return false;
        }
        text_[length_] = '/';
        memcpy(text_ + length_ + 1, component.data(), component.size());
        length_ += 1 + component.size();
        text_[length_] = '\0';
        settled_ = false;
        return true;
    }

    // ".." is the folder above the one that a symbolic link leads to, not above the link. False: the
    // folder is not there, or is none.
    bool up()
    {
        if (!settled_ && !settle()) {
            return false;
        }
        of_unit_ = of_unit_ || leads_find(text()) != Leads::kElsewhere;
        while (length_ > 0 && text_[--length_] != '/') {
        }
        text_[length_] = '\0';
        return true;
    }

    // Whether a folder of the unit is on the way: the kernel knows it by another name.
    [[nodiscard]] bool of_unit() const { return of_unit_; }

  private:
    bool taken()
    {
        of_unit_ = unitName_restore(text_);
        length_ = strlen(text_);
        if (text_[0] != '/') { // "(unreachable)", a pipe
            return false;
        }
        if (length_ == 1) {
            text_[length_ = 0] = '\0';
        }
        settled_ = true;
        return true;
    }

    bool settle()
    {
        const bool of_unit = of_unit_;
        // The new way is of /conf or the machine's: neither has a ".." left.
        const int folder = open_folder();
        const bool found = folder >= 0 && of_descriptor(folder);
        if (folder >= 0) {
            syscall(SYS_close, folder);
        }
        of_unit_ = of_unit;
        return found;
    }

    [[nodiscard]] int open_folder() const
    {
        constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
        if (leads_find(text()) == Leads::kElsewhere) {
            return static_cast<int>(
                syscall(SYS_openat, AT_FDCWD, length_ == 0 ? "/" : text_, kFlags, 0));
        }
        char place[PATH_MAX];
        const int size =
            snprintf(place, sizeof place, "%s%s%s", sim_folder(), kFiles.data(), text_);
        return size < 0 || static_cast<size_t>(size) >= sizeof place
                   ? -1
                   : static_cast<int>(syscall(SYS_openat, AT_FDCWD, place, kFlags, 0));
    }

    char text_[PATH_MAX] = "";
    size_t length_ = 0;
    bool settled_ = true;
    bool of_unit_ = false;
};

} // namespace

bool unitName_restore(char* name)
{
    const std::string_view folder = sim_folder();
    const std::string_view text = name;
    if (folder.empty() || !text.starts_with(folder) ||
        !text.substr(folder.size()).starts_with(kFiles)) {
        return false;
    }
    const size_t begin = folder.size() + kFiles.size();
    if (leads_find(text.substr(begin)) == Leads::kElsewhere) {
        return false;
    }
    memmove(name, name + begin, text.size() - begin + 1);
    return true;
}

// The buffer is written only where it is used: NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
Way::Way(int given_folder, const char* given, Look look) : folder(given_folder), path(given)
{
    if (sim_inside || given == nullptr || *given == '\0' || sim_folder()[0] == '\0' ||
        (look == Look::kPlain && !may_lead(given))) {
        return;
    }
    const ErrnoKept kept;
    const Inside inside;
    Name name;
    if (given[0] != '/' && !name.of_folder(given_folder)) {
        return;
    }
    const char* rest = given;
    std::string_view component;
    bool up = false;
    bool found = true;
    while (!(component = component_next(rest)).empty()) {
        if (component == ".") {
            continue;
        }
        if (component == "..") {
            up = true;
            if (!name.up()) { // the kernel finds out, too: it gets the folder and what is left
                rest -= component.size();
                found = false;
                break;
            }
        } else if (!name.append(component)) {
            path = kNameTooLong.name;
            return;
        }
    }
    leads = leads_find(name.text());
    // From a folder of the unit, ".." may lead to the machine's: only the whole name does that.
    if (leads == Leads::kElsewhere && !(up && name.of_unit())) {
        return;
    }
    const std::string_view text = name.text();
    const char* end = found ? (given[strlen(given) - 1] == '/' || text.empty() ? "/" : "") : "/";
    const int size = snprintf(buffer_, sizeof buffer_, "%s%s%.*s%s%s", unit() ? sim_folder() : "",
                              unit() ? kFiles.data() : "", static_cast<int>(text.size()),
                              text.data(), end, rest);
    folder = AT_FDCWD;
    path = size < 0 || static_cast<size_t>(size) >= sizeof buffer_ ? kNameTooLong.name : buffer_;
}
