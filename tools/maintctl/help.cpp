#include "tools/maintctl/verbs.h"

#include "tools/maintctl/exit_status.h"

namespace
{

constexpr const char* kHelp =
    "maintctl - runs every device command of the unit by name\n"
    "\n"
    "  maintctl [OPTION...] COMMAND [FIELD=VALUE...]\n"
    "  maintctl [OPTION...] VERB [ARGUMENT]\n"
    "\n"
    "COMMAND is a name or a number: RD_BANDWIDTH, rd_bandwidth, 0x000A, 10.\n"
    "RD_ commands report, WR_ commands change something. Some changes stay set:\n"
    "'describe' says so. Options may stand anywhere; -- ends them.\n"
    "\n"
    "  maintctl RD_PHY_STATUS port=3\n"
    "  maintctl WR_RTC_TIME year=2026 month=5 day=31 hour=12\n"
    "\n"
    "VERBS\n"
    "  list [TEXT]       commands that have TEXT in name, number, group or summary\n"
    "                    $ maintctl list phy\n"
    "  describe COMMAND  fields, ranges, results, and what stays set\n"
    "                    $ maintctl describe WR_PHY_CONFIG\n"
    "  status            the unit on one screen\n"
    "                    $ maintctl -w 5 status\n"
    "  panel             the front panel as it shows\n"
    "                    $ maintctl panel\n"
    "  snapshot          all that can be read without changing anything, as JSON\n"
    "                    $ maintctl snapshot > unit.json\n"
    "                    Of /conf/config it takes the numbers of the keys that the\n"
    "                    commands use, and no passwords.\n"
    "  run [FILE]        runs the commands of FILE, one a line, up to the first that\n"
    "                    fails; - or no FILE: from the standard input. All lines are\n"
    "                    checked before the first runs. # begins a comment, quotes\n"
    "                    keep blanks.\n"
    "                    $ echo RD_RTC_TIME | maintctl run\n"
    "\n"
    "OPTIONS\n"
    "  -j, --json        one JSON object a line, also when a command fails\n"
    "                    $ maintctl -j RD_RTC_TIME\n"
    "  -t, --trace       shows on standard error every call that the library makes\n"
    "                    $ maintctl -t RD_PHY_STATUS port=1\n"
    "  -n, --dry-run     shows what would change a device, and does not do it; reads\n"
    "                    as usual. Not for commands that change a file other\n"
    "                    than a log.\n"
    "                    $ maintctl -n WR_PHY_CONFIG port=1 autoneg=1\n"
    "  -x, --hex         the record as bytes, in and out; @FILE takes them from a\n"
    "                    file. Bytes that are not given are zero.\n"
    "                    $ maintctl -x RD_PHY_STATUS record=03\n"
    "  -w, --watch S     again every S seconds (0.1 to 86400), what changed marked;\n"
    "                    Ctrl-C ends it. For reports, status and panel.\n"
    "                    $ maintctl -w 2 RD_PHY_STATUS port=3\n"
    "  -h, --help        this text\n"
    "                    $ maintctl -h | more\n"
    "  -V, --version     the version\n"
    "                    $ maintctl -V\n"
    "\n"
    "VALUES\n"
    "  number        10, or 0x000a; no sign, no 0 in front\n"
    "  flag          0 or 1, off or on\n"
    "  code          its name or its number; describe shows them\n"
    "  address       10.0.0.1; 02:00:00:00:00:01 or with -\n"
    "  text          as it stands; \\xNN is the byte NN, \\\\ a \\\n"
    "  bytes         pairs of hexadecimal digits: 0a00ff\n"
    "  elements      all: element=1,0,1; or one: element[1]=0\n"
    "A field that is not given is zero. group1.element can be written element where\n"
    "the command takes only one such field.\n"
    "\n"
    "OUTPUT\n"
    "A line FIELD=VALUE for each field that is reported. A result above 0 stands\n"
    "before them: result=1. Messages go to standard error.\n"
    "\n"
    "EXIT STATUS\n"
    "  0       done: the result is 0 or above\n"
    "  1 to 5  the result is -1 to -5; describe says what it means.\n"
    "          1 also: list has found nothing\n"
    "  64      wrong call; no device was opened\n"
    "  74      the output cannot be written\n"
    "\n"
    "ENVIRONMENT\n"
    "  NO_COLOR  not empty: no colours\n"
    "  TERM      dumb: no colours, and --watch does not redraw\n"
    "  TZ        time zone of the clock\n"
    "\n"
    "FILES\n"
    "  /dev/fpga, /dev/rtc; describe names the others that a command touches\n";

constexpr const char* kUsage =
    "usage: maintctl [-jtnx] [-w S] COMMAND [FIELD=VALUE...]\n"
    "       maintctl [OPTION...] list [TEXT] | describe COMMAND | status | panel |\n"
    "                            snapshot | run [FILE]\n"
    "maintctl -h says more.\n";

} // namespace

int help_show(const Session& session)
{
    fputs(kHelp, session.out);
    return 0;
}

int usage_show(FILE* file)
{
    fputs(kUsage, file);
    return kExitUsage;
}
