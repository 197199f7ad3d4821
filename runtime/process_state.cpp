#include "runtime/process_state.h"

namespace kor {
namespace {

// Only module look-ups: they are safe while the loader works.
ProcessState stateAtLoad() {
    ProcessState state;
    constexpr DWORD kHere =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE library = nullptr;
    GetModuleHandleExA(kHere, reinterpret_cast<LPCSTR>(&stateAtLoad), &library);
    state.library = library;
    state.host = GetModuleHandleA(nullptr);
    return state;
}

}  // namespace

ProcessState& processState() {
    static ProcessState state = stateAtLoad();
    return state;
}

HINSTANCE resourceModule() {
    const ProcessState& state = processState();
    return state.resources ? state.resources : state.library;
}

}  // namespace kor
