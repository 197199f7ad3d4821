#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/maker_function.h"
#include "korutil/argument_list.h"
#include "korutil/error.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/host.h"
#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/runtime/own_texts.h"
#include "tests/runtime/recording_log.h"
#include "tests/support/shown_warnings.h"

namespace {

using namespace kor::test;

struct DeleteException {
    void operator()(CException* exception) const { exception->Delete(); }
};
using Caught = std::unique_ptr<CKorException, DeleteException>;

// What a call throws; null, and a failed test, when it is nothing or something else.
template <class Call>
Caught caught(Call call) {
    try {
        call();
    } catch (CKorException* exception) {
        return Caught(exception);
    }
    ADD_FAILURE() << "nothing was thrown";
    return nullptr;
}

std::string userText(CException& exception) {
    char text[1024];
    exception.GetErrorMessage(text, sizeof(text), nullptr);
    return text;
}

std::string debugText(const CKorException& exception) {
    char text[1024];
    exception.GetErrorObject()->GetDebugMessage(text, sizeof(text));
    return text;
}

// With the recording log in place of the host's.
class Exception : public testing::Test {
  protected:
    void SetUp() override {
        appClearErrors();
        log_ = appLoadLibrary("recording\\KorBase", 0, 0, kLoadWithoutLog);
        ASSERT_NE(log_, nullptr);
        take_ = kor::makerFunction<TakeRecordedLine>("KorBase", "korTakeRecordedLine");
        ASSERT_NE(take_, nullptr);
    }
    void TearDown() override {
        EXPECT_EQ(logged(), "") << "a line that no test expected";
        FreeLibrary(log_);
        appClearErrors();
    }

    // The next line of the error log; empty when there is none.
    std::string logged() {
        RecordedLine line;
        if (!take_(&line)) return {};
        EXPECT_EQ(line.flags, kDebugLogErrors);
        return line.text;
    }
    static std::string framed(const std::string& text) {
        return ">-- KOR Error Debug Output: -->\n" + text + "\n<-- KOR Error Debug Output  --<\n";
    }

    ShownWarnings warnings_;

