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

TEST(Exception, IsFreedByDeleteWhenItWasMadeToBeAndHasNoText) {
    (new CCounted(TRUE))->Delete();
    CCounted kept(FALSE);
    kept.Delete();
    EXPECT_EQ(CCounted::alive, 1);
    char buffer[8] = "before";
    EXPECT_FALSE(kept.GetErrorMessage(buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(kept.GetErrorMessage(nullptr, 0));
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

TEST(FileException, KnowsTheCauseOfASystemError) {
    using E = CFileException;
    const std::pair<LONG, int> cases[] = {{0, E::none},
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
    for (const auto& [error, cause] : cases)
        EXPECT_EQ(E::OsErrorToException(error), cause) << error;
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
    EXPECT_EQ(messageOf(nameless, 18), "The disk is full.");
    EXPECT_EQ(messageOf(nameless, 17), "The disk is full");
    EXPECT_EQ(messageOf(nameless, 1), "");
    EXPECT_EQ(messageOf(nameless, 0), "#");
    CFileException unknown(99);
    EXPECT_EQ(messageOf(unknown), "The file could not be used.");
}

}  // namespace
