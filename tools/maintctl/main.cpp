#include "tools/maintctl/maintctl.h"

int main(int argc, char** argv)
{
    return maintctl_run(argc, argv, stdout, stderr);
}
