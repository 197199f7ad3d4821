// Conversions between the forms of time.
#include "korutil/file_time.h"

#include "files/file_seconds.h"
#include "platform/win32.h"

namespace kor {
namespace {

constexpr LONGLONG kLastSecond = INT64_MAX / kUnitsPerSecond;  // since 1601

constexpr bool fitsWord(int value) { return value >= 0 && value <= 0xFFFF; }

// Days since 1 January of the year, which is a valid date.
int dayOfYear(const SYSTEMTIME& date) {
    constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const bool leap = date.wYear % 4 == 0 && (date.wYear % 100 != 0 || date.wYear % 400 == 0);
    return kDaysBefore[date.wMonth - 1] + date.wDay - 1 + (leap && date.wMonth > 2);
}

// The same time with its day of the week; false when a field is out of range.
bool completed(const SYSTEMTIME& time, SYSTEMTIME& complete) {
    constexpr WORD kLastYear = 30827;  // the last whole one
    FILETIME units{};
    return time.wYear <= kLastYear && SystemTimeToFileTime(&time, &units) &&
           FileTimeToSystemTime(&units, &complete);
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysTimetToFileTime(LONGLONG seconds, FILETIME* time) {
    if (!time || seconds < -kor::kSecondsTo1970 || seconds > kor::kLastSecond - kor::kSecondsTo1970) return 0;
    const auto units = static_cast<ULONGLONG>((seconds + kor::kSecondsTo1970) * kor::kUnitsPerSecond);
    time->dwLowDateTime = static_cast<DWORD>(units & 0xFFFFFFFF);
    time->dwHighDateTime = static_cast<DWORD>(units >> 32);
    return 1;
}

int KORUTIL_CALL sysFileTimeToTimet(const FILETIME* time, LONGLONG* seconds) {
    if (!time || !seconds || time->dwHighDateTime > 0x7FFFFFFF) return 0;
    *seconds = kor::secondsOf(*time);
    return 1;
}

int KORUTIL_CALL utlCvtTmToSysTime(const std::tm* broken, SYSTEMTIME* time) {
    if (!broken || !time) return 0;
    if (broken->tm_year > 0xFFFF || broken->tm_mon > 0xFFFF) return 0;
    const int fields[] = {broken->tm_year + 1900, broken->tm_mon + 1, broken->tm_mday,
                          broken->tm_hour,        broken->tm_min,     broken->tm_sec};
    for (const int field : fields)
        if (!kor::fitsWord(field)) return 0;
    SYSTEMTIME given{};
    given.wYear = static_cast<WORD>(fields[0]);
    given.wMonth = static_cast<WORD>(fields[1]);
    given.wDay = static_cast<WORD>(fields[2]);
    given.wHour = static_cast<WORD>(fields[3]);
    given.wMinute = static_cast<WORD>(fields[4]);
    given.wSecond = static_cast<WORD>(fields[5]);
    SYSTEMTIME complete{};
    if (!kor::completed(given, complete)) return 0;
    *time = complete;
    return 1;
}

int KORUTIL_CALL utlCvtSysToTmTime(const SYSTEMTIME* time, std::tm* broken) {
    SYSTEMTIME complete{};
    if (!time || !broken || !kor::completed(*time, complete)) return 0;
    std::tm made{};
    made.tm_year = complete.wYear - 1900;
    made.tm_mon = complete.wMonth - 1;
    made.tm_mday = complete.wDay;
    made.tm_hour = complete.wHour;
    made.tm_min = complete.wMinute;
    made.tm_sec = complete.wSecond;
    made.tm_wday = complete.wDayOfWeek;
    made.tm_yday = kor::dayOfYear(complete);
    made.tm_isdst = -1;
    *broken = made;
    return 1;
}
