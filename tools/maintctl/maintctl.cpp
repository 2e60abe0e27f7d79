#include "tools/maintctl/maintctl.h"

#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/library_calls.h"

int maintctl_run(int /*argc*/, char* const* /*argv*/, FILE* /*out*/, FILE* err)
{
    const LibraryCalls calls{.console = err};
    libraryCalls_set(&calls);
    return kExitUsage;
}
