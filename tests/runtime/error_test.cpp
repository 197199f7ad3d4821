#include "korutil/error.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "korutil/argument_list.h"
#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/runtime/own_texts.h"

namespace {

using namespace kor::test;

const char* number(UINT id) { return MAKEINTRESOURCEA(id); }

// Counts how many of its kind there are.
class CountedError : public CKorError {
  public:
    explicit CountedError(DWORD code) {
        SetError(code, 0);
        ++alive;
    }
    ~CountedError() override { --alive; }
    CKorError* Duplicate() const override { return new CountedError(GetErrorCode()); }
    void Delete() override { delete this; }
    BOOL GetErrorMessage(char*, UINT, UINT*) override { return 0; }
    void GetDebugMessage(char*, UINT) override {}

    static int alive;
};
int CountedError::alive = 0;

class ErrorRing : public testing::Test {
  protected:
    void SetUp() override { appClearErrors(); }
    void TearDown() override { appClearErrors(); }

    static void place(DWORD code) { appPlaceErrorObject(CountedError(code)); }
    static DWORD lastCode() {
        const CKorError* last = appGetLastErrorObject();
        return last ? last->GetErrorCode() : 0;
    }
};

class GeneralError : public ErrorRing {
  protected:
    static std::string userText(CGeneralError& error) {
        char text[8192];
        error.GetErrorMessage(text, sizeof(text), nullptr);
        return text;
    }
    static std::string debugText(CGeneralError& error, UINT size = 8192) {
        std::string text(8192, '#');
        error.GetDebugMessage(text.data(), size);
        EXPECT_EQ(text.substr(size), std::string(text.size() - size, '#')) << "nothing behind the buffer";
        return text.c_str();
    }
};

TEST_F(ErrorRing, KeepsTheLastEightAndDeletesTheOldest) {
    for (DWORD code = 1; code <= 8; ++code)
        place(code);
    EXPECT_EQ(CountedError::alive, 8);
    place(9);
    EXPECT_EQ(CountedError::alive, 8);
    for (DWORD code = 9; code >= 2; --code) {
        EXPECT_EQ(lastCode(), code);
        EXPECT_EQ(appRemoveLastError(), 1);
    }
    EXPECT_EQ(CountedError::alive, 0) << "the first one is not among the eight";
    EXPECT_EQ(appGetLastErrorObject(), nullptr);
    for (int empty = 0; empty < 20; ++empty)
        ASSERT_EQ(appRemoveLastError(), 0);
    for (DWORD code = 1; code <= 11; ++code)
        place(code);
    for (int round = 0; round < 10; ++round)
        appPlaceErrorObject(*appGetLastErrorObject());
    EXPECT_EQ(lastCode(), 11u) << "one of the ring may be placed again";
    appClearErrors();
    EXPECT_EQ(CountedError::alive, 0);
    EXPECT_EQ(appShowLastError(), 0);
}

TEST_F(ErrorRing, AnErrorMayClearTheRingWhileItIsDeleted) {
    struct Clearing : CountedError {
        using CountedError::CountedError;
        CKorError* Duplicate() const override { return new Clearing(GetErrorCode()); }
        void Delete() override {
            appClearErrors();
            delete this;
        }
    };
    for (DWORD code = 1; code <= 9; ++code)
        appPlaceErrorObject(Clearing(code));
    ASSERT_NE(appGetLastErrorObject(), nullptr);
    EXPECT_EQ(appGetLastErrorObject()->GetErrorCode(), 9u);
    appPlaceErrorObject(Clearing(10));
    appClearErrors();
    EXPECT_EQ(appGetLastErrorObject(), nullptr);
    EXPECT_EQ(CountedError::alive, 0);
}

TEST_F(ErrorRing, TheMemoryErrorIsOneObject) {
    EXPECT_EQ(appPlaceMemoryError(), 1);
    CKorError* const error = appGetLastErrorObject();
    EXPECT_EQ(appPlaceMemoryError(), 1);
    EXPECT_EQ(appGetLastErrorObject(), error);
    EXPECT_EQ(error->Duplicate(), error);
    error->Delete();
    EXPECT_EQ(appRemoveLastError(), 1);
    EXPECT_EQ(appRemoveLastError(), 1);
    ASSERT_TRUE(error->IsKindOf(RUNTIME_CLASS(CMemError)));
    EXPECT_EQ(error->GetErrorCode(), 14u);
    EXPECT_EQ(error->GetErrorLocation(), 0u);
    char text[64];
    UINT help = 99;
    EXPECT_EQ(error->GetErrorMessage(text, sizeof(text), &help), 1);
    EXPECT_EQ(text, ownText(kor::text::kOutOfMemory));
    EXPECT_EQ(help, 0u);
}

TEST_F(GeneralError, PlacedWithBothTexts) {
    KorArgumentList user, debug;
    user.add("IMAGE").add(3);
    debug.add(0.5);
    appPlaceError(0xE0001234, 42, "%s no. %d", user.arguments(), "scale %g", debug.arguments(), 77, nullptr);
    auto* error = static_cast<CGeneralError*>(appGetLastErrorObject());
    ASSERT_NE(error, nullptr);
    char text[64];
    UINT help = 0;
    EXPECT_EQ(error->GetErrorMessage(text, sizeof(text), &help), 1);
    EXPECT_STREQ(text, "IMAGE no. 3");
    EXPECT_EQ(help, 77u);
    EXPECT_EQ(debugText(*error), "Error 3758101044; No.: 42;\nscale 0.5");
}

TEST_F(GeneralError, TextsComeAsTextOrNumber) {
    KorArgumentList word;
    word.add("word");
    KorArgumentList empty;
    empty.add("");
    struct Case {
        const char *reason, *text;
        HINSTANCE instance;
        void* arguments;
        std::string result;
        DWORD location;  // of the error about the text; 0 for none
    };
    const Case cases[] = {
        {"as it stands", "100 % %s %n", nullptr, nullptr, "100 % %s %n", 0},
        {"a number, formatted", number(kor::text::kFileNotFound), ownLibrary(), word.arguments(),
         "The file 'word' was not found.", 0},
        {"a number without a module", number(kor::text::kUserBreak), nullptr, nullptr, "", 0},
        {"a number that is not there", number(9), ownLibrary(), nullptr, "", 1000437},
        {"refused by the formatter", "a %n", nullptr, word.arguments(), "", 1000450},
        {"formatted to nothing", "%s", nullptr, empty.arguments(), "", 1000450},
        {"an empty text", "", nullptr, nullptr, "", 0},
    };
    for (const Case& each : cases) {
        appClearErrors();
        CGeneralError error(1);
        error.SetErrorMessage("former", nullptr, 0, nullptr);
        error.SetErrorMessage(each.text, each.arguments, 0, each.instance);
        EXPECT_EQ(userText(error), each.result) << each.reason;
        auto* placed = static_cast<CGeneralError*>(appGetLastErrorObject());
        ASSERT_EQ(placed != nullptr, each.location != 0) << each.reason;
        if (!placed) continue;
        EXPECT_EQ(placed->GetErrorCode(), kErrorNoText) << each.reason;
        EXPECT_EQ(placed->GetErrorLocation(), each.location) << each.reason;
        EXPECT_EQ(userText(*placed), "") << each.reason;
    }
}

TEST_F(GeneralError, TheDebugMessageTakesAllOfATextOrNothing) {
    CGeneralError error(1);
    error.SetErrorMessage("user", nullptr, 0, nullptr);
    const std::string header = "Error 1; No.: 0;\n";
    const auto fits = static_cast<UINT>(header.size()) + 1;
    EXPECT_EQ(debugText(error, fits + 4), header + "user") << "without a debug text it is the user's";
    EXPECT_EQ(debugText(error, fits + 3), header);
    error.SetDebugMessage(0, "debugger", nullptr, nullptr);
    EXPECT_EQ(debugText(error, fits + 8), header + "debugger");
    EXPECT_EQ(debugText(error, fits + 7), header) << "the user's text would fit, but does not take its place";
    EXPECT_EQ(debugText(error, 6), "Error");
    EXPECT_EQ(debugText(error, 1), "");
    error.GetDebugMessage(nullptr, 10);
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        error.SetDebugMessage(6, text, nullptr, nullptr);
        EXPECT_EQ(debugText(error), "Error 1; No.: 6;\ndebugger") << "the location is always stored";
    }
}

