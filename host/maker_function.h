#pragma once
// How a function of one of the maker's libraries is found.

namespace kor {

/// As makerFunction, of no particular type. Both names live as long as the process: what is found is kept
/// until a module is loaded or unloaded.
void (*findMakerFunction(const char* library, const char* name))();

/// The function `name` of a library, when the process has that library loaded and it exports the function;
/// else null. The last error stays as it was, so that a report of it may look here first.
template <class Function>
Function makerFunction(const char* library, const char* name) {
    return reinterpret_cast<Function>(findMakerFunction(library, name));
}

}  // namespace kor
