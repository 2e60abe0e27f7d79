/* Linked statically: no preloaded object comes into it. */
int main(void)
{
    return 0;
}
