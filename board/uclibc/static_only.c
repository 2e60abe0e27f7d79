/* What the C library refers to but defines only where it is built as a shared library, too. Goes
   into libc.a. */

/* Set from the kernel's auxiliary vector at the start of a program. */
unsigned long _dl_pagesize = 4096;

/* The compiler's own helpers name these so that a program with unwind tables has the unwinder. None
   here has. */
void __aeabi_unwind_cpp_pr0(void);
void __aeabi_unwind_cpp_pr1(void);
void __aeabi_unwind_cpp_pr2(void);

void __attribute__((weak)) __aeabi_unwind_cpp_pr0(void) {}
void __attribute__((weak)) __aeabi_unwind_cpp_pr1(void) {}
void __attribute__((weak)) __aeabi_unwind_cpp_pr2(void) {}
