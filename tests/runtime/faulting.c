#include "tests/runtime/faulting.h"

#include <stdlib.h>
#include <string.h>

/* Sanitizers would report the fault before the processor does. */
#define PLAIN __attribute__((noinline, no_sanitize("address", "undefined")))

PLAIN static int divide(int dividend, int divisor) { return dividend / divisor; }

PLAIN static int readInt(const int* from) { return *(const volatile int*)from; }

PLAIN int korReadInt(const int* from) { return readInt(from); }

PLAIN static void writeInt(int* to) { *(volatile int*)to = 1; }

PLAIN static void callFunction(void (*function)(void)) {
    function();
    __asm__ volatile(""); /* a call, not a jump */
}

PLAIN static double divideDouble(double dividend, double divisor) {
    volatile double quotient = dividend / divisor;
    return quotient;
}

PLAIN static long double divideExtended(long double dividend, long double divisor) {
    volatile long double quotient = dividend / divisor;
    __asm__ volatile("fwait"); /* the x87 unit tells a trap with its next instruction */
    return quotient;
}

PLAIN static unsigned measure(const char* text) { return (unsigned)strlen(text); }

PLAIN static int compareAll(int (*compare)(const void*, const void*)) {
    int values[4] = {4, 3, 2, 1};
    qsort(values, 4, sizeof values[0], compare);
    return values[0];
}

PLAIN static int recurse(int depth) {
    if (depth < 0) return 0; /* never: the stack ends before */
    volatile char frame[4096];
    frame[0] = (char)depth;
    return recurse(depth + 1) + frame[0];
}

const struct Faulting* korFaulting(void) {
    static const struct Faulting table = {divide,         readInt, writeInt,   callFunction, divideDouble,
                                          divideExtended, measure, compareAll, recurse};
    return &table;
}
