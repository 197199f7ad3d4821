// Message boxes without a screen.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "platform/win32.h"
#include "tests/support/scratch.h"
#include "tests/support/terminal_native.h"

namespace {

using kor::test::Redirected;
using kor::test::Terminal;

constexpr char kEndOfInput[] = "\x04";

int answerTo(UINT style, const std::string& keys, std::string* shown = nullptr) {
    const Terminal terminal;
    terminal.type(keys);
    const Redirected input(STDIN_FILENO, terminal.slave()), error(STDERR_FILENO, terminal.slave());
    const int answer = MessageBoxA(nullptr, "Sure?", "Lumetra", style);
    if (shown) *shown = terminal.shown();
    return answer;
}

}  // namespace

TEST(MessageBoxNative, WritesTheTextInUtf8) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr,
                          "Datei \xFC"
                          "ber\r\nzwei Zeilen \x1B[2J\n",
                          "Gr\xF6\xDF"
                          "e",
                          MB_ICONSTOP),
              IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "x", nullptr, MB_OK), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Gr\xC3\xB6\xC3\x9F"
              "e: Datei \xC3\xBC"
              "ber\nzwei Zeilen ?[2J\nError: x\n");
}

TEST(MessageBoxNative, AnswersWithTheDefaultButtonWhereNobodyCanBeAsked) {
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const Redirected input(STDIN_FILENO, null);
    close(null);
    struct {
        UINT style;
        int answer;
    } const cases[] = {
        {MB_OK, IDOK},
        {MB_OKCANCEL, IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON2 | MB_ICONQUESTION, IDCANCEL},
        {MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, IDIGNORE},
        {MB_YESNOCANCEL | MB_DEFBUTTON2, IDNO},
        {MB_YESNO | MB_DEFBUTTON3, IDYES},
        {MB_RETRYCANCEL | MB_TASKMODAL, IDRETRY},
        {MB_CANCELTRYCONTINUE | MB_DEFBUTTON3, IDCONTINUE},
    };
    testing::internal::CaptureStderr();
    for (const auto& each : cases)
        EXPECT_EQ(MessageBoxA(nullptr, "?", "?", each.style), each.answer) << each.style;
    SetLastError(0);
    EXPECT_EQ(MessageBoxA(nullptr, "?", "?", 7), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MSGBOX_STYLE);
    testing::internal::GetCapturedStderr();
}

TEST(MessageBoxNative, AsksAQuestionOnATerminal) {
    struct {
        UINT style;
        const char* keys;
        int answer;
    } const cases[] = {
        {MB_YESNO, "n\n", IDNO},
        {MB_YESNO, "  YES \n", IDYES},
        {MB_YESNO | MB_DEFBUTTON2, "\n", IDNO},
        {MB_YESNOCANCEL, "x\nyesno\nc\n", IDCANCEL},
        {MB_CANCELTRYCONTINUE, "c\nco\n", IDCONTINUE},
        {MB_OKCANCEL | MB_DEFBUTTON2, kEndOfInput, IDCANCEL},
    };
    for (const auto& each : cases)
        EXPECT_EQ(answerTo(each.style, each.keys), each.answer) << each.keys;
    std::string shown;
    EXPECT_EQ(answerTo(MB_YESNO, "y\n", &shown), IDYES);
    EXPECT_EQ(shown, "Lumetra: Sure?\r\nYes / No [Yes]: ");
    answerTo(MB_OK, "", &shown);
    EXPECT_EQ(shown, "Lumetra: Sure?\r\n") << "one button is no question";
}

TEST(MessageBoxNative, TakesTextsFromResources) {
    const HMODULE library = LoadLibraryA("KorTestL.dll");
    ASSERT_NE(library, nullptr);
    MSGBOXPARAMSA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.hInstance = library;
    parameters.lpszText = MAKEINTRESOURCEA(32);
    parameters.lpszCaption = MAKEINTRESOURCEA(1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxIndirectA(&parameters), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "One: Block three\n");
    parameters.cbSize = 4;
    EXPECT_EQ(MessageBoxIndirectA(&parameters), 0);
    FreeLibrary(library);
}
