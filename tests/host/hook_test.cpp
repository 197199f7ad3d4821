#include <gtest/gtest.h>

#include <vector>

#include "korutil/host.h"

namespace {

std::vector<int> calls;

// Keeps the record, handing it on first or not at all.
struct Handler {
    static int KORUTIL_CALL last(void* record) {
        calls.push_back(1);
        return *static_cast<int*>(record);
    }
    static int KORUTIL_CALL other(void*) {
        calls.push_back(4);
        return 44;
    }
    static int KORUTIL_CALL forwards(void* record) {
        calls.push_back(2);
        return menuCallNextHook(&forwarding, record) + 1;
    }
    static int KORUTIL_CALL keeps(void*) {
        calls.push_back(3);
        return 33;
    }
    static int KORUTIL_CALL endsChain(void* record) {
        menuExitHook(id);
        return menuCallNextHook(&ending, record) + 500;
    }
    static constexpr UINT id = 29001;
    static MenuHook forwarding;
    static MenuHook keeping;
    static MenuHook ending;
};

MenuHook Handler::forwarding = {Handler::forwards, nullptr};
MenuHook Handler::keeping = {Handler::keeps, nullptr};
MenuHook Handler::ending = {Handler::endsChain, nullptr};

void link(MenuHook& hook) {
    MenuHook** first = menuGetFirstHook(Handler::id);
    ASSERT_NE(first, nullptr);
    hook.next = *first;
    *first = &hook;
}

class Hook : public testing::Test {
  protected:
    void SetUp() override {
        calls.clear();
        ASSERT_EQ(menuInitHook(Handler::id, Handler::last), 1);
    }
    void TearDown() override { menuExitHook(Handler::id); }

    int call() { return menuCallFirstHook(Handler::id, &record_); }

    int record_ = 10;
};

TEST_F(Hook, TheHandlerLinkedLastIsCalledFirstAndHandsOnOrKeeps) {
    EXPECT_EQ(call(), 10);
    link(Handler::forwarding);
    EXPECT_EQ(call(), 11);
    EXPECT_EQ(calls, (std::vector<int>{1, 2, 1}));
    link(Handler::keeping);
    EXPECT_EQ(call(), 33);
    *menuGetFirstHook(Handler::id) = Handler::keeping.next;
    EXPECT_EQ(call(), 11) << "unlinked";
    EXPECT_EQ(menuInitHook(Handler::id, Handler::other), 1) << "again: another default, the same chain";
    EXPECT_EQ(call(), 45);
    EXPECT_EQ(menuInitHook(Handler::id, nullptr), 1);
    EXPECT_EQ(call(), 1) << "nothing behind the handler";
}

TEST_F(Hook, AnEndedChainCallsNobody) {
    link(Handler::forwarding);
    EXPECT_EQ(menuExitHook(Handler::id), 1);
    EXPECT_EQ(menuExitHook(Handler::id), 0);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(menuGetFirstHook(Handler::id), nullptr);
    EXPECT_EQ(menuInitHook(Handler::id, nullptr), 1);
    EXPECT_EQ(call(), 0) << "the handlers of before are gone";
    EXPECT_TRUE(calls.empty());
}

TEST_F(Hook, AHandlerMayEndItsOwnChain) {
    link(Handler::ending);
    EXPECT_EQ(call(), 500);
    EXPECT_EQ(menuGetFirstHook(Handler::id), nullptr);
}

TEST_F(Hook, ChainsDoNotMix) {
    EXPECT_EQ(menuCallFirstHook(Handler::id + 1, &record_), 0);
    EXPECT_EQ(menuCallNextHook(nullptr, &record_), 0);
    ASSERT_EQ(menuInitHook(Handler::id + 1, Handler::other), 1);
    EXPECT_EQ(menuCallFirstHook(Handler::id + 1, &record_), 44);
    EXPECT_EQ(call(), 10);
    menuExitHook(Handler::id + 1);
    EXPECT_EQ(call(), 10);
}

}  // namespace
