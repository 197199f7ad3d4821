#pragma once
/// Texts and code pages under the system's names.
///
/// The ANSI code page is the environment's KORUTIL_CODEPAGE when the first function asks: 1252 (the default),
/// 932, 936 or 65001 (UTF-8); anything else counts as 1252. The double-byte pages come from the C library's
/// converters; when those are not installed, conversions from and to these pages fail with
/// ERROR_INVALID_PARAMETER and every byte counts as a single one. Letter case and order never depend on the
/// locale.

#include "korutil/platform.h"

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;  ///< the ANSI code page here
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;

inline constexpr DWORD MB_PRECOMPOSED = 0x01;
inline constexpr DWORD MB_COMPOSITE = 0x02;
inline constexpr DWORD MB_USEGLYPHCHARS = 0x04;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x08;
inline constexpr DWORD WC_DISCARDNS = 0x10;
inline constexpr DWORD WC_SEPCHARS = 0x20;
inline constexpr DWORD WC_DEFAULTCHAR = 0x40;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
inline constexpr DWORD WC_COMPOSITECHECK = 0x200;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

inline constexpr LCID LOCALE_INVARIANT = 0x7F;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x800;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x400;
inline constexpr DWORD NORM_IGNORECASE = 1;
inline constexpr int CSTR_LESS_THAN = 1;
inline constexpr int CSTR_EQUAL = 2;
inline constexpr int CSTR_GREATER_THAN = 3;

/// @return the ANSI code page: 1252, 932, 936 or 65001
KORPLATFORM_API UINT WINAPI GetACP();

/// Text of a code page to UTF-16.
/// @param flags   MB_ERR_INVALID_CHARS: invalid text fails with ERROR_NO_UNICODE_TRANSLATION; without it an
/// invalid
///                sequence becomes U+FFFD (65001) or the page's replacement (932, 936)
/// @param length  bytes of `text`, -1 when it ends in a zero, which is then converted too; 0 is an error
/// @param size    characters that `buffer` holds, 0 to ask for the number needed
/// @return characters written or needed; 0 on failure: ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER,
///         ERROR_INVALID_FLAGS, ERROR_NO_UNICODE_TRANSLATION
KORPLATFORM_API int WINAPI MultiByteToWideChar(UINT page, DWORD flags, LPCSTR text, int length, LPWSTR buffer,
                                               int size);

/// UTF-16 to text of a code page. There is no best fit: a character that the page lacks becomes the default
/// character (`?` when that is null). For 65001 both of the last arguments must be null, and a lone surrogate
/// becomes U+FFFD, or fails under WC_ERR_INVALID_CHARS.
/// @return bytes written or needed; 0 on failure, as above
KORPLATFORM_API int WINAPI WideCharToMultiByte(UINT page, DWORD flags, LPCWSTR text, int length, LPSTR buffer,
                                               int size, LPCSTR defaultCharacter, LPBOOL usedDefault);

/// TRUE for the first byte of a two-byte character of the ANSI code page; never in 1252 and 65001.
KORPLATFORM_API BOOL WINAPI IsDBCSLeadByte(BYTE byte);
KORPLATFORM_API BOOL WINAPI IsDBCSLeadByteEx(UINT page, BYTE byte);

/// The next character; the same one at the end of the text. A lead byte before the end counts as a single
/// byte.
KORPLATFORM_API LPSTR WINAPI CharNextA(LPCSTR current);

/// The character before `current` in the text that begins at `start`; `start` at the start.
KORPLATFORM_API LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR current);

/// Changes letter case in place, or of one character given as a number below 0x10000, which is then returned.
KORPLATFORM_API LPSTR WINAPI CharUpperA(LPSTR text);
KORPLATFORM_API LPSTR WINAPI CharLowerA(LPSTR text);
/// @return the number of bytes handled
KORPLATFORM_API DWORD WINAPI CharUpperBuffA(LPSTR text, DWORD length);
KORPLATFORM_API DWORD WINAPI CharLowerBuffA(LPSTR text, DWORD length);

KORPLATFORM_API BOOL WINAPI IsCharAlphaA(CHAR character);
KORPLATFORM_API BOOL WINAPI IsCharAlphaNumericA(CHAR character);
KORPLATFORM_API BOOL WINAPI IsCharUpperA(CHAR character);
KORPLATFORM_API BOOL WINAPI IsCharLowerA(CHAR character);

/// @return the length in bytes, 0 for null
KORPLATFORM_API int WINAPI lstrlenA(LPCSTR text);

/// Copies at most `size` - 1 bytes and a terminator. @return `target`; null when an argument is null
KORPLATFORM_API LPSTR WINAPI lstrcpynA(LPSTR target, LPCSTR source, int size);
KORPLATFORM_API LPSTR WINAPI lstrcpyA(LPSTR target, LPCSTR source);
KORPLATFORM_API LPSTR WINAPI lstrcatA(LPSTR target, LPCSTR source);

/// Word order: punctuation before digits before letters, accents and then case only where all else is equal
/// (`a` before `A` before `b`); lstrcmpiA without case. A null text stands before every other.
/// @return negative, 0 or positive
KORPLATFORM_API int WINAPI lstrcmpA(LPCSTR first, LPCSTR second);
KORPLATFORM_API int WINAPI lstrcmpiA(LPCSTR first, LPCSTR second);

/// The same order for counted texts (-1: ends in a zero). The locale is not looked at.
/// @return CSTR_LESS_THAN, CSTR_EQUAL, CSTR_GREATER_THAN; 0 on failure (null text, flags other than
/// NORM_IGNORECASE)
KORPLATFORM_API int WINAPI CompareStringA(LCID locale, DWORD flags, LPCSTR first, int firstLength,
                                          LPCSTR second, int secondLength);
