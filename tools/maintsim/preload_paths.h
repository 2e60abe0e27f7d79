// Where a path leads: into the unit, or to the machine.
#pragma once

#include <fcntl.h>

#include <climits>
#include <cstdint>

enum class Leads : uint8_t { kElsewhere, kFile, kFpga, kRtc };

// What is called instead of a path: `folder` and `path` as openat() takes them. An other path stays as
// it is, letter for letter. Symbolic links are the kernel's to follow: a link to /conf made outside
// leads to the machine's.
class Way
{
  public:
    explicit Way(const char* given) : Way(AT_FDCWD, given) {}
    Way(int given_folder, const char* given);
    Way(const Way&) = delete;
    Way& operator=(const Way&) = delete;

    [[nodiscard]] bool device() const { return leads == Leads::kFpga || leads == Leads::kRtc; }
    // Within the unit, be it a file or a device.
    [[nodiscard]] bool unit() const { return leads != Leads::kElsewhere; }

    int folder;
    const char* path;
    Leads leads = Leads::kElsewhere;

  private:
    char buffer_[PATH_MAX]; // holds `path` where it is another than the one given
};

// The name by which the unit's programs know a file, from its place in the unit's folder:
// DIR/root/conf/config is /conf/config. Changes the name in place; false: it is no such place.
bool unitName_restore(char* name);
