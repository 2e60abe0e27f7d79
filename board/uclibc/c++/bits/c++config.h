// The C++ library's headers are configured for another C library. Takes back what uClibc lacks.
#pragma GCC system_header
#include_next <bits/c++config.h>
#undef _GLIBCXX_HAS_GTHREADS
#undef _GLIBCXX_HAVE_AT_QUICK_EXIT
#undef _GLIBCXX_HAVE_QUICK_EXIT
#undef _GLIBCXX_HAVE_TIMESPEC_GET
