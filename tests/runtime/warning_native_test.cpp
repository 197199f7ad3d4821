// What the user sees on a terminal, and what happens when memory is short.
#include <gtest/gtest.h>

#include <string>

#include "korutil/error.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/host.h"
#include "korutil/lifecycle.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/runtime/own_texts.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace kor::test;

// What a call writes to standard error, where message boxes appear.
template <class Call>
std::string shownBy(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(WarningShown, WithoutAHookTheDefaultProcedureShowsIt) {
    ASSERT_TRUE(utlInitDLL1("Measuring"));
    menuExitHook(14061);
    EXPECT_EQ(shownBy([] { EXPECT_EQ(utlWarning(nullptr, nullptr, "still told", MB_OK), IDOK); }),
              "Measuring: still told\n");
    utlExitDLL();
    utlInitDLL1(nullptr);
    utlExitDLL();
    int button = 0;
    const std::string shown = shownBy([&] { button = utlWarning(nullptr, nullptr, "Lens %d", MB_OK, 3); });
    EXPECT_EQ(button, IDOK);
    EXPECT_TRUE(contains(shown, "Lens 3")) << shown;
    EXPECT_TRUE(contains(shown, "Lumetra")) << shown;
}

TEST(WarningShown, EachKindOfTheDefaultProcedure) {
    MSGBOXPARAMSA indirect{};
    indirect.cbSize = sizeof(indirect);
    indirect.lpszText = "text of the box";
    indirect.lpszCaption = "caption of the box";
    for (UINT_PTR kind = kWarningFile; kind <= kWarningIndirect; ++kind) {
        UtlWarningRecord record{};
        record.kind = kind;
        record.text = "text of the box";
        record.caption = "caption of the box";
        record.instance = kind == kWarningIndirect ? &indirect : nullptr;
        int button = 0;
        const std::string shown = shownBy([&] { button = utlShowWarningProc(&record); });
        EXPECT_EQ(button, IDOK) << kind;
        EXPECT_TRUE(contains(shown, "text of the box") && contains(shown, "caption of the box"))
            << kind << shown;
    }
}

TEST(WarningShown, TheMemoryErrorIsShownWithoutMemory) {
    const std::string shown = shownBy([] {
        FailingAllocation none(1, FailingAllocation::After::fails);
        const BOOL done = OutOfMemoryError();
        none.stop();
        EXPECT_EQ(done, 1);
    });
    EXPECT_TRUE(contains(shown, ownText(kor::text::kOutOfMemory))) << shown;
}

TEST(WarningShown, WithoutMemoryForTheTextThatIsShownInstead) {
    EXPECT_TRUE(contains(shownBy([] { utlDisplayErrorMsg(0xE0000003); }), ownText(kor::text::kOutOfMemory)));
    int result = 99;
    const std::string shown = shownBy([&] {
        FailingAllocation first(1);
        result = utlWarning(nullptr, nullptr, "Lens %d", MB_OK, 3);
    });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(contains(shown, ownText(kor::text::kOutOfMemory))) << shown;
    EXPECT_FALSE(contains(shown, "Lens")) << shown;
}

TEST(WarningShown, AMemoryExceptionIsShownAndPlaced) {
    appClearErrors();
    const std::string shown = shownBy([] {
        try {
            AfxThrowMemoryException();
        } catch (CException* exception) {
            EXPECT_EQ(appHandleException(exception), 1);
        }
    });
    EXPECT_TRUE(contains(shown, ownText(kor::text::kOutOfMemory))) << shown;
    ASSERT_NE(appGetLastErrorObject(), nullptr);
    EXPECT_EQ(appGetLastErrorObject()->GetErrorCode(), 14u);
    appClearErrors();
}

TEST(WarningShown, AnyOtherExceptionReportsItself) {
    class Other : public CException {
      public:
        explicit Other(int answer) : answer_(answer) {}
        int ReportError(UINT type, UINT messageId) override {
            EXPECT_EQ(type, MB_ICONEXCLAMATION);
            EXPECT_EQ(messageId, 0xF108u);
            return answer_;
        }

      private:
        int answer_;
    };
    EXPECT_EQ(appHandleException(new Other(IDCANCEL)), 1);
    EXPECT_EQ(appHandleException(new Other(0)), 0);
}

TEST(ErrorWithoutMemory, PlacingThrowsAndLeavesTheRingAsItWas) {
    appClearErrors();
    for (UINT code = 8; code >= 1; --code)  // a full ring
        appPlaceError(code, 1, "text", nullptr, nullptr, nullptr, 0, nullptr);
    const int failures = kor::test::failEachAllocation([] {
        try {
            appPlaceError(2, 2, "second", nullptr, "debug", nullptr, 0, nullptr);
        } catch (CMemoryException* exception) {
            exception->Delete();
            ASSERT_EQ(appGetLastErrorObject()->GetErrorCode(), 1u);
        }
    });
    EXPECT_EQ(failures, 3) << "the object and its two texts";
    EXPECT_EQ(appGetLastErrorObject()->GetErrorCode(), 2u);
    for (int left = 7; left > 0; --left)
        EXPECT_EQ(appRemoveLastError(), 1);
    EXPECT_EQ(appGetLastErrorObject()->GetErrorCode(), 7u) << "only the oldest is gone";
    appClearErrors();
}

TEST(ErrorWithoutMemory, TheMemoryErrorIsPlacedWithoutThrowing) {
    appClearErrors();
    BOOL placed = 99;
    const std::string shown = shownBy([&] {
        FailingAllocation none(1, FailingAllocation::After::fails);
        placed = appPlaceMemoryError();
        none.stop();
        EXPECT_TRUE(none.happened());
    });
    EXPECT_EQ(placed, 0);
    EXPECT_EQ(appGetLastErrorObject(), nullptr);
    EXPECT_TRUE(contains(shown, ownText(kor::text::kOutOfMemory))) << shown;
    EXPECT_EQ(appPlaceMemoryError(), 1);
    FailingAllocation none(1, FailingAllocation::After::fails);
    EXPECT_EQ(appPlaceMemoryError(), 1) << "the ring is there";
    EXPECT_EQ(menuInitHook(29201, nullptr), 0);
    none.stop();
    EXPECT_EQ(menuGetFirstHook(29201), nullptr);
    appClearErrors();
}

TEST(ErrorWithoutMemory, AnExceptionThatCannotKeepItsErrorCarriesNone) {
    CGeneralError error(5);
    CKorException* exception = nullptr;
    const std::string shown = shownBy([&] {
        FailingAllocation second(2);  // the first is the exception itself
        exception = new CKorException(error);
        second.stop();
        EXPECT_TRUE(second.happened());
    });
    EXPECT_EQ(exception->GetErrorObject(), nullptr);
    EXPECT_EQ(exception->GetErrorCode(), 0u);
    EXPECT_TRUE(contains(shown, ownText(kor::text::kOutOfMemory))) << shown;
    exception->Delete();
}

}  // namespace
