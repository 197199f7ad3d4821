#include "korutil/profile_value.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/win32.h"
#include "tests/runtime/own_texts.h"
#include "tests/support/scratch.h"

namespace kor::test {
namespace {

std::string valueOf(const std::string& profile, const char* section, const char* key) {
    char text[400];
    return {text, GetPrivateProfileStringA(section, key, "<none>", text, sizeof text, profile.c_str())};
}

TEST(ProfileValue, ValuesHaveNumberedSectionsAndKeys) {
    const ScratchFolder folder;
    const std::string profile = folder.path("a.ini");
    ProfileTag tag;
    ASSERT_TRUE(pt_InitTag(&tag, profile.c_str(), "Camera", 2, nullptr));
    EXPECT_TRUE(pt_WriteLONG(&tag, "Gain", 0, -7));
    EXPECT_TRUE(pt_WriteDOUBLE(&tag, "Exposure", 12, 1.0 / 3));
    EXPECT_TRUE(pt_WriteStr(&tag, "Name", -1, "DAPI"));
    EXPECT_EQ(valueOf(profile, "Camera2", "Exposure12"), "0.33333333333333");  // 14 digits
    LONG gain = 0;
    EXPECT_TRUE(pt_ReadLONG(&tag, "Gain", 0, &gain));
    EXPECT_EQ(gain, -7);
    double exposure = 0;
    EXPECT_TRUE(pt_ReadDOUBLE(&tag, "Exposure", 12, &exposure));
    EXPECT_EQ(exposure, 0.33333333333333);
    char name[4];
    EXPECT_EQ(pt_ReadStr(&tag, "Name", 0, name, sizeof name), 3u);
    EXPECT_STREQ(name, "DAP");
    EXPECT_TRUE(pt_WriteStr(&tag, "Name", 0, nullptr));
    EXPECT_EQ(pt_ReadStr(&tag, "Name", 0, name, sizeof name), 0u);
    EXPECT_STREQ(name, "");
    EXPECT_FALSE(pt_ReadLONG(&tag, "Name", 0, &gain));
    EXPECT_EQ(gain, -7);
    EXPECT_FALSE(pt_ReadDOUBLE(&tag, nullptr, 0, &exposure));
    EXPECT_FALSE(pt_WriteLONG(nullptr, "Gain", 0, 1));
}

TEST(ProfileValue, NamesComeFromResourcesAndAreCutAndBounded) {
    const ScratchFolder folder;
    const std::string profile = folder.path("a.ini");
    const std::string longName(100, 'n');
    ProfileTag tag;
    ASSERT_TRUE(pt_InitTag(&tag, profile.c_str(), MAKEINTRESOURCEA(10301), 0, nullptr));
    EXPECT_EQ(tag.section, ownText(10301));
    EXPECT_TRUE(pt_WriteLONG(&tag, longName.c_str(), 2147483647, 1));
    EXPECT_EQ(valueOf(profile, tag.section, (std::string(75, 'n') + "2147483647").c_str()), "1");
    EXPECT_TRUE(pt_InitTag(&tag, profile.c_str(), longName.c_str(), 9999, nullptr));
    EXPECT_EQ(tag.section, std::string(75, 'n') + "9999");
    struct {
        const char* section;
        int index;
    } const refused[] = {{longName.c_str(), 10000}, {nullptr, 0}, {MAKEINTRESOURCEA(1), 0}};
    for (const auto& one : refused) {
        EXPECT_FALSE(pt_InitTag(&tag, profile.c_str(), one.section, one.index, nullptr));
        EXPECT_STREQ(tag.section, "");
        EXPECT_FALSE(pt_WriteLONG(&tag, "k", 0, 1));
    }
}

}  // namespace
}  // namespace kor::test
