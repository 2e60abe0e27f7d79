/* Reads a word where none can be: ends by SIGBUS where misaligned access is fatal. */
#include <stdint.h>
#include <stdio.h>

int main(int argc, char** argv)
{
    static uint32_t words[2] = {0x03020100, 0x07060504};
    /* The compiler cannot know where: argc is 1. */
    const volatile uint32_t* between =
        (const volatile uint32_t*)(const volatile void*)((const char*)words + argc);
    (void)argv;
    printf("misaligned: read 0x%08lX\n", (unsigned long)*between);
    return 0;
}
