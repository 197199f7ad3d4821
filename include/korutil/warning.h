#pragma once
/// Warnings to the user and traces to the debugger.
///
/// Every warning goes to the display hook 14061 once `utlInitDLL1` has registered it, and before that, or
/// after `utlExitDLL`, straight to `utlShowWarningProc`. A host that shows warnings in its own manner links a
/// handler into that hook (see korutil/host.h). All warnings can be switched off for a time
/// (`CUtlEnableWarnings`).
///
/// A text or caption argument is a text, or the number (below 0x10000) of a string resource of the module
/// given. A text is always formatted, so a `%` in it that is to be shown is written `%%`; a text from outside
/// goes in as an argument of "%s". A formatted text ends at 8191 characters.
///
/// The switch and the tracing depth are process-wide and unguarded.

#include "korutil/platform.h"

/// Who sends a warning, and so how the default display procedure shows it.
inline constexpr UINT_PTR kWarningFile = 1;            ///< utlFileWarning: message box
inline constexpr UINT_PTR kWarningText = 2;            ///< utlWarning: message box
inline constexpr UINT_PTR kWarningExtended = 3;        ///< utlWarningEx: message box
inline constexpr UINT_PTR kWarningSystemError = 4;     ///< utlDisplayErrorMsg: message box
inline constexpr UINT_PTR kWarningReserved = 5;        ///< other callers: message box
inline constexpr UINT_PTR kWarningNotImplemented = 6;  ///< utlFunctionNotImplemented: message box
inline constexpr UINT_PTR kWarningDialog = 7;          ///< other callers: the library's own warning dialog
inline constexpr UINT_PTR kWarningIndirect = 8;        ///< other callers: MessageBoxIndirectA

/// What a display handler receives. Its layout is fixed: 28 pointer-sized words (32-bit words on the 32-bit
/// target), all of them 0 behind the eighth.
struct UtlWarningRecord {
    UINT_PTR kind;        ///< kWarning...
    HWND parent;          ///< parent window
    const char* text;     ///< the formatted message
    const char* caption;  ///< its caption
    UINT_PTR style;       ///< message-box style (MB_...)
    void* arguments;      ///< the caller's formatting arguments, or null
    /// Module of the text (an HINSTANCE). For kind 8 the MSGBOXPARAMSA to show; for kind 7 a pointer for the
    /// dialog.
    void* instance;
    UINT_PTR textId;        ///< the text's string number, or 0
    UINT_PTR reserved[20];  ///< 0
};

static_assert(sizeof(UtlWarningRecord) == 28 * sizeof(void*));
static_assert(offsetof(UtlWarningRecord, caption) == 3 * sizeof(void*));
static_assert(offsetof(UtlWarningRecord, textId) == 7 * sizeof(void*));
static_assert(sizeof(void*) != 4 || sizeof(UtlWarningRecord) == 112);

/// @return whether warnings are shown; at first they are
KORUTIL_API BOOL KORUTIL_CALL utlWarningsEnabled();

/// Switches warnings on or off. @return the previous value
KORUTIL_API BOOL KORUTIL_CALL utlEnableWarnings(BOOL enable);

/// Switches warnings on or off for a scope.
class KORUTIL_CLASS CUtlEnableWarnings {
  public:
    explicit CUtlEnableWarnings(BOOL enable);
    CUtlEnableWarnings(const CUtlEnableWarnings&) = delete;
    CUtlEnableWarnings& operator=(const CUtlEnableWarnings&) = delete;
    ~CUtlEnableWarnings();

  private:
    BOOL m_bPrevious;
};

/// Shows a formatted message with the product caption.
/// @param instance  module of the text when it is a number; with null a number is no text
/// @param parent    null for the host's main window
/// @param textOrId  text or string number; its conversions take the arguments that follow
/// @param style     message-box style (MB_...)
/// @return the button pressed (the display handler's result); 1 when warnings are switched off; 0 when there
/// is no
///         text, or it cannot be formatted, or memory is short (which is shown)
KORUTIL_API int utlWarning(HINSTANCE instance, HWND parent, const char* textOrId, UINT style, ...);

