#include "korutil/framework/string_array.h"

#include "framework/array_storage.h"

IMPLEMENT_DYNCREATE(CStringArray, CObject)

namespace {

using Storage = kor::ArrayStorage<CString>;

}  // namespace

CStringArray::CStringArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
CStringArray::~CStringArray() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(0, -1); }

int CStringArray::GetSize() const { return m_nSize; }
int CStringArray::GetUpperBound() const { return m_nSize - 1; }

void CStringArray::SetSize(int size, int growBy) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(size, growBy);
}
void CStringArray::FreeExtra() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).freeExtra(); }
void CStringArray::RemoveAll() { SetSize(0); }

CString CStringArray::GetAt(int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void CStringArray::SetAt(int index, const CString& element) {
    m_pData[kor::checkedIndex(index, m_nSize)] = element;
}
void CStringArray::SetAt(int index, const char* element) {
    m_pData[kor::checkedIndex(index, m_nSize)] = element;
}
CString& CStringArray::ElementAt(int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
CString CStringArray::operator[](int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
CString& CStringArray::operator[](int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
const CString* CStringArray::GetData() const { return m_pData; }
CString* CStringArray::GetData() { return m_pData; }

void CStringArray::SetAtGrow(int index, const CString& element) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setAtGrow(index, element);
}
void CStringArray::SetAtGrow(int index, const char* element) { SetAtGrow(index, CString(element)); }
int CStringArray::Add(const CString& element) {
    return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).add(element);
}
int CStringArray::Add(const char* element) { return Add(CString(element)); }

int CStringArray::Append(const CStringArray& source) {
    return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).append(source.m_pData, source.m_nSize);
}

void CStringArray::Copy(const CStringArray& source) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).copy(source.m_pData, source.m_nSize);
}

void CStringArray::InsertAt(int index, const CString& element, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, element, count);
}
void CStringArray::InsertAt(int index, const char* element, int count) {
    InsertAt(index, CString(element), count);
}

void CStringArray::InsertAt(int index, const CStringArray* source) {
    if (source == nullptr) return;
    if (source == this) {
        CStringArray copy;
        copy.Copy(*this);
        return InsertAt(index, &copy);
    }
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, source->m_pData, source->m_nSize);
}

void CStringArray::RemoveAt(int index, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).remove(index, count);
}
