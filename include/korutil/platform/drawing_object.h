#pragma once
/// Cursors and stock objects under the system's names. On Windows they are the system's own. Elsewhere
/// nothing is drawn: cursors and objects are handles that can be looked up, compared and kept in a window
/// class.

#include "korutil/platform.h"

#ifndef _WIN32

#define IDC_ARROW MAKEINTRESOURCEA(32512)
#define IDC_IBEAM MAKEINTRESOURCEA(32513)
#define IDC_WAIT MAKEINTRESOURCEA(32514)
#define IDC_CROSS MAKEINTRESOURCEA(32515)
#define IDC_UPARROW MAKEINTRESOURCEA(32516)
#define IDC_SIZENWSE MAKEINTRESOURCEA(32642)
#define IDC_SIZENESW MAKEINTRESOURCEA(32643)
#define IDC_SIZEWE MAKEINTRESOURCEA(32644)
#define IDC_SIZENS MAKEINTRESOURCEA(32645)
#define IDC_SIZEALL MAKEINTRESOURCEA(32646)
#define IDC_NO MAKEINTRESOURCEA(32648)
#define IDC_APPSTARTING MAKEINTRESOURCEA(32650)

inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int DKGRAY_BRUSH = 3;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int OEM_FIXED_FONT = 10;
inline constexpr int ANSI_FIXED_FONT = 11;
inline constexpr int ANSI_VAR_FONT = 12;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEVICE_DEFAULT_FONT = 14;
inline constexpr int DEFAULT_PALETTE = 15;
inline constexpr int SYSTEM_FIXED_FONT = 16;
inline constexpr int DEFAULT_GUI_FONT = 17;
inline constexpr int DC_BRUSH = 18;
inline constexpr int DC_PEN = 19;

/// @param module  null for the system's cursors (IDC_...)
/// @return the cursor, shared and never freed; null with last error 1813, 1814 or 1812 when there is none
KORPLATFORM_API HCURSOR WINAPI LoadCursorA(HINSTANCE module, LPCSTR name);
/// @return one of the system's shared objects, null for an index that has none
KORPLATFORM_API HGDIOBJ WINAPI GetStockObject(int index);
inline constexpr int LF_FACESIZE = 32;

/// What a font is asked to be.
struct LOGFONTA {
    LONG lfHeight;  ///< pixels; negative: of its characters without the room between lines
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;  ///< 400 is normal, 700 bold; 0 any
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    CHAR lfFaceName[LF_FACESIZE];
};
static_assert(sizeof(LOGFONTA) == 60);

/// @return the font, to be deleted with DeleteObject; null for a null record and beyond 10000 fonts
KORPLATFORM_API HFONT WINAPI CreateFontIndirectA(const LOGFONTA* font);
/// What a font that was made so is.
/// @param buffer  receives the first `size` bytes of its LOGFONTA; null only asks for the size
/// @return bytes copied, or the size of the record; 0 for any other object
KORPLATFORM_API int WINAPI GetObjectA(HGDIOBJ object, int size, void* buffer);
/// Deletes a drawing object. @return TRUE for a font, and for a stock object, which is left alone; else FALSE
KORPLATFORM_API BOOL WINAPI DeleteObject(HGDIOBJ object);

#endif
