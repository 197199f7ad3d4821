#include "korutil/warning.h"

#include <gtest/gtest.h>

#include <string>

#include "korutil/argument_list.h"
#include "korutil/error.h"
#include "korutil/host.h"
#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/runtime/own_texts.h"
#include "tests/support/shown_warnings.h"

namespace {

using namespace kor::test;

const char* number(UINT id) { return MAKEINTRESOURCEA(id); }

class Warning : public testing::Test {
  protected:
    ShownWarnings shown_;
};

TEST_F(Warning, TheHandlerGetsTheWholeRecord) {
    EXPECT_EQ(utlWarning(ownLibrary(), nullptr, number(kor::text::kFileNotFound), MB_YESNO, "A.TIF"),
              ShownWarnings::kAnswer);
    const ShownWarning shown = shown_.takeOne();
    EXPECT_EQ(shown.record.kind, kWarningText);
    EXPECT_EQ(shown.record.parent, nullptr) << "no main window";
    EXPECT_EQ(shown.text, "The file 'A.TIF' was not found.");
    EXPECT_EQ(shown.caption, "Measuring");
    EXPECT_EQ(shown.record.style, MB_YESNO);
    EXPECT_NE(shown.record.arguments, nullptr);
    EXPECT_EQ(shown.record.instance, ownLibrary());
    EXPECT_EQ(shown.record.textId, kor::text::kFileNotFound);
    utlWarning(nullptr, nullptr, "%s: %d of %.1f%%", 0, "channel", 3, 12.5);
    EXPECT_EQ(shown_.takeOne().text, "channel: 3 of 12.5%");
    utlWarning(nullptr, nullptr, "%s", 0, std::string(10000, 'x').c_str());
    EXPECT_EQ(shown_.takeOne().text, std::string(8191, 'x'));
    EXPECT_EQ(appAlertIfInactive(0), 0);
    utlInitDLL2(reinterpret_cast<HWND>(UINT_PTR{0x1234}));
    EXPECT_EQ(appAlertIfInactive(0), 0) << "not a window";
    utlWarning(nullptr, nullptr, "text", 0);
    EXPECT_EQ(shown_.takeOne().record.parent, nullptr) << "not a window";
}

TEST_F(Warning, WithoutATextNothingIsShown) {
    EXPECT_EQ(utlWarning(nullptr, nullptr, number(kor::text::kUserBreak), 0), 0)
        << "a number without a module";
    EXPECT_EQ(utlWarning(ownLibrary(), nullptr, number(9), 0), 0) << "a number that is not there";
    for (const char* text : {static_cast<const char*>(nullptr), "%n", ""})
        EXPECT_EQ(utlWarning(nullptr, nullptr, text, 0), 0);
    const HMODULE hostile = LoadLibraryExA(kor::test::besideProgram("HostileTexts.dll").c_str(), nullptr, 2);
    ASSERT_NE(hostile, nullptr) << GetLastError();
    EXPECT_EQ(utlFileWarning(hostile, nullptr, 2010, "name", 0), 0)
        << "a text that asks for what is not there";
    FreeLibrary(hostile);
    EXPECT_TRUE(shown_.take().empty());
    UtlWarningRecord record{};
    record.text = record.caption = "text";
    for (const UINT_PTR kind : {UINT_PTR{0}, UINT_PTR{9}, UINT_PTR{kWarningIndirect}}) {
        record.kind = kind;  // unknown, and one without the block that it shows
        EXPECT_EQ(utlShowWarningProc(&record), 0) << kind;
    }
    EXPECT_EQ(utlShowWarningProc(nullptr), 0);
}

TEST_F(Warning, SwitchedOffTheyAnswerOne) {
    EXPECT_EQ(utlWarningsEnabled(), 1);
    {
        const CUtlEnableWarnings off(0);
        {
            const CUtlEnableWarnings on(1);
            EXPECT_EQ(utlWarningsEnabled(), 1);
        }
        EXPECT_EQ(utlWarningsEnabled(), 0);
        EXPECT_EQ(utlWarning(nullptr, nullptr, "text", 0), 1);
        EXPECT_EQ(utlWarningEx(nullptr, nullptr, "text", nullptr, 0, 0), 1);
        EXPECT_EQ(utlFileWarning(ownLibrary(), nullptr, kor::text::kFileNotFound, "name", 0), 1);
        EXPECT_EQ(utlDisplayErrorMsg(5), 1);
        EXPECT_EQ(utlFunctionNotImplemented(), 1);
        EXPECT_TRUE(shown_.take().empty());
        EXPECT_EQ(utlWarningEx(nullptr, nullptr, "always", nullptr, 0, kWarningAlways),
                  ShownWarnings::kAnswer);
        EXPECT_EQ(shown_.takeOne().text, "always");
    }
    EXPECT_EQ(utlEnableWarnings(0), 1);
    EXPECT_EQ(utlEnableWarnings(1), 0);
}

TEST_F(Warning, TheExtendedFormHasACaptionAndMayTakeAList) {
    utlWarningEx(nullptr, nullptr, "%d", "100%d", MB_OKCANCEL, 0, 5);
    ShownWarning shown = shown_.takeOne();
    EXPECT_EQ(shown.record.kind, kWarningExtended);
    EXPECT_EQ(shown.text, "5");
    EXPECT_EQ(shown.caption, "100%d") << "not formatted";
    EXPECT_EQ(shown.record.style, MB_OKCANCEL);

    utlWarningEx(ownLibrary(), nullptr, "text", number(kor::text::kButtonOk), 0, kWarningAlert);
    EXPECT_EQ(shown_.takeOne().caption, ownText(kor::text::kButtonOk));
    utlWarningEx(nullptr, nullptr, "text", number(kor::text::kButtonOk), 0, 0);
    EXPECT_EQ(shown_.takeOne().caption, "Measuring") << "a number without a module";

    KorArgumentList list;
    list.add("list").add(0.25);
    utlWarningEx(nullptr, nullptr, "%s %g", nullptr, 0, kWarningArgumentList, list.arguments());
    shown = shown_.takeOne();
    EXPECT_EQ(shown.text, "list 0.25");
    EXPECT_EQ(shown.caption, "Measuring");
    EXPECT_EQ(shown.record.arguments, list.arguments());
}

TEST_F(Warning, AFileNameIsShownAsItStands) {
    const std::string name = "C:\\50%s%n.TIF";
    struct Case {
        UINT id;
        std::string text;
        const char* reason;
    };
    const Case cases[] = {
        {kor::text::kFileNotFound, "The file '" + name + "' was not found.", "in the place of %s"},
        {kor::text::kFileFailed, ownText(kor::text::kFileFailed) + " '" + name + "'", "appended"},
        {9, " '" + name + "'", "a text that is not there is empty"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(utlFileWarning(ownLibrary(), nullptr, each.id, name.c_str(), MB_RETRYCANCEL),
                  ShownWarnings::kAnswer);
        const ShownWarning shown = shown_.takeOne();
        EXPECT_EQ(shown.text, each.text) << each.reason;
        EXPECT_EQ(shown.record.kind, kWarningFile);
        EXPECT_EQ(shown.record.textId, each.id);
        EXPECT_EQ(shown.record.style, MB_RETRYCANCEL);
        EXPECT_EQ(shown.record.arguments, nullptr);
    }
    EXPECT_EQ(utlFileWarning(ownLibrary(), nullptr, kor::text::kFileNotFound, nullptr, 0),
              ShownWarnings::kAnswer);
    EXPECT_EQ(shown_.takeOne().text, "The file '' was not found.");
    EXPECT_EQ(utlFileWarning(ownLibrary(), nullptr, kor::text::kDebugHeader, "name", 0),
              ShownWarnings::kAnswer);
    EXPECT_EQ(shown_.takeOne().text, "Error %u; No.: %u;\n 'name'") << "without a %s nothing is formatted";
}

TEST_F(Warning, ASystemErrorIsShownWithTheSystemsText) {
    EXPECT_EQ(utlDisplayErrorMsg(0), 1);
    EXPECT_TRUE(shown_.take().empty());
    EXPECT_EQ(utlDisplayErrorMsg(5), ShownWarnings::kAnswer);
    const ShownWarning shown = shown_.takeOne();
    char text[512] = "";
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, 5, MAKELANGID(0, 1),
                   text, sizeof(text), nullptr);
    EXPECT_EQ(shown.text, text);
    EXPECT_EQ(shown.caption, "GetLastError()=5");
    EXPECT_TRUE(shown.record.kind == kWarningSystemError && shown.record.style == MB_ICONINFORMATION);
    EXPECT_EQ(utlFunctionNotImplemented(), ShownWarnings::kAnswer);
    const ShownWarning missing = shown_.takeOne();
    EXPECT_EQ(missing.text, "This function is not yet implemented");
    EXPECT_EQ(missing.caption, "Measuring");
    EXPECT_TRUE(missing.record.kind == kWarningNotImplemented && missing.record.style == MB_ICONEXCLAMATION);
}

TEST_F(Warning, AnErrorIsShownVerbatim) {
    appPlaceError(1, 2, "100 % %s", nullptr, nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(appShowLastError(), 1);
    const ShownWarning shown = shown_.takeOne();
    EXPECT_EQ(shown.record.kind, kWarningText);
    EXPECT_EQ(shown.text, "100 % %s");
    appPlaceError(1, 2, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(appGetLastErrorObject()->ShowErrorMessage(), 0) << "no text";
    EXPECT_EQ(appShowLastError(), 1) << "there was an error, whether it had a text or not";
    EXPECT_TRUE(shown_.take().empty());
    appPlaceError(1, 2, std::string(1000, 'x').c_str(), nullptr, nullptr, nullptr, 0, nullptr);
    appShowLastError();
    EXPECT_EQ(shown_.takeOne().text, std::string(519, 'x'));
    appClearErrors();
}

}  // namespace