inline constexpr UINT kWarningArgumentList =
    1;                                     ///< the one argument is a pointer to the list of the arguments
inline constexpr UINT kWarningAlways = 2;  ///< shown even when warnings are switched off
inline constexpr UINT kWarningAlert = 4;   ///< first calls appAlertIfInactive with 0

/// Shows a formatted message with a caption of its own.
/// @param captionOrId  text or string number of `instance`, not formatted; null, or a number that is not
/// there,
///                     for the product caption
/// @param flags        kWarningArgumentList, kWarningAlways, kWarningAlert combined
/// @return as utlWarning
KORUTIL_API int utlWarningEx(HINSTANCE instance, HWND parent, const char* textOrId, const char* captionOrId,
                             UINT style, UINT flags, ...);

/// Shows a message about a file, with the product caption.
/// @param textId    string number of `instance` (at most 255 characters are used). If the text has a "%s",
/// the
///                  file name takes its place; else the name is appended in single quotes
/// @param fileName  shown as it stands, whatever characters it has; null counts as empty
/// @return as utlWarning; also 0 for a text that has conversions besides one "%s"
KORUTIL_API int KORUTIL_CALL utlFileWarning(HINSTANCE instance, HWND parent, UINT textId,
                                            const char* fileName, UINT style);

/// Shows the system's text for one of its error codes (information icon, caption "GetLastError()=" and the
/// code). Where the system has none, memory is reported to be short instead, whatever the cause; that is
/// required.
/// @return the button pressed; 1 when warnings are switched off or the code is 0; 0 when there was no text
KORUTIL_API int KORUTIL_CALL utlDisplayErrorMsg(DWORD systemErrorCode);

/// Says that a function is not yet implemented.
/// @return the button pressed; 1 when warnings are switched off
KORUTIL_API int KORUTIL_CALL utlFunctionNotImplemented();

/// The default display procedure: shows kinds 1 to 6 in a message box, kind 7 in the library's own warning
/// dialog (natively, without a screen, as a message box too), kind 8 with MessageBoxIndirectA. A handler of
/// hook 14061 may fall back on it.
/// @return the button pressed; 0 for null and for any other kind, which show nothing
KORUTIL_API int KORUTIL_CALL utlShowWarningProc(UtlWarningRecord* record);

/// Draws the user's attention (a beep) when the host's main window exists and another application is active.
/// @param beep  sound of the beep (MB_ICON..., 0 for the default)
/// @return 1 when the user was alerted, else 0
KORUTIL_API BOOL KORUTIL_CALL appAlertIfInactive(UINT beep);

/// Held while something is shown to the user: the outermost one calls `appAlertIfInactive` with 0.
class KORUTIL_CLASS CKorAlertIfInactive {
  public:
    CKorAlertIfInactive();
    CKorAlertIfInactive(const CKorAlertIfInactive&) = delete;
    CKorAlertIfInactive& operator=(const CKorAlertIfInactive&) = delete;
    ~CKorAlertIfInactive();
};

/// Sends a formatted text (at most 8191 characters) to the debugger. A text that cannot be formatted is not
/// sent.
KORUTIL_API void dbgPrint(const char* format, ...);

/// Traces a function to the debugger: its entry when constructed, its result and duration when destroyed,
/// both indented by the number of traced functions that are running.
class KORUTIL_CLASS CDebugFknOutput {
  public:
    /// @param name      of the function; the first 50 characters are kept
    /// @param result    the function's result, read at its end; may be null
    /// @param disabled  non-zero: nothing is traced
    CDebugFknOutput(const char* name, int* result, int disabled);
    CDebugFknOutput(const CDebugFknOutput&) = delete;
    CDebugFknOutput& operator=(const CDebugFknOutput&) = delete;
    ~CDebugFknOutput();

    static int m_iFuncStackCounter;  ///< how many traced functions are running

  private:
    DWORD m_dwStart;
    char m_szName[50];  // a name of 50 characters or more has no terminator here; that is required
    int* m_piResult;
    int m_iDisabled;
};
