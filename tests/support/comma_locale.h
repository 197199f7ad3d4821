#pragma once
// A locale whose numbers have a comma, in which all tests run: nothing here follows the locale.

namespace kor::test {

/// Makes it the process's locale, and that of the programs it starts.
/// @return whether there is one
bool useCommaLocale();

}  // namespace kor::test
