// Memory that runs out at each allocation in turn: the framework throws, and what it was changing stays as it
// was.
#include <gtest/gtest.h>

#include "korutil/framework/byte_array.h"
#include "korutil/framework/file.h"
#include "korutil/framework/mem_file.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/framework/string_array.h"
#include "tests/framework/thrown.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

class CProbe : public CObject {
    DECLARE_DYNCREATE(CProbe)
};

IMPLEMENT_DYNCREATE(CProbe, CObject)

// Whether the work throws the memory exception when nothing can be allocated.
template <class Work>
bool failsWithoutMemory(Work work) {
    FailingAllocation failing(1, FailingAllocation::After::fails);
    const bool failed = isMemoryFailure(work);
    failing.stop();
    EXPECT_TRUE(failing.happened());
    return failed;
}

TEST(MemoryFailure, LeavesStringsAsTheyWere) {
    CString text("korutil");
    const CString shared(text);
    EXPECT_TRUE(failsWithoutMemory([&] { text += "!"; }));
    EXPECT_TRUE(failsWithoutMemory([&] { text.SetAt(0, 'x'); }));
    EXPECT_TRUE(failsWithoutMemory([&] { text = "something else"; }));
    EXPECT_TRUE(failsWithoutMemory([&] { text.GetBuffer(100); }));
    EXPECT_TRUE(failsWithoutMemory([&] { text.MakeReverse(); }));
    EXPECT_TRUE(failsWithoutMemory([&] { CString("new"); }));
    EXPECT_EQ(text, "korutil");
    CString roomy("korutil");
    roomy.GetBuffer(100);
    roomy.ReleaseBuffer();
    FailingAllocation failing(1, FailingAllocation::After::fails);
    roomy.FreeExtra();  // gives up quietly
    failing.stop();
    EXPECT_EQ(roomy, "korutil");
}

TEST(MemoryFailure, LeavesArraysAndMemoryFilesAsTheyWere) {
    CStringArray strings;
    strings.Add("one");
    strings.FreeExtra();
    EXPECT_TRUE(failsWithoutMemory([&] { strings.Add(strings[0]); }));
    EXPECT_TRUE(failsWithoutMemory([&] { strings.InsertAt(0, strings[0]); }));
    EXPECT_TRUE(failsWithoutMemory([&] { strings.Append(strings); }));
    EXPECT_TRUE(failsWithoutMemory([&] { strings.SetSize(2, 5); }));
    ASSERT_EQ(strings.GetSize(), 1);
    EXPECT_EQ(strings[0], "one");
    CByteArray bytes;
    EXPECT_TRUE(failsWithoutMemory([&] { bytes.SetAtGrow(5, 1); }));
    EXPECT_EQ(bytes.GetSize(), 0);
    CMemFile file(4);
    file.Write("abcd", 4);
    EXPECT_TRUE(failsWithoutMemory([&] { file.Write("e", 1); }));
    EXPECT_TRUE(failsWithoutMemory([&] { file.SetLength(100); }));
    EXPECT_TRUE(file.GetLength() == 4 && file.GetPosition() == 4);
    CPtrArray pointers;
    FailingAllocation once(1);
    pointers.SetSize(1);  // the ample room fails, the room needed is there
    once.stop();
    EXPECT_TRUE(once.happened());
    EXPECT_EQ(pointers.GetSize(), 1);
}

TEST(MemoryFailure, OfAnObjectIsThrownOrTold) {
    EXPECT_TRUE(failsWithoutMemory([] { delete new CProbe; }));
    FailingAllocation failing(1, FailingAllocation::After::fails);
    const CObject* quiet = new (std::nothrow) CProbe;
    const CObject* created = RUNTIME_CLASS(CProbe)->CreateObject();
    failing.stop();
    EXPECT_EQ(quiet, nullptr);
    EXPECT_EQ(created, nullptr);
    EXPECT_TRUE(failsWithoutMemory([] { AfxThrowFileException(CFileException::generic, 1, "x"); }));
}

TEST(MemoryFailure, WhileAFileIsOpenedLeavesItClosed) {
    const kor::test::ScratchFolder folder;
    const std::string path = folder.file("a.kor", "text");
    const int failures = kor::test::failEachAllocation([&path] {
        CFile file;
        BOOL open = FALSE;
        isMemoryFailure([&] { open = file.Open(path.c_str(), CFile::modeRead); });
        EXPECT_EQ(open, file.m_hFile != CFile::hFileNull);
    });
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(CFile().Open(path.c_str(), CFile::modeRead)) << "a handle was lost";
}

}  // namespace
