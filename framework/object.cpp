#include "korutil/framework/object.h"

#include <cstdlib>

#include "korutil/framework/memory_exception.h"

constinit const CRuntimeClass CObject::classCObject = {"CObject", static_cast<int>(sizeof(CObject)), 0xFFFF,
                                                       nullptr, nullptr};

CObject* CRuntimeClass::CreateObject() const {
    if (m_pfnCreateObject == nullptr) return nullptr;
    try {
        return m_pfnCreateObject();
    } catch (CMemoryException* noMemory) {
        noMemory->Delete();
        return nullptr;
    }
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* type = this; type != nullptr;) {
        if (type == base) return TRUE;
        type = type->m_pfnGetBaseClass != nullptr ? type->m_pfnGetBaseClass() : nullptr;
    }
    return FALSE;
}

CObject::CObject() = default;
CObject::~CObject() = default;

CRuntimeClass* CObject::GetRuntimeClass() const { return RUNTIME_CLASS(CObject); }
void CObject::Serialize(CArchive&) {}
void CObject::AssertValid() const {}
void CObject::Dump(CDumpContext&) const {}

BOOL CObject::IsKindOf(const CRuntimeClass* type) const { return GetRuntimeClass()->IsDerivedFrom(type); }
BOOL CObject::IsSerializable() const { return GetRuntimeClass()->m_wSchema != 0xFFFF; }

void* CObject::operator new(std::size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) AfxThrowMemoryException();
    return block;
}

void* CObject::operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void* CObject::operator new(std::size_t, void* place) noexcept { return place; }
void CObject::operator delete(void* block) noexcept { std::free(block); }
void CObject::operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void CObject::operator delete(void*, void*) noexcept {}
