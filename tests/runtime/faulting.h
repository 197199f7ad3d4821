#pragma once
// Functions that fault when they are told to. The same source is built into the test program and, without any
// special flag, into a module of its own ("faulting_module"), which is how foreign code reaches the guard.
// Plain C: see faulting_module.h for the include in C++.

struct Faulting {
    int (*divide)(int dividend, int divisor);
    int (*read)(const int* from);
    void (*write)(int* to);
    void (*call)(void (*function)(void));
    double (*divideDouble)(double dividend, double divisor);
    long double (*divideExtended)(long double dividend, long double divisor);
    unsigned (*measure)(const char* text);
    int (*compareAll)(int (*compare)(const void*, const void*));
    int (*recurse)(int depth);
};

/// As `read` in the table, to be called by its name.
int korReadInt(const int* from);

/// The table of the functions that this build of the source holds; exported by the module.
__attribute__((visibility("default"))) const struct Faulting* korFaulting(void);
