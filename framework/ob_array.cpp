#include "korutil/framework/ob_array.h"

#include "framework/array_storage.h"

IMPLEMENT_DYNCREATE(CObArray, CObject)

namespace {

using Storage = kor::ArrayStorage<CObject*>;

}  // namespace

CObArray::CObArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
CObArray::~CObArray() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(0, -1); }

int CObArray::GetSize() const { return m_nSize; }
int CObArray::GetUpperBound() const { return m_nSize - 1; }

void CObArray::SetSize(int size, int growBy) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(size, growBy);
}
void CObArray::FreeExtra() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).freeExtra(); }
void CObArray::RemoveAll() { SetSize(0); }

CObject* CObArray::GetAt(int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void CObArray::SetAt(int index, CObject* element) { m_pData[kor::checkedIndex(index, m_nSize)] = element; }
CObject*& CObArray::ElementAt(int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
CObject* CObArray::operator[](int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
CObject*& CObArray::operator[](int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
const CObject* const* CObArray::GetData() const { return m_pData; }
CObject** CObArray::GetData() { return m_pData; }

void CObArray::SetAtGrow(int index, CObject* element) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setAtGrow(index, element);
}
int CObArray::Add(CObject* element) { return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).add(element); }

int CObArray::Append(const CObArray& source) {
    return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).append(source.m_pData, source.m_nSize);
}

void CObArray::Copy(const CObArray& source) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).copy(source.m_pData, source.m_nSize);
}

void CObArray::InsertAt(int index, CObject* element, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, element, count);
}

void CObArray::InsertAt(int index, const CObArray* source) {
    if (source == nullptr) return;
    if (source == this) {
        CObArray copy;
        copy.Copy(*this);
        return InsertAt(index, &copy);
    }
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, source->m_pData, source->m_nSize);
}

void CObArray::RemoveAt(int index, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).remove(index, count);
}
