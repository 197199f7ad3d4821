// A module for the tests: one exported function, and resources of its own.
#include "korutil/platform.h"

KORUTIL_API int KORUTIL_CALL korTestAnswer(int number) { return number + 1; }
