// Where a path leads: into the unit, or to the machine.
#pragma once

#include <fcntl.h>

#include <climits>
#include <cstdint>

enum class Leads : uint8_t { kElsewhere, kFile, kFpga, kRtc };

// What is called instead of a path: `folder` and `path` as openat() takes them. An other path stays as
// it is, letter for letter. Symbolic links are the kernel's to follow: a link to /conf made outside
// leads to the machine's.
//
// A name in the folder where the program stands is the kernel's to find, in the unit, too: only a way
// that is looked at closely says of such a name that it is the unit's.
enum class Look : uint8_t { kPlain, kClose };

class Way
{
  public:
    explicit Way(const char* given, Look look = Look::kPlain) : Way(AT_FDCWD, given, look) {}
    Way(int given_folder, const char* given, Look look = Look::kPlain);
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
// DIR/files/conf/config is /conf/config. Changes the name in place; false: it is no such place.
bool unitName_restore(char* name);
