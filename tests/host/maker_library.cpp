// Stands in for the maker's libraries Wrx and Bql in tests. Every function shows in its result that it was
// called.
#include "tests/host/maker_library.h"

#include <cstring>

#include "korutil/host.h"

namespace {

MenuHook* firstHook = nullptr;

}  // namespace

int KORUTIL_CALL menuInitHook(UINT, MenuHookHandler) { return kMakerResult; }
int KORUTIL_CALL menuExitHook(UINT) { return kMakerResult; }
MenuHook** KORUTIL_CALL menuGetFirstHook(UINT) { return &firstHook; }
int KORUTIL_CALL menuCallFirstHook(UINT id, void*) { return kMakerResult + static_cast<int>(id); }
int KORUTIL_CALL menuCallNextHook(const MenuHook*, void*) { return kMakerResult; }

KORUTIL_API int KORUTIL_CALL Bql_vszprintf(char* buffer, UINT size, const char*, void*) {
    std::memset(buffer, 'B', size);  // without a terminator, on purpose
    return kMakerResult;
}

KORUTIL_API int KORUTIL_CALL Bql_vszscanf(const char*, UINT, const char*, void*) { return kMakerResult; }
