// Functions of the maker's libraries come from there while the process has them loaded.
#include <gtest/gtest.h>

#include "host/bql.h"
#include "host/maker_function.h"
#include "korutil/argument_list.h"
#include "korutil/host.h"
#include "korutil/lifecycle.h"
#include "tests/host/maker_library.h"
#include "tests/runtime/recording_log.h"

namespace {

using kor::test::MakerLibrary;

int KORUTIL_CALL answer(void*) { return 7; }

TEST(MakerFunction, HooksGoToWrxWhileItIsLoaded) {
    constexpr UINT kId = 29101;
    {
        const MakerLibrary wrx("Wrx.dll");
        ASSERT_TRUE(wrx.loaded()) << GetLastError();
        EXPECT_EQ(menuInitHook(kId, answer), kMakerResult);
        EXPECT_EQ(menuCallFirstHook(kId, nullptr), kMakerResult + static_cast<int>(kId));
        EXPECT_NE(menuGetFirstHook(kId), nullptr);
        EXPECT_EQ(menuExitHook(kId), kMakerResult);
    }
    SetLastError(0xBEEF);
    EXPECT_EQ(menuCallFirstHook(kId, nullptr), 0) << "the embedded host has no such chain";
    EXPECT_EQ(GetLastError(), 0xBEEFu) << "looking for a library keeps it";
}

TEST(MakerFunction, AChainStaysWhereItWasBegun) {
    constexpr UINT kId = 29102;
    ASSERT_EQ(menuInitHook(kId, answer), 1);
    const MakerLibrary wrx("Wrx.dll");
    ASSERT_TRUE(wrx.loaded());
    EXPECT_EQ(menuCallFirstHook(kId, nullptr), 7);
    MenuHook mine = {answer, nullptr};
    EXPECT_EQ(menuCallNextHook(&mine, nullptr), kMakerResult) << "not in a chain of ours";
    MenuHook** first = menuGetFirstHook(kId);
    mine.next = *first;
    *first = &mine;
    EXPECT_EQ(menuCallNextHook(&mine, nullptr), 7) << "in a chain of ours";
    EXPECT_EQ(menuExitHook(kId), 1);
    EXPECT_EQ(menuExitHook(kId), kMakerResult) << "ended here, so it is Wrx's now";
}

TEST(MakerFunction, TheLogGoesToKorBase) {
    KorArgumentList list;
    list.add("module").add(DWORD{0x8001});
    EXPECT_EQ(dbgPrintLog(kDebugLogLoader, "ALL '%s', 0x%lx\n", list.arguments()), 1) << "to the debugger";
    const HMODULE base = appLoadLibrary("recording\\KorBase", 0, 0, kLoadWithoutLog);
    ASSERT_NE(base, nullptr) << GetLastError();
    const auto take = kor::makerFunction<TakeRecordedLine>("KorBase", "korTakeRecordedLine");
    ASSERT_NE(take, nullptr);
    RecordedLine line;
    EXPECT_EQ(dbgPrintLog(kDebugLogLoader, "ALL '%s', 0x%lx\n", list.arguments()), 1);
    EXPECT_TRUE(take(&line));
    EXPECT_EQ(line.flags, kDebugLogLoader);
    EXPECT_STREQ(line.text, "ALL 'module', 0x8001\n");
    EXPECT_EQ(dbgPrintLog(kDebugLogErrors, nullptr, nullptr), 0);
    EXPECT_FALSE(take(&line));
    FreeLibrary(base);
}

TEST(MakerFunction, FormattingAndScanningAreBqls) {
    char text[8];
    int value = 0;
    KorArgumentList list;
    list.add(&value);
    EXPECT_EQ(kor::Bql_vszprintf(text, sizeof(text), "mine", nullptr), 4);
    EXPECT_EQ(kor::Bql_vszscanf("5", 1, "%d", list.arguments()), 1);
    const MakerLibrary bql("Bql.dll");
    ASSERT_TRUE(bql.loaded()) << GetLastError();
    EXPECT_EQ(kor::Bql_vszprintf(text, sizeof(text), "mine", nullptr), kMakerResult);
    EXPECT_STREQ(text, "BBBBBBB") << "terminated whatever the library leaves";
    EXPECT_EQ(kor::Bql_vszscanf("5", 1, "%d", list.arguments()), kMakerResult);
}

}  // namespace
