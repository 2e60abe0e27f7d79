// Stand in for the verbs until status.cpp, panel.cpp and snapshot.cpp are here.
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/session.h"

int status_show(const Session& session)
{
    fputs("maintctl: not there yet\n", session.err);
    return kExitUsage;
}

int panel_show(const Session& session)
{
    return status_show(session);
}

int snapshot_make(const Session& session)
{
    return status_show(session);
}
