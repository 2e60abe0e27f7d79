// The decision at boot: keep, rebuild or recreate the working system log.
#include <sys/stat.h>
#include <unistd.h>

#include "log/system_log_layout.h"
#include "maint/maintlog.h"

namespace
{

bool workingFile_check()
{
    struct stat status;
    if (stat(kSystemLogPath, &status) != 0) {
        report_message(LOG_SINK_CONSOLE, "zev_maintlog_init : 004 : Cold Start!!");
        return false;
    }
    report_message(LOG_SINK_CONSOLE, "zev_maintlog_init : 001 : Warm Start!!");

    SystemLogHeader header;
    if (zev_maintlog_head_read(&header) != 0) {
        report_message(LOG_SINK_CONSOLE, "zev_maintlog_init : 002 : maintlog header read error");
        return false;
    }
    if (header.number > SYSTEM_LOG_SLOTS || header.location > SYSTEM_LOG_SLOTS) {
        // The wording of 002; the number tells the two apart.
        report_message(LOG_SINK_CONSOLE, "zev_maintlog_init : 003 : maintlog header read error");
        return false;
    }
    return true;
}

// Reports before the caller creates the empty log, so that 005 and 006 find no file to append to
// and show on the console alone.
bool workingFile_rebuild()
{
    SystemLogHeader header;
    if (read_systemlog_header(&header) < 0) {
        report_message(LOG_SINK_BOTH, "zev_maintlog_init : 005 : read_systemlog_header error");
        return false;
    }
    if (header.seq_num == SYSTEM_LOG_SEQ_ERASED) {
        report_message(LOG_SINK_BOTH, "zev_maintlog_init : 006 : syslog init");
        return false;
    }
    if (systemLogFileMake() != 0) {
        report_message(LOG_SINK_BOTH, "zev_maintlog_init : 007 : systemlog init");
        return false;
    }
    return true;
}

} // namespace

int32_t zev_maintlog_init()
{
    if (workingFile_check()) {
        return 0;
    }
    unlink(kSystemLogPath);
    return workingFile_rebuild() ? 0 : systemLogFileInit();
}
