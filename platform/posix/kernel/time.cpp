#include "platform/posix/kernel/time.h"

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <ctime>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file_time.h"

namespace {

using kor::failWith;

constexpr std::uint64_t kUnitsPerMillisecond = 10'000;
constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
constexpr std::uint64_t kUnitsPerDay = 86'400 * kUnitsPerSecond;
constexpr std::uint64_t kLastUnit = INT64_MAX;
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

constexpr std::chrono::sys_days kFirstDay = std::chrono::year{kFirstYear} / std::chrono::January / 1;

// The time zone's distance from UTC now, in units.
std::int64_t localDistance() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return static_cast<std::int64_t>(local.tm_gmtoff) * static_cast<std::int64_t>(kUnitsPerSecond);
}

BOOL moved(const FILETIME* from, std::int64_t distance, FILETIME* to) {
    if (!from || !to) return failWith(ERROR_INVALID_PARAMETER);
    *to = kor::fileTime(kor::unitsOf(*from) + static_cast<std::uint64_t>(distance));
    return TRUE;
}

std::uint64_t unitsOf(const SYSTEMTIME& broken, std::chrono::sys_days day) {
    const std::uint64_t seconds = (broken.wHour * 60ull + broken.wMinute) * 60 + broken.wSecond;
    return static_cast<std::uint64_t>((day - kFirstDay).count()) * kUnitsPerDay + seconds * kUnitsPerSecond +
           broken.wMilliseconds * kUnitsPerMillisecond;
}

timespec clockNow(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now;
}

}  // namespace

KORPLATFORM_API DWORD WINAPI GetTickCount() {
    const timespec now = clockNow(CLOCK_BOOTTIME);
    return static_cast<DWORD>(static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                              static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000);
}

KORPLATFORM_API void WINAPI Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    // An absolute end: signals that interrupt the pause do not make it longer.
    timespec end = clockNow(CLOCK_MONOTONIC);
    end.tv_sec += milliseconds / 1000;
    end.tv_nsec += static_cast<std::int64_t>(milliseconds % 1000) * 1'000'000;
    if (end.tv_nsec >= 1'000'000'000) {
        ++end.tv_sec;
        end.tv_nsec -= 1'000'000'000;
    }
    do {
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
        }
    } while (milliseconds == INFINITE);
}

KORPLATFORM_API void WINAPI GetSystemTimeAsFileTime(FILETIME* time) {
    *time = kor::fileTimeOf(clockNow(CLOCK_REALTIME));
}

KORPLATFORM_API void WINAPI GetSystemTime(SYSTEMTIME* time) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, time);
}

KORPLATFORM_API void WINAPI GetLocalTime(SYSTEMTIME* time) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    FileTimeToLocalFileTime(&now, &now);
    FileTimeToSystemTime(&now, time);
}

KORPLATFORM_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* broken) {
    if (!time || !broken) return failWith(ERROR_INVALID_PARAMETER);
    const std::uint64_t units = kor::unitsOf(*time);
    if (units > kLastUnit) return failWith(ERROR_INVALID_PARAMETER);
    const std::uint64_t rest = units % kUnitsPerDay;
    const std::chrono::sys_days day = kFirstDay + std::chrono::days(static_cast<int>(units / kUnitsPerDay));
    const std::chrono::year_month_day date(day);
    const std::uint64_t seconds = rest / kUnitsPerSecond;
    broken->wYear = static_cast<WORD>(static_cast<int>(date.year()));
    broken->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    broken->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    broken->wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
    broken->wHour = static_cast<WORD>(seconds / 3600);
    broken->wMinute = static_cast<WORD>(seconds / 60 % 60);
    broken->wSecond = static_cast<WORD>(seconds % 60);
    broken->wMilliseconds = static_cast<WORD>(rest % kUnitsPerSecond / kUnitsPerMillisecond);
    return TRUE;
}

KORPLATFORM_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* broken, FILETIME* time) {
    if (!broken || !time) return failWith(ERROR_INVALID_PARAMETER);
    const std::chrono::year_month_day date(
        std::chrono::year{broken->wYear}, std::chrono::month{broken->wMonth}, std::chrono::day{broken->wDay});
    const bool inRange = broken->wYear >= kFirstYear && broken->wYear <= kLastYear && date.ok() &&
                         broken->wHour < 24 && broken->wMinute < 60 && broken->wSecond < 60 &&
                         broken->wMilliseconds < 1000;
    if (!inRange) return failWith(ERROR_INVALID_PARAMETER);
    *time = kor::fileTime(unitsOf(*broken, date));
    return TRUE;
}

KORPLATFORM_API BOOL WINAPI FileTimeToLocalFileTime(const FILETIME* time, FILETIME* local) {
    return moved(time, localDistance(), local);
}

KORPLATFORM_API BOOL WINAPI LocalFileTimeToFileTime(const FILETIME* local, FILETIME* time) {
    return moved(local, -localDistance(), time);
}

KORPLATFORM_API LONG WINAPI CompareFileTime(const FILETIME* first, const FILETIME* second) {
    const std::uint64_t one = kor::unitsOf(*first);
    const std::uint64_t other = kor::unitsOf(*second);
    return (one > other) - (one < other);
}

KORPLATFORM_API BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* count) {
    if (!count) return failWith(ERROR_NOACCESS);
    const timespec now = clockNow(CLOCK_MONOTONIC);
    count->QuadPart =
        static_cast<LONGLONG>(now.tv_sec) * static_cast<LONGLONG>(kUnitsPerSecond) + now.tv_nsec / 100;
    return TRUE;
}

KORPLATFORM_API BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    if (!frequency) return failWith(ERROR_NOACCESS);
    frequency->QuadPart = static_cast<LONGLONG>(kUnitsPerSecond);
    return TRUE;
}

KORPLATFORM_API HANDLE WINAPI GetCurrentProcess() { return INVALID_HANDLE_VALUE; }

KORPLATFORM_API DWORD WINAPI GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }

KORPLATFORM_API DWORD WINAPI GetCurrentThreadId() { return static_cast<DWORD>(syscall(SYS_gettid)); }
