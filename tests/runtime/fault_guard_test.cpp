#include "korutil/fault_guard.h"

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cfenv>
#include <string>
#include <thread>
#include <utility>

#include "korutil/error.h"
#include "tests/runtime/fault_outcome.h"
#include "tests/runtime/faulting_module.h"

using namespace kor::test;

namespace {

constexpr DWORD kFaultLocation = 1001152;
constexpr DWORD kOwnCode = 0xE0001234;
constexpr unsigned kSseDivideTrap = 0x0200;
constexpr unsigned short kX87DivideTrap = 0x0004;

void trapSseDivision() { _mm_setcsr(_mm_getcsr() & ~kSseDivideTrap); }

void trapX87Division() {
    unsigned short control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    control = static_cast<unsigned short>(control & ~kX87DivideTrap);
    asm volatile("fldcw %0" : : "m"(control));
}

using Fault = void (*)(const Faulting&);
struct Case {
    const char* name;
    DWORD code;
    Fault fault;
};

// The arguments are read through volatile objects, so that no compiler sees what they are.
volatile int zero = 0;
int* volatile nowhere = nullptr;
void (*volatile noFunction)() = nullptr;
void (*volatile badFunction)() = reinterpret_cast<void (*)()>(0x10);

const Case kCases[] = {
    {"integer division", EXCEPTION_INT_DIVIDE_BY_ZERO, [](const Faulting& f) { f.divide(5, zero); }},
    {"null read", EXCEPTION_ACCESS_VIOLATION, [](const Faulting& f) { f.read(nowhere); }},
    {"null write", EXCEPTION_ACCESS_VIOLATION, [](const Faulting& f) { f.write(nowhere); }},
    {"null call", EXCEPTION_ACCESS_VIOLATION, [](const Faulting& f) { f.call(noFunction); }},
    {"wild call", EXCEPTION_ACCESS_VIOLATION, [](const Faulting& f) { f.call(badFunction); }},
    {"SSE division", kor::test::kSseDivisionCode,
     [](const Faulting& f) {
         trapSseDivision();
         f.divideDouble(1.0, zero);
     }},
    {"x87 division", EXCEPTION_FLT_DIVIDE_BY_ZERO,
     [](const Faulting& f) {
         trapX87Division();
         f.divideExtended(1.0L, zero);
     }},
};

// What the catch clause of the host sees: code and location, {0, 0} when nothing was thrown.
using Outcome = std::pair<DWORD, DWORD>;

template <class Action>
Outcome guarded(Action action) {
    try {
        const CKorWinToCException guard;
        action();
    } catch (CKorException* e) {
        const Outcome outcome(e->GetErrorCode(), e->GetErrorLocation());
        e->Delete();
        return outcome;
    }
    return {0, 0};
}

void divideByZero() { korFaulting()->divide(1, zero); }
void readNowhere() { korFaulting()->read(nowhere); }

}  // namespace

TEST(FaultGuard, EachFaultSurfacesWithItsCodeAsOftenAsItHappens) {
    for (const Faulting* code : {korFaulting(), faultingModule()}) {
        for (const Case& c : kCases) {
            SCOPED_TRACE(std::string(c.name) + (code == korFaulting() ? ", own code" : ", foreign code"));
            for (int round = 0; round < 3; ++round) {
                appClearErrors();
                EXPECT_EQ(guarded([&] { c.fault(*code); }), Outcome(c.code, kFaultLocation));
                CKorError* last = appGetLastErrorObject();
                ASSERT_NE(last, nullptr);
                EXPECT_EQ(Outcome(last->GetErrorCode(), last->GetErrorLocation()),
                          Outcome(c.code, kFaultLocation));
                char text[64] = "x";
                EXPECT_FALSE(last->GetErrorMessage(text, sizeof text, nullptr)) << "no text for the user";
                EXPECT_STREQ(text, "");
            }
        }
    }
    appClearErrors();
}

TEST(FaultGuard, RoundingAndTrapsSurviveAFaultOfAnotherKind) {
    constexpr unsigned kControl = _MM_ROUND_MASK | kSseDivideTrap;
    guarded([] {
        trapSseDivision();
        trapX87Division();
        korFaulting()->divideDouble(1.0, zero);
    });
    EXPECT_GT(korFaulting()->divideDouble(1.0, zero), 1e300) << "masked after one that was translated";
    EXPECT_GT(korFaulting()->divideExtended(1.0L, zero), 1e300L);
    for (const Fault fault : {kCases[0].fault, kCases[1].fault}) {
        ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
        trapSseDivision();
        EXPECT_NE(guarded([&] { fault(*korFaulting()); }).first, 0u);
        EXPECT_EQ(std::fegetround(), FE_UPWARD);
        EXPECT_EQ(_mm_getcsr() & kControl, unsigned{_MM_ROUND_UP});
        // A trap masks them all, and leaves the rounding.
        EXPECT_EQ(guarded([] { korFaulting()->divideDouble(1.0, zero); }).first, kor::test::kSseDivisionCode);
        EXPECT_EQ(std::fegetround(), FE_UPWARD);
        EXPECT_EQ(_mm_getcsr() & kControl, _MM_ROUND_UP | kSseDivideTrap);
        std::fesetround(FE_TONEAREST);
    }
}

