// maintlogfile: runs once at boot, before anything writes to the system log.
#include <cstdio>

#include "maint/maintlog.h"

// The exit status is that of the last console write, not of the restore.
int main()
{
    puts("maintlogfile --> FROM Read Sart!!");
    zev_maintlog_init();
    return puts("maintlogfile --> FROM Read End!!");
}
