// Time, identity, last error per thread, critical sections.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "tests/platform/seeded.h"

namespace {

using namespace kor::test;

ULONGLONG unitsOf(const FILETIME& time) { return ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime; }

FILETIME fileTime(ULONGLONG units) { return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)}; }

TEST(FileTimes, AreBrokenDownAndBack) {
    struct Case {
        ULONGLONG units;
        SYSTEMTIME broken;
    };
    const Case cases[] = {
        {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {125911583990000000, {1999, 12, 5, 31, 23, 59, 59, 0}},
        {125963423998760000, {2000, 2, 2, 29, 23, 59, 59, 876}},
        {157469184000000000, {2100, 1, 5, 1, 0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const FILETIME time = fileTime(c.units);
        SYSTEMTIME broken{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &broken));
        EXPECT_EQ(std::memcmp(&broken, &c.broken, sizeof broken), 0) << c.units;
        FILETIME back{};
        SYSTEMTIME given = c.broken;
        given.wDayOfWeek = 77;
        ASSERT_TRUE(SystemTimeToFileTime(&given, &back));
        EXPECT_EQ(unitsOf(back), c.units);
    }
}

TEST(FileTimes, OutOfRangeAreRefused) {
    const SYSTEMTIME cases[] = {
        {1600, 12, 0, 31, 0, 0, 0, 0}, {2000, 0, 0, 1, 0, 0, 0, 0},  {2000, 13, 0, 1, 0, 0, 0, 0},
        {2000, 2, 0, 30, 0, 0, 0, 0},  {2000, 1, 0, 0, 0, 0, 0, 0},  {2000, 1, 0, 1, 24, 0, 0, 0},
        {2000, 1, 0, 1, 0, 60, 0, 0},  {2000, 1, 0, 1, 0, 0, 60, 0}, {2000, 1, 0, 1, 0, 0, 0, 1000},
    };
    for (const SYSTEMTIME& broken : cases) {
        FILETIME time = fileTime(42);
        EXPECT_FAILS(ERROR_INVALID_PARAMETER, SystemTimeToFileTime(&broken, &time))
            << broken.wYear << "-" << broken.wMonth << "-" << broken.wDay;
        EXPECT_EQ(unitsOf(time), 42u);
    }
    SYSTEMTIME broken{};
    const FILETIME tooLate = fileTime(ULONGLONG{1} << 63);
    EXPECT_FAILS(ERROR_INVALID_PARAMETER, FileTimeToSystemTime(&tooLate, &broken));
    const FILETIME last = fileTime((ULONGLONG{1} << 63) - 1);
    EXPECT_TRUE(FileTimeToSystemTime(&last, &broken));
    EXPECT_EQ(broken.wYear, 30828);
}

TEST(FileTimes, LocalOnesDifferByTheZone) {
    const FILETIME time = fileTime(125963423998760000);
    FILETIME local{};
    FILETIME back{};
    ASSERT_TRUE(FileTimeToLocalFileTime(&time, &local));
    ASSERT_TRUE(LocalFileTimeToFileTime(&local, &back));
    EXPECT_EQ(CompareFileTime(&back, &time), 0);
    const ULONGLONG distance =
        unitsOf(local) > unitsOf(time) ? unitsOf(local) - unitsOf(time) : unitsOf(time) - unitsOf(local);
    EXPECT_LE(distance, 14ull * 3600 * 10'000'000);
    EXPECT_EQ(distance % (60ull * 10'000'000), 0u) << "whole minutes";
}

TEST(Clocks, AgreeWithEachOther) {
    FILETIME before{}, after{}, told{};
    SYSTEMTIME now{};
    GetSystemTimeAsFileTime(&before);
    GetSystemTime(&now);
    GetSystemTimeAsFileTime(&after);
    ASSERT_TRUE(SystemTimeToFileTime(&now, &told));
    EXPECT_GE(unitsOf(told) + 20 * 10'000, unitsOf(before)) << "but for the milliseconds";
    EXPECT_LE(unitsOf(told), unitsOf(after) + 20 * 10'000);

    LARGE_INTEGER frequency{}, start{}, end{};
    ASSERT_TRUE(QueryPerformanceFrequency(&frequency));
    EXPECT_EQ(frequency.QuadPart, 10'000'000);
    const DWORD ticks = GetTickCount();
    ASSERT_TRUE(QueryPerformanceCounter(&start));
    Sleep(30);
    ASSERT_TRUE(QueryPerformanceCounter(&end));
    EXPECT_GE(end.QuadPart - start.QuadPart, 29 * 10'000);
    EXPECT_GE(GetTickCount() - ticks, 14u) << "in the steps of its clock";
}

TEST(LastError, IsEachThreadsOwn) {
    std::atomic<DWORD> fresh{99};
    SetLastError(1234);
    std::thread other([&] {
        const DWORD first = GetLastError();
        SetLastError(5678);
        fresh = first;
    });
    SetLastError(1234);
    while (fresh == 99) {
    }
    EXPECT_EQ(GetLastError(), 1234u);
    other.join();
    EXPECT_EQ(fresh, 0u);
}

TEST(CriticalSections, LetOneThreadInAsOftenAsItLikes) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section)) << "its own thread";
    const auto enteredByOther = [&section] {
        BOOL entered = FALSE;
        std::thread([&] {
            entered = TryEnterCriticalSection(&section);
            if (entered) LeaveCriticalSection(&section);
        }).join();
        return entered != FALSE;
    };
    EXPECT_FALSE(enteredByOther());
    LeaveCriticalSection(&section);
    EXPECT_FALSE(enteredByOther()) << "left once of twice";
    LeaveCriticalSection(&section);
    EXPECT_TRUE(enteredByOther());

    int count = 0;
    const auto work = [&] {
        for (int round = 0; round < 10000; ++round) {
            EnterCriticalSection(&section);
            ++count;
            LeaveCriticalSection(&section);
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(count, 20000);
    DeleteCriticalSection(&section);
}

}  // namespace
