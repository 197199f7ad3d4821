#pragma once
// The embedded host's bounded formatter.

#include "korutil/platform.h"

namespace kor {

/// Formats into a buffer. The result is the same on every target and in every locale.
///
/// Conversions: %d %i %u %o %x %X %c %s %p %e %E %f %F %g %G %%, with the flags - + blank # 0, width and
/// precision (also from arguments: *), and for integers the sizes hh h l ll I I32 I64 j t z, of which l is 32
/// bits on every target (an l before a floating-point conversion changes nothing). %p gives all digits in
/// capitals, without a prefix; a null text is "(null)"; exponents have two digits or more; what is not a
/// number is "inf" or "nan". %n, an unknown conversion, and a conversion without an argument list make the
/// whole call fail.
/// @param buffer     always terminated, when there is one; empty on failure
/// @param size       of the buffer in characters; what does not fit is cut off
/// @param arguments  argument list (KORUTIL_ARGUMENTS, KorArgumentList); null for none
/// @return characters written, without the terminator; 0 on failure
int formatText(char* buffer, UINT size, const char* format, void* arguments);

/// As formatText, with the arguments in place.
int printText(char* buffer, UINT size, const char* format, ...);

}  // namespace kor
