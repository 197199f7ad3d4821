#include "korutil/lifecycle.h"

#include <xmmintrin.h>

#include <array>
#include <cfenv>

#include "korutil/error.h"
#include "korutil/host.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "runtime/process_state.h"
#include "runtime/reserve.h"
#include "runtime/stock_objects.h"
#include "services/reserve_setting.h"

namespace kor {
namespace {

constexpr UINT kMacroTextHook = 14041;
constexpr UINT kWarningHook = 14061;
constexpr WORD kCursor = 105;
constexpr WORD kSystemDialogClass = 32770;
constexpr DWORD kResourceVersion = 0x10002;
constexpr unsigned int kSseDefault = 0x1F80;  // all traps masked, none pending, rounding to nearest
constexpr std::array<const char*, 2> kDialogClasses = {"KorRegDlg32", "KorRegDlg"};

// The library's entry point on both targets: made while the library is loaded, destroyed while it is
// unloaded. The system's loader holds its lock then, so nothing is made here that loads modules or waits for
// a thread.
class Presence {
  public:
    Presence() {
        processState();
        reserveSize().keepIn(&reserveSetting());
    }
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;
    ~Presence() {
        appClearErrors();
        releaseStockObjects();
    }
};
const Presence presence;

bool loadCursor(ProcessState& state) {
    state.cursor = LoadCursorA(state.library, MAKEINTRESOURCEA(kCursor));
    state.host = GetModuleHandleA(nullptr);
    return state.cursor != nullptr;
}

// A dialog class differs from the system's own only in name and owner. Where the system has no dialogs the
// class is a plain one.
WNDCLASSA dialogClass(HINSTANCE library) {
    WNDCLASSA dialog{};
    if (!GetClassInfoA(nullptr, MAKEINTRESOURCEA(kSystemDialogClass), &dialog))
        dialog.lpfnWndProc = DefWindowProcA;
    dialog.style &= ~static_cast<UINT>(CS_GLOBALCLASS);
    dialog.hInstance = library;
    dialog.hIcon = nullptr;
    dialog.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    dialog.hbrBackground = static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    dialog.lpszMenuName = nullptr;
    return dialog;
}

// A class may still be there when a window of it outlived the last utlExitDLL.
bool registerDialogClasses(HINSTANCE library) {
    WNDCLASSA dialog = dialogClass(library);
    for (const char* name : kDialogClasses) {
        dialog.lpszClassName = name;
        if (!RegisterClassA(&dialog) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return false;
    }
    return true;
}

int KORUTIL_CALL showWarning(void* record) {
    return utlShowWarningProc(static_cast<UtlWarningRecord*>(record));
}

bool registerHooks(ProcessState& state) {
    if (!menuInitHook(kMacroTextHook, nullptr)) return false;
    state.displayHook = menuInitHook(kWarningHook, showWarning);
    return state.displayHook != 0;
}

}  // namespace
}  // namespace kor

BOOL KORUTIL_CALL utlInitDLL1(const char* caption) {
    kor::ProcessState& state = kor::processState();
    state.caption = caption ? caption : kor::kFirstCaption;
    return kor::loadCursor(state) && kor::registerDialogClasses(state.library) && kor::registerHooks(state);
}

BOOL KORUTIL_CALL utlInitDLL2(HWND mainWindow) {
    kor::processState().mainWindow = mainWindow;
    return TRUE;
}

BOOL KORUTIL_CALL utlExitDLL() {
    kor::ProcessState& state = kor::processState();
    menuExitHook(kor::kMacroTextHook);
    menuExitHook(kor::kWarningHook);
    state.mainWindow = nullptr;
    const bool released = kor::releaseStockObjects();
    state.displayHook = 0;
    for (const char* name : kor::kDialogClasses)
        UnregisterClassA(name, state.library);
    return released;
}

HINSTANCE KORUTIL_CALL utlGetResourceHandle() { return kor::processState().resources; }

HINSTANCE KORUTIL_CALL utlSetResourceHandle(HINSTANCE module) {
    HINSTANCE& current = kor::processState().resources;
    HINSTANCE former = current;
    current = module;
    return former;
}

DWORD KORUTIL_CALL RequiredResourceDllVersion() { return kor::kResourceVersion; }

// Not every runtime's call reaches the SSE unit.
void KORUTIL_CALL appResetFP() {
    std::fesetenv(FE_DFL_ENV);
    _mm_setcsr(kor::kSseDefault);
}
