#pragma once
/// Installation data in the system's registry, below one fixed key: "software\Quorvex\Lumetra\3.0" of
/// HKEY_LOCAL_MACHINE. Natively the registry is read from text files, see korutil/platform/registry.h.
///
///     if (HKEY key = appOpenRegKey(kRegKeyDirectories, KEY_READ, nullptr)) {
///         char folder[MAX_PATH];
///         if (appGetRegString(key, "Images", folder, sizeof folder, nullptr)) ...
///         appCloseRegKey(key);
///     }
///
/// A value's name is a text, or the number (below 0x10000) of a string resource of `module`.

#include "korutil/platform.h"
#include "korutil/platform/registry.h"

inline constexpr UINT_PTR kRegKeyUserInfo = 1;     ///< "UserInfo"
inline constexpr UINT_PTR kRegKeyUrlInfo = 2;      ///< "URLInfo"
inline constexpr UINT_PTR kRegKeyDirectories = 3;  ///< "Directories"

/// Opens a key.
/// @param subkey  kRegKey..., any other number of a string resource of `module` (with a null module: the
///                fixed key itself), or the address of a text (of 0x10000 and more)
/// @param access  the system's access mask (KEY_READ, ...)
/// @return the key; null when it cannot be opened, the string cannot be loaded, or the whole path with its
///         terminator takes more than 256 characters
KORUTIL_API HKEY KORUTIL_CALL appOpenRegKey(UINT_PTR subkey, DWORD access, HINSTANCE module);

/// Closes a key; null is let be.
/// @return 1 when a key was closed, else 0
KORUTIL_API BOOL KORUTIL_CALL appCloseRegKey(HKEY key);

/// Reads a text.
/// @param valueName  null or empty for the key's default value
/// @param buffer     receives the text, terminated
/// @param size       of `buffer`
/// @return 1; 0, when there is no such value, it is not of type REG_SZ (the buffer is then empty), it does
/// not fit
///         with its terminator, or its name is a number that cannot be loaded or has no module
KORUTIL_API BOOL KORUTIL_CALL appGetRegString(HKEY key, const char* valueName, char* buffer, DWORD size,
                                              HINSTANCE module);

/// Reads a number.
/// @param result  receives the value; untouched on failure
/// @return 1; 0 when there is no such value, it is not of type REG_DWORD, it has more than 4 bytes, or its
///         name is a number that cannot be loaded or has no module
KORUTIL_API BOOL KORUTIL_CALL appGetRegDWORD(HKEY key, const char* valueName, DWORD* result,
                                             HINSTANCE module);
