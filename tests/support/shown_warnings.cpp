#include "tests/support/shown_warnings.h"

#include <gtest/gtest.h>

#include <utility>

#include "korutil/lifecycle.h"

namespace kor::test {
namespace {

constexpr UINT kWarningHook = 14061;

std::vector<ShownWarning> shown;

int KORUTIL_CALL keep(void* record) {
    const auto& warning = *static_cast<const UtlWarningRecord*>(record);
    shown.push_back({warning, warning.text ? warning.text : "", warning.caption ? warning.caption : ""});
    return ShownWarnings::kAnswer;
}

MenuHook keeper = {keep, nullptr};

}  // namespace

ShownWarnings::ShownWarnings() {
    shown.clear();
    EXPECT_TRUE(utlInitDLL1("Measuring"));
    MenuHook** first = menuGetFirstHook(kWarningHook);
    if (!first) {
        ADD_FAILURE() << "no chain of display handlers";
        return;
    }
    keeper.next = *first;
    *first = &keeper;
}

ShownWarnings::~ShownWarnings() {
    utlExitDLL();
    utlInitDLL1(nullptr);  // brings the first caption back
    utlExitDLL();
}

std::vector<ShownWarning> ShownWarnings::take() { return std::exchange(shown, {}); }

ShownWarning ShownWarnings::takeOne() {
    std::vector<ShownWarning> all = take();
    EXPECT_EQ(all.size(), 1u);
    return all.size() == 1 ? all.front() : ShownWarning{};
}

}  // namespace kor::test
