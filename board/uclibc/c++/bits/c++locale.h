// The C locale alone: the one that comes with the headers uses calls that uClibc lacks.
#ifndef _GLIBCXX_CXX_LOCALE_H
#define _GLIBCXX_CXX_LOCALE_H 1
#pragma GCC system_header

#include <clocale>
#include <cstdarg>
#include <cstdio>

#define _GLIBCXX_NUM_CATEGORIES 0

namespace std
{

typedef int* __c_locale;

inline int __convert_from_v(const __c_locale&, char* out, int size, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int length = vsnprintf(out, size, format, values);
    va_end(values);
    return length;
}

} // namespace std
#endif