TEST(FaultGuard, EveryKindOnEveryThreadCleansUpAndLeavesTheOuterGuardAtWork) {
    struct Count {
        int& destroyed;
        ~Count() { ++destroyed; }
    };
    const auto raise = [] { RaiseException(kOwnCode, 0, 0, nullptr); };  // one that could be continued
    int destroyed = 0;
    const auto work = [&] {
        for (int round = 0; round < 3; ++round) {
            Outcome inner;
            const Outcome outer = guarded([&] {
                const Count first{destroyed};
                inner = guarded([&] {
                    const Count second{destroyed};
                    raise();
                });
                [&] {
                    const Count third{destroyed};
                    readNowhere();
                }();
            });
            EXPECT_EQ(inner, Outcome(kOwnCode, kFaultLocation));
            EXPECT_EQ(outer.first, EXCEPTION_ACCESS_VIOLATION);
        }
    };
    work();
    std::thread(work).join();
    EXPECT_EQ(destroyed, 18);
}

TEST(FaultGuard, AGuardPageIsToldOnceAndIsThenOrdinary) {
    for (const Faulting* code : {korFaulting(), faultingModule()}) {
        constexpr SIZE_T kInts = 4096 / sizeof(int);
        int* const pages = static_cast<int*>(VirtualAlloc(nullptr, 3 * 4096, MEM_COMMIT, PAGE_READWRITE));
        ASSERT_NE(pages, nullptr);
        DWORD former = 0;
        ASSERT_TRUE(VirtualProtect(pages, 2 * 4096, PAGE_READWRITE | PAGE_GUARD, &former));
        ASSERT_TRUE(VirtualProtect(pages + 2 * kInts, 4096, PAGE_READONLY, &former));
        const auto writes = [&](SIZE_T page) { return [=] { code->write(pages + page * kInts); }; };
        const auto reads = [&](SIZE_T page) { return [=] { code->read(pages + page * kInts); }; };
        const Outcome hit(STATUS_GUARD_PAGE_VIOLATION, kFaultLocation);
        EXPECT_EQ(guarded(writes(0)), hit);
        EXPECT_EQ(guarded(writes(0)), Outcome());
        EXPECT_EQ(guarded(reads(1)), hit) << "each page has a guard of its own";
        EXPECT_EQ(guarded(reads(1)), Outcome());
        EXPECT_EQ(guarded(writes(2)).first, EXCEPTION_ACCESS_VIOLATION) << "and this one never had one";
        EXPECT_TRUE(VirtualFree(pages, 0, MEM_RELEASE));
    }
}

TEST(FaultGuardDeathTest, AFaultWithoutAGuardEndsTheProcess) {
    EXPECT_EXIT(divideByZero(), DiedFrom(EXCEPTION_INT_DIVIDE_BY_ZERO), "");
    EXPECT_EXIT((guarded(divideByZero), readNowhere()), DiedFrom(EXCEPTION_ACCESS_VIOLATION), "")
        << "any more";
    const auto besideOther = [] {
        const CKorWinToCException guard;
        std::thread(readNowhere).join();
    };
    EXPECT_EXIT(besideOther(), DiedFrom(EXCEPTION_ACCESS_VIOLATION), "") << "another thread's";
}

TEST(FaultGuardDeathTest, AnExceptionThatCannotBeContinuedIsNotTranslated) {
    EXPECT_EXIT(guarded([] { RaiseException(kOwnCode, EXCEPTION_NONCONTINUABLE, 0, nullptr); }),
                DiedFrom(kOwnCode), "");
}

TEST(FaultGuardDeathTest, AnAssignedGuardRestoresWhatTheOtherKept) {
    EXPECT_EXIT(
        {
            const CKorWinToCException outer;
            {
                CKorWinToCException inner;
                inner = outer;  // which found no translator
            }
            readNowhere();
        },
        DiedFrom(EXCEPTION_ACCESS_VIOLATION), "");
}
