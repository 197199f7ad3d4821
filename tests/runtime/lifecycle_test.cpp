#include "korutil/lifecycle.h"

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <set>
#include <string>

#include "korutil/host.h"
#include "korutil/profile.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

constexpr UINT kWarningHook = 14061;
constexpr UINT kMacroTextHook = 14041;
constexpr unsigned kSseDefault = 0x1F80;  // all traps masked, none pending, to nearest

const char* shownCaption = nullptr;
int KORUTIL_CALL keepCaption(void* record) {
    shownCaption = static_cast<UtlWarningRecord*>(record)->caption;
    return IDOK;
}
MenuHook captionHook = {keepCaption, nullptr};

// The caption of a warning that goes through the display hook.
const char* captionOfAWarning() {
    shownCaption = nullptr;
    MenuHook** first = menuGetFirstHook(kWarningHook);
    if (!first) return "no display hook";
    captionHook.next = *first;
    *first = &captionHook;
    utlWarning(nullptr, nullptr, "text", MB_OK);
    *first = captionHook.next;
    return shownCaption;
}

bool hasDialogClass(const char* name, WNDCLASSA* found = nullptr) {
    WNDCLASSA record{};
    const bool known = GetClassInfoA(GetModuleHandleA("KorUtil"), name, &record) != FALSE;
    if (found) *found = record;
    return known;
}

class Lifecycle : public testing::Test {
  protected:
    void TearDown() override { utlExitDLL(); }
};

}  // namespace

TEST_F(Lifecycle, TheFirstStartCallSendsWarningsThroughTheHookWithTheCaption) {
    const char caption[] = "Product";
    ASSERT_TRUE(utlInitDLL1(caption));
    EXPECT_EQ(captionOfAWarning(), caption) << "kept by pointer";
    ASSERT_TRUE(utlInitDLL1(nullptr));
    EXPECT_STREQ(captionOfAWarning(), "Lumetra");
}

TEST_F(Lifecycle, TheMacroHookHasNoDefaultHandler) {
    ASSERT_TRUE(utlInitDLL1("Product"));
    MenuHook** first = menuGetFirstHook(kMacroTextHook);
    ASSERT_NE(first, nullptr);
    int record = 0;
    EXPECT_EQ(menuCallFirstHook(kMacroTextHook, &record), 0);
}

TEST_F(Lifecycle, StartAndEndMayBeRepeated) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(utlInitDLL1("Product")) << round << ": " << GetLastError();
        EXPECT_TRUE(utlInitDLL2(nullptr));
        ASSERT_TRUE(utlInitDLL1("Product")) << "started twice";
        for (const char* name : {"KorRegDlg32", "KorRegDlg"}) {
            WNDCLASSA found{};
            EXPECT_TRUE(hasDialogClass(name, &found));
            EXPECT_EQ(found.hCursor, LoadCursorA(nullptr, IDC_ARROW));
            EXPECT_EQ(found.hbrBackground, static_cast<HBRUSH>(GetStockObject(NULL_BRUSH)));
        }
        EXPECT_TRUE(utlExitDLL());
        EXPECT_FALSE(hasDialogClass("KorRegDlg32"));
        EXPECT_FALSE(hasDialogClass("KorRegDlg"));
        EXPECT_EQ(menuGetFirstHook(kWarningHook), nullptr);
        EXPECT_EQ(menuGetFirstHook(kMacroTextHook), nullptr);
    }
}

TEST_F(Lifecycle, TheResourceHandleIsExchanged) {
    const HINSTANCE module = GetModuleHandleA(nullptr);
    EXPECT_EQ(utlGetResourceHandle(), nullptr);
    EXPECT_EQ(utlSetResourceHandle(module), nullptr);
    EXPECT_EQ(utlGetResourceHandle(), module);
    EXPECT_EQ(utlSetResourceHandle(nullptr), module);
    EXPECT_EQ(utlGetResourceHandle(), nullptr);
}

TEST_F(Lifecycle, EighteenDrawingObjectsAreShared) {
    std::set<HGDIOBJ> objects;
    for (WORD index = 0; index < 18; ++index) {
        const HGDIOBJ object = utlGetStockObject(index);
        EXPECT_NE(object, nullptr) << index;
        EXPECT_EQ(utlGetStockObject(index), object) << index;
        objects.insert(object);
    }
    EXPECT_EQ(objects.size(), 18u);
    EXPECT_EQ(utlGetStockObject(18), nullptr);
    EXPECT_EQ(utlGetStockObject(0xFFFF), nullptr);
    EXPECT_TRUE(utlExitDLL());
    EXPECT_NE(utlGetStockObject(0), nullptr) << "made anew after the end";
}

TEST_F(Lifecycle, TheDefaultFontIsTheOneOfTheSetting) {
    const struct {
        const char* setting;
        const char* face;
        LONG height;
    } cases[] = {{"Courier New,18", "Courier New", -18}, {"A,B,4", "A,B", -4}};
    const char* const refused[] = {"Courier New", "Courier New,3", "Courier New,201", ",x", ""};
    const kor::test::ScratchFolder folder;
    const std::string profile = folder.path("font.ini");
    appSetProfiles(profile.c_str(), profile.c_str());
    const auto fontOf = [](const char* setting) {
        appWriteProfileString("KorUtil", "DftFont", setting, kProfileUser, nullptr);
        utlExitDLL();
        return utlGetStockObject(0);
    };
    for (const auto& one : cases) {
        LOGFONTA font{};
        EXPECT_EQ(GetObjectA(fontOf(one.setting), sizeof font, &font), int{sizeof font});
        EXPECT_STREQ(font.lfFaceName, one.face);
        EXPECT_EQ(font.lfHeight, one.height);
    }
    for (const char* setting : refused)
        EXPECT_EQ(fontOf(setting), GetStockObject(DEFAULT_GUI_FONT)) << setting;
    appSetProfiles("", "");
}

TEST(FloatingPointReset, BringsBothUnitsToTheirDefaultState) {
    const unsigned short start = [] {
        unsigned short control = 0;
        asm volatile("fninit\n\tfnstcw %0" : "=m"(control));
        return control;
    }();
    _mm_setcsr((kSseDefault & ~0x0080u) |
               0x6004u);                // no trap for invalid operations, towards zero, one pending
    const unsigned short odd = 0x0C72;  // round towards zero, single precision, traps
    asm volatile("fldcw %0" : : "m"(odd));
    appResetFP();
    unsigned short control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    EXPECT_EQ(_mm_getcsr(), kSseDefault);
    EXPECT_EQ(control & 0x0C3F, start & 0x0C3F) << "rounding and traps";
    EXPECT_EQ(control & 0x0300, 0x0300) << "precision";
}
