// The Windows side: reads one key as often as it is told, and says when it is done.
#include <windows.h>

#include <cstdint>

int main(int count, char** arguments) {
    if (count < 4) return 2;
    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE), out = GetStdHandle(STD_OUTPUT_HANDLE);
    std::int32_t times = 0;
    DWORD done = 0;
    while (ReadFile(in, &times, sizeof times, &done, nullptr) && done == sizeof times) {
        char value[100] = {};
        for (std::int32_t i = 0; i < times; ++i)
            GetPrivateProfileStringA(arguments[2], arguments[3], "", value, sizeof value, arguments[1]);
        const std::int32_t length = lstrlenA(value);
        WriteFile(out, &length, sizeof length, &done, nullptr);
    }
    return 0;
}
