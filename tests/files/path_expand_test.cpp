// Symbolic folders at the start of a path.
#include <gtest/gtest.h>

#include <string>

#include "korutil/path.h"
#include "tests/support/registry_contents.h"

namespace {

using kor::test::registryText;

TEST(PathExpansion, PutsTheFolderInPlaceOfItsName) {
    kor::test::setRegistry({registryText("Directories", "Images", "C:\\Images"),
                            registryText("Directories", "Long", std::string(258, 'l')),
                            registryText("UserInfo", "Other", "C:\\Other")});
    // Each row is a path and what becomes of it, with " > " between; nothing behind it stands for failure.
    for (const std::string row :
         {R"(<Images>\a\b.tif > C:\Images\a\b.tif)", R"(%IMAGES%/b.tif > C:\Images/b.tif)",
          R"(<Images>more\b > C:\Imagesmore\b)", "<Images> > <Images>", "<a > <a", R"(<\b > <\b)",
          R"(c:<Images>\b > c:<Images>\b)", R"(a\<Images>\b > a\<Images>\b)", R"(<Images%\b > )",
          R"(%Images\b% > )", R"(<Other>\b > )", R"(<>\b > )", R"(<Long>\b > )"}) {
        const std::size_t arrow = row.rfind(" > ");
        const std::string before = row.substr(0, arrow), after = row.substr(arrow + 3);
        char path[260] = "";
        before.copy(path, sizeof path);
        EXPECT_EQ(sysExpandPath(path, sizeof path), !after.empty()) << row;
        EXPECT_EQ(path, after.empty() ? before : after) << row;
    }
    char path[18] = "<Images>\\a\\b.tif";
    EXPECT_EQ(sysExpandPath(path, 17), 0);
    EXPECT_STREQ(path, "<Images>\\a\\b.tif");
    EXPECT_EQ(sysExpandPath(path, 18), 1);
}

}  // namespace
