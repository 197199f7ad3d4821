// The info store.
#include "korutil/info_store.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

struct Store {
    Store() { infInit(&list); }
    ~Store() { lisDestroy(&list); }
    DWORD set(UINT_PTR key, const std::string& data) {
        return infSet(&list, key, data.data(), static_cast<DWORD>(data.size()));
    }
    std::string get(UINT_PTR key) const {
        char data[100];
        return {data, infGet(list, key, data, sizeof data)};
    }
    std::string entry(DWORD index, std::size_t size) const {
        return {static_cast<const char*>(lisGetPointerToElement(list, index)), size};
    }

    ListBlock* list;
};

TEST(InfoStore, KeepsOneEntryAKeyInTheTwoForms) {
    Store store;
    const std::string name30(30, 'n');
    const std::string name40 = name30 + "0123456789";
    EXPECT_EQ(store.set(0x1234, "abc"), 1u);
    EXPECT_EQ(store.set(infName("gain"), "small"), 2u);
    EXPECT_EQ(store.entry(0, 16), std::string("\x0F\0\0\0\0\0\0\0\x34\x12\0\0abc\0", 16));
    EXPECT_EQ(store.entry(1, 42), std::string("\x29\0\0\0gain", 8) + std::string(28, '\0') + "small" + '\0');
    store.set(5, "first");
    store.set(infName("Gain"), "capital");
    store.set(infName(name40.c_str()), "long");
    EXPECT_EQ(store.set(5, "second"), 5u) << "the same number, and now the last one";
    EXPECT_EQ(store.get(infName("gain")) + store.get(infName("Gain")), "smallcapital");
    EXPECT_EQ(store.get(infName("gai")) + store.get(infName("gain2")) + store.get(6) + store.get(0), "");
    EXPECT_EQ(store.get(infName(name30.c_str())) + store.get(infName(name40.c_str())), "longlong");
    EXPECT_EQ(store.set(infName(name40.c_str()), ""), 5u);

    DWORD length = 77;
    EXPECT_NE(infGetPointer(store.list, infName(name40.c_str()), &length), nullptr) << "without data";
    EXPECT_EQ(length, 0u);
    void* data = infGetPointer(store.list, 5, &length);
    EXPECT_EQ(infSet(&store.list, 6, data, length), 6u) << "from the store itself, which moves";
    EXPECT_EQ(store.get(6), "second");
    char few[3] = {};
    EXPECT_EQ(infGet(store.list, 5, few, 2) + infGetSize(store.list, 5), 2u + 6u);
    EXPECT_STREQ(few, "se");
}

TEST(InfoStore, IsNullWhenItIsEmptyAndRefusesWhatIsNoKeyOrData) {
    Store store;
    store.set(5, "kept");
    EXPECT_EQ(store.set(0, "x") + store.set(infName(""), "x") + infSet(&store.list, 5, nullptr, 1), 0u);
    EXPECT_EQ(infSet(&store.list, 5, "x", 0xFFFFFFFF) + infSet(&store.list, 5, "x", 0xFFFFFFF4), 0u);
    EXPECT_FALSE(infDelete(&store.list, 2));
    EXPECT_EQ(store.get(5), "kept");
    EXPECT_TRUE(infDelete(&store.list, 5));
    EXPECT_EQ(store.list, nullptr);
    store.list = lisCreate(4);
    EXPECT_FALSE(infDelete(&store.list, 1));
    EXPECT_EQ(store.list, nullptr) << "it was empty before";
}

TEST(InfoStore, PassesOverWhatIsNoWholeEntry) {
    constexpr std::size_t kOffset = 8 + 1, kSize = 108 + 5;  // words of the second entry
    constexpr std::pair<std::size_t, DWORD> kWrong[] = {{kOffset, 29}, {kOffset, 40}, {kOffset, 0xFFFFFFF4},
                                                        {kSize, 11},   {kSize, 21},   {kSize, 0xFFFFFFFF}};
    for (const auto& [word, value] : kWrong) {
        Store store;
        store.set(4, "data");
        store.set(5, "data");
        reinterpret_cast<DWORD*>(store.list)[word] = value;
        EXPECT_EQ(store.get(4) + store.get(5), "data") << word << " = " << value;
    }
}

}  // namespace
