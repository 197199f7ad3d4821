#pragma once
// A module that stands in for the maker's KorBase: its log keeps each line it is given, and where the process
// stood at that moment.
#include "korutil/platform.h"

struct RecordedLine {
    DWORD flags;
    char text[512];
    char folder[260];
    UINT errorMode;
};

using TakeRecordedLine = BOOL(KORUTIL_CALL*)(RecordedLine* line);

/// Takes the oldest line. @return FALSE when there is none
KORUTIL_API BOOL KORUTIL_CALL korTakeRecordedLine(RecordedLine* line);