  private:
    HMODULE log_ = nullptr;
    TakeRecordedLine take_ = nullptr;
};

TEST_F(Exception, EachFailureHasItsCodeLocationAndTexts) {
    struct Case {
        void (*call)();
        DWORD code, location;
        std::string user, debug;
    };
    const Case cases[] = {
        {[] { appThrowUserBreak(); }, 0x60000002, 0, ownText(kor::text::kUserBreak),
         ownText(kor::text::kUserBreak)},
        {[] { appThrowArgumentError(11); }, 0xE0000003, 11, ownText(kor::text::kInvalidArgument),
         ownText(kor::text::kInvalidArgument)},
        {[] { appThrowDivZero(12); }, 0xE0000005, 12, "",
         "Division by zero\n\nPlease note error number and inform your dealer.\nError no.: 12"},
        {[] { appThrowInternalError(0xE0000004, 13); }, 0xE0000004, 13, "",
         ownText(kor::text::kInternalError)},
        {[] {
             SetLastError(1450);
             appThrowLastError(14);
         },
         1450, 14, "", ownText(kor::text::kInternalError)},
        {[] { appThrowException(5, 15, "user", nullptr, "debug", nullptr, 0, nullptr); }, 5, 15, "user",
         "debug"},
    };
    for (const Case& each : cases) {
        const Caught exception = caught(each.call);
        ASSERT_NE(exception, nullptr);
        EXPECT_EQ(exception->GetErrorCode(), each.code);
        EXPECT_EQ(exception->GetErrorLocation(), each.location);
        EXPECT_EQ(userText(*exception), each.user);
        EXPECT_EQ(debugText(*exception), "Error " + std::to_string(each.code) +
                                             "; No.: " + std::to_string(each.location) + ";\n" + each.debug);
        const CKorError* placed = appGetLastErrorObject();
        ASSERT_NE(placed, nullptr);
        EXPECT_NE(placed, exception->GetErrorObject()) << "the exception has an error of its own";
        EXPECT_EQ(placed->GetErrorCode(), each.code);
        EXPECT_EQ(placed->GetErrorLocation(), each.location);
    }
}

TEST_F(Exception, FileErrorsNameTheFile) {
    const std::string missing = ownText(kor::text::kFileNotFound);
    const std::string noMemory = ownText(kor::text::kFileNoMemory);
    const std::string failed = ownText(kor::text::kFileFailed);
    const std::string notRead = ownText(kor::text::kFileReadDenied);
    const std::string notWritten = ownText(kor::text::kFileWriteDenied);
    struct Case {
        DWORD code;
        UINT mode;
        std::string withName, withoutName;
    };
    const std::string name = "C:\\100%s%n.TIF";
    const Case cases[] = {
        {2, 0, "The file '" + name + "' was not found.", missing},
        {5, 0, notRead + "\n" + name, notRead},
        {5, 2, notWritten + "\n" + name, notWritten},
        {0x80030005, 2, notWritten + "\n" + name, notWritten},
        {0x80030008, 2, noMemory + "\n" + name, noMemory},
        {3, 2, failed + "\n" + name, failed},
    };
    for (const LONG code : {2, 3}) {
        const Caught exception =
            caught([&] { appThrowFileError(code, 1, std::string(2000, 'n').c_str(), 0); });
        EXPECT_EQ(userText(*exception).size(), 519u) << "cut at the text's room";
    }
    for (const Case& each : cases) {
        const auto code = static_cast<LONG>(each.code);
        const Caught named = caught([&] { appThrowFileError(code, 21, name.c_str(), each.mode); });
        const Caught unnamed = caught([&] { appThrowFileError(code, 21, nullptr, each.mode); });
        ASSERT_TRUE(named && unnamed);
        EXPECT_EQ(userText(*named), each.withName) << each.code;
        EXPECT_EQ(userText(*unnamed), each.withoutName) << each.code;
        EXPECT_EQ(appShowLastError(), 1);
        EXPECT_EQ(warnings_.takeOne().text, each.withoutName) << "a '%' of a text is shown as it stands";
    }
}

TEST_F(Exception, ItsTextCanBeChangedAndTheRingsErrorKeepsItsOwn) {
    const Caught exception = caught([] { appThrowArgumentError(31); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->SetErrorMessage("changed", nullptr, 55, nullptr), 1);
    char text[512];
    UINT help = 0;
    EXPECT_EQ(exception->GetErrorMessage(text, sizeof(text), &help), 1);
    EXPECT_STREQ(text, "changed");
    EXPECT_EQ(help, 55u);
    appGetLastErrorObject()->GetErrorMessage(text, sizeof(text), nullptr);
    EXPECT_EQ(text, ownText(kor::text::kInvalidArgument));

    appPlaceMemoryError();
    const Caught memory(new CKorException(*appGetLastErrorObject()));
    EXPECT_EQ(memory->SetErrorMessage("changed", nullptr, 0, nullptr), 0);
}

TEST_F(Exception, HandlingOneShowsItsTextAndLogsItsDebugText) {
    try {
        appThrowException(7, 41, "Focus %", nullptr, "motor", nullptr, 0, nullptr);
    } catch (CException* exception) {
        EXPECT_EQ(appHandleException(exception), 1);
    }
    const auto shown = warnings_.takeOne();
    EXPECT_EQ(shown.text, "Focus %");
    EXPECT_EQ(shown.caption, "Measuring");
    EXPECT_EQ(shown.record.style, MB_ICONSTOP);
    EXPECT_EQ(logged(), framed("Error 7; No.: 41;\nmotor"));
    const Caught silent = caught([] { appThrowInternalError(0xE0000004, 42); });
    EXPECT_EQ(appReportException(silent.get()), 0);
    EXPECT_TRUE(warnings_.take().empty());
    EXPECT_EQ(logged(), framed("Error 3758096388; No.: 42;\n" + ownText(kor::text::kInternalError)));
    EXPECT_EQ(appReportException(nullptr), 0);
    EXPECT_EQ(appHandleException(nullptr), 0);
    const Caught empty(new CKorException);
    EXPECT_TRUE(empty->GetErrorCode() == 0 && empty->GetErrorLocation() == 0);
    EXPECT_EQ(userText(*empty), "");
    EXPECT_EQ(empty->SetErrorMessage("text", nullptr, 0, nullptr), 0);
    EXPECT_EQ(appReportException(empty.get()), 0);
}

TEST_F(Exception, AnExhaustedReserveIsExplainedUnlessTheErrorHasAText) {
    for (const DWORD code : {kErrorReserveExhausted, kInfoReserveExhausted}) {
        const DWORD size = appGetReserveSizeForVirtualAlloc();
        const Caught exception =
            caught([&] { appThrowException(code, 1, nullptr, nullptr, "d", nullptr, 0, nullptr); });
        EXPECT_EQ(appReportException(exception.get()), 1);
        EXPECT_EQ(warnings_.takeOne().text, ownText(kor::text::kReserveExhausted));
        EXPECT_EQ(logged(), framed("Error " + std::to_string(code) + "; No.: 1;\nd"));
        EXPECT_EQ(appGetReserveSizeForVirtualAlloc(), size);
    }
    appHandleException(caught([] {
                           appThrowException(kErrorReserveExhausted, 1, "own", nullptr, "d", nullptr, 0,
                                             nullptr);
                       }).release());
    EXPECT_EQ(warnings_.takeOne().text, "own");
    logged();
}

TEST_F(Exception, AHostileFrameIsNotFormatted) {
    const HMODULE hostile = LoadLibraryExA(kor::test::besideProgram("HostileTexts.dll").c_str(), nullptr, 2);
    ASSERT_NE(hostile, nullptr) << GetLastError();
    const Caught exception =
        caught([] { appThrowException(1, 2, nullptr, nullptr, "debug", nullptr, 0, nullptr); });
    utlSetResourceHandle(hostile);
    EXPECT_EQ(exception->GetErrorObject()->OutputDebugMessage(), 1);
    EXPECT_EQ(logged(), "debug");
    utlSetResourceHandle(nullptr);
    FreeLibrary(hostile);
}

}  // namespace
