// Run-time classes, with classes of this program derived from classes of the library.
#include <gtest/gtest.h>

#include "korutil/framework/byte_array.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/mem_file.h"

namespace {

class CProbe : public CObject {
    DECLARE_DYNCREATE(CProbe)
  public:
    CProbe() { ++alive; }
    ~CProbe() override { --alive; }
    static inline int alive = 0;
    double payload = 1.5;
};

class CProbeFile : public CMemFile {
    DECLARE_DYNAMIC(CProbeFile)
};

// Made before the records of this file are reached in the order of initialisation.
const bool knownEarly =
    CProbeFile().IsKindOf(RUNTIME_CLASS(CFile)) && CProbe().IsKindOf(RUNTIME_CLASS(CObject));

IMPLEMENT_DYNCREATE(CProbe, CObject)
IMPLEMENT_DYNAMIC(CProbeFile, CMemFile)

TEST(RuntimeClass, ChainsLeadAcrossModulesToCObject) {
    CProbeFile file;
    const CObject& object = file;
    for (const CRuntimeClass* type :
         {RUNTIME_CLASS(CProbeFile), RUNTIME_CLASS(CMemFile), RUNTIME_CLASS(CFile), RUNTIME_CLASS(CObject)})
        EXPECT_TRUE(object.IsKindOf(type)) << type->m_lpszClassName;
    for (const CRuntimeClass* type :
         {RUNTIME_CLASS(CProbe), RUNTIME_CLASS(CException), RUNTIME_CLASS(CByteArray)})
        EXPECT_FALSE(object.IsKindOf(type)) << type->m_lpszClassName;
    EXPECT_FALSE(object.IsKindOf(nullptr));
    EXPECT_FALSE(CMemFile().IsKindOf(RUNTIME_CLASS(CProbeFile)));
    EXPECT_TRUE(CFileException().IsKindOf(&CException::classCException));
    EXPECT_FALSE(object.IsSerializable());
    EXPECT_STREQ(CProbe().GetRuntimeClass()->m_lpszClassName, "CProbe");
    EXPECT_EQ(RUNTIME_CLASS(CProbe)->m_nObjectSize, static_cast<int>(sizeof(CProbe)));
    EXPECT_TRUE(knownEarly);
}

TEST(RuntimeClass, CreatesObjectsOfClassesThatAllowIt) {
    CObject* made = RUNTIME_CLASS(CProbe)->CreateObject();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(CProbe::alive, 1);
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(CProbe)));
    delete made;
    EXPECT_EQ(CProbe::alive, 0);

    CObject* bytes = RUNTIME_CLASS(CByteArray)->CreateObject();
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(static_cast<CByteArray*>(bytes)->GetSize(), 0);
    delete bytes;
    EXPECT_EQ(RUNTIME_CLASS(CProbeFile)->CreateObject(), nullptr);
    EXPECT_EQ(RUNTIME_CLASS(CObject)->CreateObject(), nullptr);
}

}  // namespace
