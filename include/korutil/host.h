#pragma once
/// What the host application supplies to the library, and to the other modules through it: hook chains and
/// the debug log. (The bounded formatter and scanner that the library uses are the host's too, but have no
/// exported names of their own.)
///
/// Each function here belongs to one of the maker's libraries: the hook chains to Wrx, the log to KorBase,
/// the formatter and scanner (`Bql_vszprintf`, `Bql_vszscanf`) to Bql. When the process has that library
/// loaded and it exports the function, with the signature given here, the call goes there; otherwise the host
/// embedded in this library does the work, so that it is complete by itself.
///
/// A chain stays where it was begun: one begun here is used here, also when Wrx is loaded later.
///
/// All of it is meant for the host's user-interface thread; nothing here is guarded.

#include "korutil/platform.h"

// --------------------------------------------------------------------------------------------- hook chains
//
// A hook is a numbered entry point (14033 channel change notice, 14041 macro text, 14043 recording begins or
// ends, 14061 warning display). Its handlers form a chain; a call goes to the first, which may handle the
// record itself, hand it on with `menuCallNextHook`, or both. The last in a chain is the default handler, if
// it has one.
//
// A handler is added by linking a record of one's own in front:
//
//     static int KORUTIL_CALL showMine(void* record) { ... return menuCallNextHook(&mine, record); }
//     static MenuHook mine = {showMine, nullptr};
//
//     if (MenuHook** first = menuGetFirstHook(14061)) { mine.next = *first; *first = &mine; }
//
// and removed by linking around it. The last record of a chain is the library's own; it never writes into one
// of a caller's.

/// Handles a hook's record.
/// @param record  what the hook is called with; for 14061 a `UtlWarningRecord*`
/// @return what the hook documents; for 14061 the button pressed
using MenuHookHandler = int(KORUTIL_CALL*)(void* record);

/// One handler in a chain. It belongs to the one who linked it and must live until it is unlinked, or until
/// `menuExitHook` ends the chain.
struct MenuHook {
    MenuHookHandler handler;
    MenuHook* next;
};

/// Begins a hook's chain. For an id that has one already the default handler is replaced and the handlers
/// that were linked in front stay.
/// @param defaultHandler  called when no handler before it has kept the record; may be null
/// @return 1; 0 when memory is short
KORUTIL_API int KORUTIL_CALL menuInitHook(UINT id, MenuHookHandler defaultHandler);

/// Ends a hook's chain; handlers that are still linked are no longer called. Warnings of a library whose hook
/// 14061 was ended go to its default display.
/// @return 1; 0 when the id has no chain
KORUTIL_API int KORUTIL_CALL menuExitHook(UINT id);

/// @return address of the pointer to the first handler's record, for linking; null when the id has no chain
KORUTIL_API MenuHook** KORUTIL_CALL menuGetFirstHook(UINT id);

/// Hands a record to the first handler of a hook.
/// @return the handler's result; 0 when the id has no chain or the chain no handler
KORUTIL_API int KORUTIL_CALL menuCallFirstHook(UINT id, void* record);

/// Hands a record to the handler behind one.
/// @param hook  the caller's own record, linked or not (one that is not linked any more still knows its next)
/// @return the handler's result; 0 when there is none behind it
KORUTIL_API int KORUTIL_CALL menuCallNextHook(const MenuHook* hook, void* record);

// -------------------------------------------------------------------------------------------------- the log

inline constexpr DWORD kDebugLogErrors = 8;   ///< an error's debug text
inline constexpr DWORD kDebugLogLoader = 32;  ///< a library is being loaded

/// Writes to the host's debug log. The embedded host formats the text (at most 8191 characters) and hands it
/// to the debugger, whatever the flags.
/// @param flags      what the text is about
/// @param format     text with conversions
/// @param arguments  argument list (KORUTIL_ARGUMENTS, KorArgumentList); null when the text is to be written
/// as
///                   it stands
/// @return 1; 0 when the text could not be formatted or memory is short
KORUTIL_API int KORUTIL_CALL dbgPrintLog(DWORD flags, const char* format, void* arguments);
