// Reporting an exception: natively a message box writes to standard error and answers by itself.
#include <gtest/gtest.h>

#include <string>

#include "korutil/framework/file_exception.h"

namespace {

std::string reported(CException& error, UINT messageId = 0) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(error.ReportError(0, messageId), 1);
    return testing::internal::GetCapturedStderr();
}

TEST(ReportError, ShowsTheTextOrThatThereIsNone) {
    CFileException full(CFileException::diskFull, 112, "Z:\\a.kor");
    EXPECT_NE(reported(full).find("Z:\\a.kor: The disk is full. (system error 112)"), std::string::npos);
    CException plain;
    EXPECT_NE(reported(plain).find("No error message is available."), std::string::npos);
    EXPECT_NE(reported(plain, 65000).find("No error message is available."), std::string::npos);
}

}  // namespace
