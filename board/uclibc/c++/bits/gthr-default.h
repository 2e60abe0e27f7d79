// The C library has no threads.
#pragma GCC system_header
#include <bits/gthr-single.h>
