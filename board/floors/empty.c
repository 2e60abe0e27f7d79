/* What any program costs with this C library. */
int main(void)
{
    return 0;
}
