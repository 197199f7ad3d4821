#pragma once
/// Times of files: seconds since 1 January 1970, the system's file time (100-nanosecond units since 1 January
/// 1601), and the two broken-down forms. Nothing here knows of time zones: what goes in as UTC comes out as
/// UTC. Seconds are 64 bits on both targets.
///
/// Results are 1, and 0 for null or for a time that the other form cannot express; the output is then
/// unchanged.

#include <ctime>

#include "korutil/platform.h"

/// Seconds to a file time. @param seconds  from 1601 (negative before 1970) to below 2^63 units
KORUTIL_API int KORUTIL_CALL sysTimetToFileTime(LONGLONG seconds, FILETIME* time);

/// A file time to seconds, parts of a second cut off downwards (half a second before 1970 is -1). Every file
/// time below 2^63 units can be expressed.
KORUTIL_API int KORUTIL_CALL sysFileTimeToTimet(const FILETIME* time, LONGLONG* seconds);

/// The runtime's broken-down time to the system's. Each field must be in its range (a 60th second is not),
/// the year in 1601 to 30827; the days of the week and of the year are not looked at, the system's day of the
/// week is computed. Milliseconds are 0.
KORUTIL_API int KORUTIL_CALL utlCvtTmToSysTime(const std::tm* broken, SYSTEMTIME* time);

/// The system's broken-down time to the runtime's: the days of the week and of the year are computed,
/// daylight saving is unknown (-1), milliseconds are dropped. Fields that only one runtime has become 0.
KORUTIL_API int KORUTIL_CALL utlCvtSysToTmTime(const SYSTEMTIME* time, std::tm* broken);
