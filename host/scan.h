#pragma once
// The embedded host's bounded scanner.

#include "korutil/platform.h"

namespace kor {

/// Scans a text as the runtime's formatted scan does. The result is the same on every target and in every
/// locale.
///
/// Conversions: %d %i %u %o %x %X %c %s %[set] %p %e %f %g (and capitals) %n %%, with * (scanned, not
/// stored), a width, and for integers the sizes hh h l ll I I32 I64 j t z, of which l is 32 bits on every
/// target. Floating point is stored as a float, with l as a double; a number that is too large becomes
/// infinite. An integer that is too large keeps its low bits. Blanks in the format skip any blanks of the
/// text; all conversions but %c %[ %n skip blanks in front.
///
/// %s and %[ store as many characters as they find and a terminator: give them a width of the target's size
/// less one, or a target of maxLength + 1 characters. %c stores its width (1) in characters, without a
/// terminator.
/// @param maxLength  at most so many characters of the text are looked at
/// @param arguments  argument list of pointers to the values; scanning ends at a null one
/// @return how many values were stored (those of %n not counted); scanning ends at the first thing that does
/// not
///         match or a conversion that does not exist
int scanText(const char* text, UINT maxLength, const char* format, void* arguments);

}  // namespace kor
