#include "korutil/framework/ptr_array.h"

#include "framework/array_storage.h"

IMPLEMENT_DYNAMIC(CPtrArray, CObject)

namespace {

using Storage = kor::ArrayStorage<void*>;

}  // namespace

CPtrArray::CPtrArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
CPtrArray::~CPtrArray() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(0, -1); }

int CPtrArray::GetSize() const { return m_nSize; }
int CPtrArray::GetUpperBound() const { return m_nSize - 1; }

void CPtrArray::SetSize(int size, int growBy) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(size, growBy);
}
void CPtrArray::FreeExtra() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).freeExtra(); }
void CPtrArray::RemoveAll() { SetSize(0); }

void* CPtrArray::GetAt(int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void CPtrArray::SetAt(int index, void* element) { m_pData[kor::checkedIndex(index, m_nSize)] = element; }
void*& CPtrArray::ElementAt(int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void* CPtrArray::operator[](int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void*& CPtrArray::operator[](int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
const void* const* CPtrArray::GetData() const { return m_pData; }
void** CPtrArray::GetData() { return m_pData; }

void CPtrArray::SetAtGrow(int index, void* element) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setAtGrow(index, element);
}
int CPtrArray::Add(void* element) { return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).add(element); }

int CPtrArray::Append(const CPtrArray& source) {
    return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).append(source.m_pData, source.m_nSize);
}

void CPtrArray::Copy(const CPtrArray& source) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).copy(source.m_pData, source.m_nSize);
}

void CPtrArray::InsertAt(int index, void* element, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, element, count);
}

void CPtrArray::InsertAt(int index, const CPtrArray* source) {
    if (source == nullptr) return;
    if (source == this) {
        CPtrArray copy;
        copy.Copy(*this);
        return InsertAt(index, &copy);
    }
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, source->m_pData, source->m_nSize);
}

void CPtrArray::RemoveAt(int index, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).remove(index, count);
}
