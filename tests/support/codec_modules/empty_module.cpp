// A shared library that has nothing of a codec module but its name.

extern "C" __attribute__((visibility("default"))) int kelvane_nothing()
{
    return 0;
}
