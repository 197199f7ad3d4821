#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"

namespace {

std::string messageOf(CException& error, UINT size = 256) {
    std::string buffer(size + 1, '#');
    UINT help = 77;
    EXPECT_TRUE(error.GetErrorMessage(buffer.data(), size, &help));
    EXPECT_EQ(help, 0u);
    EXPECT_EQ(buffer[size], '#') << "written behind the buffer";
    return size > 0 ? buffer.c_str() : buffer;
}

class CCounted : public CException {
  public:
    explicit CCounted(BOOL autoDelete) : CException(autoDelete) { ++alive; }
    ~CCounted() override { --alive; }
    static inline int alive = 0;
};

TEST(Exception, IsFreedByDeleteWhenItWasMadeToBe) {
    (new CCounted(TRUE))->Delete();
    EXPECT_EQ(CCounted::alive, 0);
    CCounted kept(FALSE);
    kept.Delete();
    EXPECT_EQ(CCounted::alive, 1);
}

TEST(Exception, HasNoTextOfItsOwn) {
    char buffer[8] = "before";
    UINT help = 77;
    EXPECT_FALSE(CException().GetErrorMessage(buffer, sizeof buffer, &help));
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(help, 0u);
    EXPECT_FALSE(CException().GetErrorMessage(nullptr, 0));
}

TEST(MemoryException, IsThrownWithoutAllocatingAndLivesOn) {
    CMemoryException* first = nullptr;
    for (int i = 0; i < 2; ++i) {
        try {
            AfxThrowMemoryException();
        } catch (CException* e) {
            ASSERT_TRUE(e->IsKindOf(RUNTIME_CLASS(CMemoryException)));
            EXPECT_TRUE(first == nullptr || e == first);
            first = static_cast<CMemoryException*>(e);
            EXPECT_EQ(messageOf(*e), "Out of memory.");
            e->Delete();
        }
    }
    EXPECT_EQ(messageOf(*first), "Out of memory.") << "gone after Delete";
}

TEST(FileException, IsThrownByPointerWithAllItWasGiven) {
    try {
        AfxThrowFileException(CFileException::endOfFile, 38, "Z:\\a.kor");
    } catch (CFileException* e) {
        EXPECT_EQ(e->m_cause, CFileException::endOfFile);
        EXPECT_EQ(e->m_lOsError, 38);
        EXPECT_EQ(e->m_strFileName, "Z:\\a.kor");
        e->Delete();
        return;
    }
    FAIL();
}

TEST(FileException, KnowsTheCauseOfASystemError) {
    using E = CFileException;
    const struct {
        LONG error;
        int cause;
    } cases[] = {{0, E::none},
                 {2, E::fileNotFound},
                 {3, E::badPath},
                 {4, E::tooManyOpenFiles},
                 {5, E::accessDenied},
                 {6, E::invalidFile},
                 {16, E::removeCurrentDir},
                 {19, E::accessDenied},
                 {23, E::hardIO},
                 {25, E::badSeek},
                 {31, E::hardIO},
                 {32, E::sharingViolation},
                 {33, E::lockViolation},
                 {38, E::endOfFile},
                 {39, E::diskFull},
                 {80, E::accessDenied},
                 {82, E::directoryFull},
                 {112, E::diskFull},
                 {123, E::badPath},
                 {131, E::badSeek},
                 {158, E::lockViolation},
                 {183, E::accessDenied},
                 {206, E::badPath},
                 {11, E::generic},
                 {87, E::generic},
                 {1117, E::hardIO},
                 {-1, E::generic},
                 {99999, E::generic}};
    for (const auto& row : cases)
        EXPECT_EQ(E::OsErrorToException(row.error), row.cause) << row.error;
    EXPECT_EQ(E::ErrnoToException(ENOSPC), E::diskFull);
    EXPECT_EQ(E::ErrnoToException(EINTR), E::generic);
    try {
        E::ThrowErrno(ENOENT, "x");
    } catch (CFileException* e) {
        EXPECT_EQ(e->m_cause, E::fileNotFound);
        EXPECT_EQ(e->m_lOsError, ENOENT);
        e->Delete();
    }
}

TEST(FileException, NamesTheFileTheReasonAndTheSystemError) {
    CFileException denied(CFileException::accessDenied, 5, "Z:\\a.kor");
    EXPECT_EQ(messageOf(denied), "Z:\\a.kor: Access was denied. (system error 5)");
    CFileException nameless(CFileException::diskFull);
    EXPECT_EQ(messageOf(nameless), "The disk is full.");
    CFileException unknown(99);
    EXPECT_EQ(messageOf(unknown), "The file could not be used.");
}

TEST(FileException, MessagesAreCutToTheBuffer) {
    CFileException full(CFileException::diskFull, -1, "a");
    EXPECT_EQ(messageOf(full, 21), "a: The disk is full.");
    EXPECT_EQ(messageOf(full, 20), "a: The disk is full");
    EXPECT_EQ(messageOf(full, 2), "a");
    EXPECT_EQ(messageOf(full, 1), "");
    EXPECT_EQ(messageOf(full, 0), "#");
}

}  // namespace
