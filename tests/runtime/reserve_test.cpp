#include "runtime/reserve.h"

#include <gtest/gtest.h>

#include <optional>

#include "korutil/lifecycle.h"

namespace {

class Settings : public kor::ReserveStore {
  public:
    DWORD read(DWORD fallback) override {
        ++reads;
        return stored.value_or(fallback);
    }
    bool write(DWORD bytes) override {
        if (refuses) return false;
        stored = bytes;
        return true;
    }

    std::optional<DWORD> stored;
    bool refuses = false;
    int reads = 0;
};

}  // namespace

TEST(Reserve, AStoredSizeIsNeverBelowTheLeast) {
    const std::pair<std::optional<DWORD>, DWORD> cases[] = {
        {std::nullopt, 20000000},   {0, 10000000}, {9999999, 10000000}, {10000000, 10000000},
        {0xFFFFFFFFu, 0xFFFFFFFFu},
    };
    for (const auto& [stored, size] : cases) {
        Settings settings;
        settings.stored = stored;
        kor::ReserveSize reserve;
        reserve.keepIn(&settings);
        EXPECT_EQ(reserve.get(), size) << stored.value_or(1);
        EXPECT_EQ(settings.stored, stored) << "reading must not write";
        settings.stored = 30000000;
        EXPECT_EQ(reserve.get(), size) << "read once";
    }
}

TEST(Reserve, SettingHoldsAtOnceAndStoresTheClampedSize) {
    Settings settings;
    settings.stored = 30000000;
    kor::ReserveSize reserve;
    reserve.keepIn(&settings);
    EXPECT_TRUE(reserve.set(0));
    EXPECT_EQ(settings.stored, 10000000u);
    settings.refuses = true;
    EXPECT_FALSE(reserve.set(50000000));
    EXPECT_EQ(settings.stored, 10000000u);
    EXPECT_EQ(reserve.get(), 50000000u) << "holds for this process";
    EXPECT_EQ(settings.reads, 0);
}

TEST(Reserve, TheProcessHasOneSize) {
    EXPECT_EQ(appGetReserveSizeForVirtualAlloc(), 20000000u);
    appSetReserveSizeForVirtualAlloc(1);
    EXPECT_EQ(appGetReserveSizeForVirtualAlloc(), 10000000u);
    appSetReserveSizeForVirtualAlloc(20000000);
    EXPECT_EQ(appGetReserveSizeForVirtualAlloc(), 20000000u);
}
