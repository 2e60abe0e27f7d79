// maintsim: programs on a simulated unit.
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include <dlfcn.h>

#include "sim/state_text.h"
#include "tools/maintsim/files.h"
#include "tools/maintsim/launch.h"
#include "tools/maintsim/verbs.h"

namespace
{

constexpr char kHelp[] = R"(NAME
    maintsim - a simulated unit

SYNOPSIS
    maintsim [-u DIR] PROGRAM [ARG...]
    maintsim -u DIR new | show | set | fail | calls |
                    power-cycle | warm-restart ...

DESCRIPTION
    Runs a program on a simulated unit: /dev/fpga, /dev/rtc, /dev/mtd_systemlog,
    /conf and the unit's own files in /tmp lead into the folder DIR. It needs no
    rights, and no program has to be built for it; but it must be linked
    dynamically. Without -u, it runs on a new unit that is gone afterwards: it
    stands in the folder that TMPDIR names, or in /tmp.
    Several programs at once can use one unit.

    new           makes a unit              show   the state of its devices
    set           changes the state         fail   lets requests fail
    calls         what the devices were asked
    power-cycle   takes the power away and gives it back
    warm-restart  starts the unit's programs anew

    `maintsim VERB --help` tells more of each. `maintsim -- PROGRAM` runs a
    program that has the name of one of them.

OPTIONS
    -u, --unit DIR   the unit's folder
    -h, --help       this text
    -V, --version    the version

EXIT STATUS
    That of the program. 64 for a wrong call of maintsim, 126 for a program that
    cannot run on a unit, 127 for one that is not there, 1 for any other failure
    of maintsim.

EXAMPLES
    maintsim maintctl status
    maintsim -u unit new
    maintsim -u unit maintlogfile
    maintsim -u unit set phy.3.1=0x7809
    maintsim -u unit cat /conf/system.log
)";

bool either(const char* word, const char* one, const char* other)
{
    return strcmp(word, one) == 0 || strcmp(word, other) == 0;
}

int text_say(const char* text)
{
    fputs(text, stdout);
    return fflush(stdout) == 0 ? kDone : failure("standard output cannot be written");
}

int verb_run(const Verb& verb, const std::string& folder, Words words)
{
    for (const char* word : words) {
        if (either(word, "-h", "--help")) {
            return text_say(verb.help);
        }
    }
    if (folder.empty()) {
        return wrong_call(std::string(verb.name) + " needs a unit: -u DIR");
    }
    // A limit on the size of files is a failure to tell of, and no end in the middle.
    signal(SIGXFSZ, SIG_IGN);
    return verb.run(folder, words);
}

// On a unit, maintsim is a program as any other; but what it keeps of a unit, the same one or another,
// has the machine's time.
void machineTime_find()
{
    void* const library = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    void* const found = library == nullptr ? nullptr : dlsym(library, "clock_gettime");
    if (found != nullptr) {
        machineClock_use(reinterpret_cast<int (*)(clockid_t, timespec*)>(found)); // NOLINT: POSIX
    }
}

} // namespace

int main(int argc, char** argv)
{
    machineTime_find();
    std::string folder;
    int at = 1;
    bool program = false; // whatever its name is
    for (; at < argc && argv[at][0] == '-' && !program; ++at) {
        const std::string word = argv[at];
        if (either(argv[at], "-h", "--help")) {
            return text_say(kHelp);
        }
        if (either(argv[at], "-V", "--version")) {
            return text_say("maintsim " MAINT_VERSION "\n");
        }
        const bool apart = either(argv[at], "-u", "--unit");
        // What the folder begins behind, in "--unit=DIR" and "-uDIR".
        const size_t joined = word.starts_with("--unit=") ? strlen("--unit=")
                              : word.starts_with("-u")    ? strlen("-u")
                                                          : 0;
        if (word == "--") {
            program = true;
        } else if (apart || joined > 0) {
            if (!folder.empty()) {
                return wrong_call("-u is given twice");
            }
            if (!apart) {
                folder = word.substr(joined);
            } else if (at + 1 < argc) {
                folder = argv[++at];
            }
            if (folder.empty()) {
                return wrong_call("-u needs a folder");
            }
        } else {
            return wrong_call("no such option: " + text_shown(word));
        }
    }
    if (at == argc) {
        return wrong_call("a program or a verb is missing; --help tells more");
    }
    const Verb* verb = program ? nullptr : verb_find(argv[at]);
    if (verb != nullptr) {
        return verb_run(*verb, folder, {argv + at + 1, static_cast<size_t>(argc - at - 1)});
    }
    return launch(folder, argv + at);
}
