#pragma once
// The registered window classes.

#include <memory>
#include <string>

#include "korutil/platform/window.h"

namespace kor {

struct WindowClass {
    ATOM atom = 0;
    std::string name;
    std::string key;  ///< the name in lower case
    std::string menuName;
    WNDCLASSA record{};
    bool isSystems = false;
};

/// The class that a new window of the module gets: the module's own, else a global one, else the system's.
/// While it is held the class stays registered. May throw std::bad_alloc.
/// @param name  a text or an atom. @return null when there is no such class
std::shared_ptr<const WindowClass> classForWindow(HINSTANCE module, LPCSTR name);

}  // namespace kor
