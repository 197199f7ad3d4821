// A program of its own, which is not linked to the library: here the library comes and goes.
#include <gtest/gtest.h>

#include "korutil/error.h"
#include "korutil/lifecycle.h"
#include "platform/win32.h"

namespace {

template <class Function>
Function* function(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace

TEST(Unload, TheLibraryMayBeLoadedUsedAndUnloadedAgain) {
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = LoadLibraryA("KorUtil");
        ASSERT_NE(library, nullptr) << GetLastError();
        const auto start = function<decltype(utlInitDLL1)>(library, "utlInitDLL1");
        const auto place = function<decltype(appPlaceError)>(library, "appPlaceError");
        const auto last = function<decltype(appGetLastErrorObject)>(library, "appGetLastErrorObject");
        const auto stock = function<decltype(utlGetStockObject)>(library, "utlGetStockObject");
        ASSERT_TRUE(start && place && last && stock);
        EXPECT_TRUE(start("Product"));
        EXPECT_NE(stock(0), nullptr);
        EXPECT_TRUE(place(5, 7, "text", nullptr, nullptr, nullptr, 0, nullptr));
        EXPECT_NE(last(), nullptr);
        // Unloaded without utlExitDLL, and with an error in the ring.
        EXPECT_TRUE(FreeLibrary(library)) << GetLastError();
    }
}
