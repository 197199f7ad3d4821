// Message boxes without a screen.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <string>

#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

// Puts another file in the place of a descriptor for a while.
class Redirected {
  public:
    Redirected(int descriptor, int replacement) : descriptor_(descriptor), before_(dup(descriptor)) {
        dup2(replacement, descriptor);
    }
    ~Redirected() {
        dup2(before_, descriptor_);
        close(before_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

  private:
    int descriptor_;
    int before_;
};

class Terminal {
  public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master_);
        unlockpt(master_);
        slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
        termios settings{};
        tcgetattr(slave_, &settings);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(slave_, TCSANOW, &settings);
    }
    ~Terminal() {
        close(slave_);
        close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    int slave() const { return slave_; }
    void type(const std::string& keys) const {
        EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    // What was written so far: it arrives piece by piece.
    std::string shown() const {
        std::string text;
        pollfd ready{master_, POLLIN, 0};
        char piece[256];
        while (poll(&ready, 1, kPatience) > 0) {
            const ssize_t count = read(master_, piece, sizeof(piece));
            if (count <= 0) break;
            text.append(piece, static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    static constexpr int kPatience = 200;  // milliseconds

    int master_;
    int slave_ = -1;
};

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