TEST_F(GeneralError, TheUserTextIsCutToTheBuffer) {
    CGeneralError error(1);
    const std::string longText(5000, 'x');
    KorArgumentList list;
    list.add(longText.c_str());
    error.SetErrorMessage("%s", list.arguments(), 0, nullptr);
    EXPECT_EQ(userText(error), longText.substr(0, 4095));
    error.SetErrorMessage(longText.c_str(), nullptr, 0, nullptr);
    EXPECT_EQ(userText(error), longText) << "not formatted, not cut";
    error.SetErrorMessage(nullptr, nullptr, 0, nullptr);
    char text[8] = "#######";
    UINT help = 99;
    EXPECT_EQ(error.GetErrorMessage(text, sizeof(text), &help), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(help, 0u);
    error.SetErrorMessage("abcdef", nullptr, 12, nullptr);
    EXPECT_EQ(error.GetErrorMessage(text, 4, &help), 1);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(text[4], '#');
    EXPECT_EQ(help, 12u);
    EXPECT_EQ(error.GetErrorMessage(text, 0, nullptr), 1);
    EXPECT_STREQ(text, "abc") << "a buffer of no size is left alone";
}

TEST_F(GeneralError, ADuplicateLivesByItself) {
    auto original = std::make_unique<CGeneralError>(3);
    original->SetErrorMessage("user", nullptr, 8, nullptr);
    original->SetDebugMessage(4, "debug", nullptr, nullptr);
    EXPECT_TRUE(original->IsKindOf(RUNTIME_CLASS(CKorError)) &&
                !original->IsKindOf(RUNTIME_CLASS(CMemError)));
    original->SetError(0, 4);  // a zero leaves what there is
    auto* copy = static_cast<CGeneralError*>(original->Duplicate());
    original->SetErrorMessage("changed", nullptr, 9, nullptr);
    original.reset();
    char text[16];
    UINT help = 0;
    copy->GetErrorMessage(text, sizeof(text), &help);
    EXPECT_STREQ(text, "user");
    EXPECT_EQ(help, 8u);
    EXPECT_EQ(debugText(*copy), "Error 3; No.: 4;\ndebug");
    copy->Delete();
}

// A resource module is data from outside: its texts may ask for arguments that are not there.
TEST_F(GeneralError, TextsOfAHostileResourceModuleAreNotFormatted) {
    const HMODULE hostile = LoadLibraryExA(kor::test::besideProgram("HostileTexts.dll").c_str(), nullptr, 2);
    ASSERT_NE(hostile, nullptr) << GetLastError();
    utlSetResourceHandle(hostile);
    CGeneralError error(1);
    error.SetDebugMessage(2, "debug", nullptr, nullptr);
    EXPECT_EQ(debugText(error), "debug") << "the header asks for texts";
    try {
        appThrowFileError(2, 1, "C:\\A.TIF", 0);
    } catch (CKorException* exception) {
        char text[64];
        EXPECT_EQ(exception->GetErrorMessage(text, sizeof(text), nullptr), 0) << text;
        exception->Delete();
    }
    utlSetResourceHandle(nullptr);
    FreeLibrary(hostile);
}

}  // namespace
