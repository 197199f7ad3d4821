// Values that are permitted, in a sorted row.

#include "korutil/list.h"

WORD KORUTIL_CALL utlGetNextInList(WORD value, WORD previous, const WORD* list, DWORD count) {
    if (!list || count == 0) return value;
    for (DWORD i = 0; i < count; ++i)
        if (list[i] == value) return value;
    if (value <= previous) {
        for (DWORD i = count; i-- > 0;)
            if (list[i] < value) return list[i];
        return list[0];
    }
    for (DWORD i = 0; i < count; ++i)
        if (list[i] > value) return list[i];
    return list[count - 1];
}
