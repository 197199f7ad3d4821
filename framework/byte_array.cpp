#include "korutil/framework/byte_array.h"

#include "framework/array_storage.h"

IMPLEMENT_DYNCREATE(CByteArray, CObject)

namespace {

using Storage = kor::ArrayStorage<BYTE>;

}  // namespace

CByteArray::CByteArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
CByteArray::~CByteArray() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(0, -1); }

int CByteArray::GetSize() const { return m_nSize; }
int CByteArray::GetUpperBound() const { return m_nSize - 1; }

void CByteArray::SetSize(int size, int growBy) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setSize(size, growBy);
}
void CByteArray::FreeExtra() { Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).freeExtra(); }
void CByteArray::RemoveAll() { SetSize(0); }

BYTE CByteArray::GetAt(int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
void CByteArray::SetAt(int index, BYTE element) { m_pData[kor::checkedIndex(index, m_nSize)] = element; }
BYTE& CByteArray::ElementAt(int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
BYTE CByteArray::operator[](int index) const { return m_pData[kor::checkedIndex(index, m_nSize)]; }
BYTE& CByteArray::operator[](int index) { return m_pData[kor::checkedIndex(index, m_nSize)]; }
const BYTE* CByteArray::GetData() const { return m_pData; }
BYTE* CByteArray::GetData() { return m_pData; }

void CByteArray::SetAtGrow(int index, BYTE element) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).setAtGrow(index, element);
}
int CByteArray::Add(BYTE element) { return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).add(element); }

int CByteArray::Append(const CByteArray& source) {
    return Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).append(source.m_pData, source.m_nSize);
}

void CByteArray::Copy(const CByteArray& source) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).copy(source.m_pData, source.m_nSize);
}

void CByteArray::InsertAt(int index, BYTE element, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, element, count);
}

void CByteArray::InsertAt(int index, const CByteArray* source) {
    if (source == nullptr) return;
    if (source == this) {
        CByteArray copy;
        copy.Copy(*this);
        return InsertAt(index, &copy);
    }
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).insert(index, source->m_pData, source->m_nSize);
}

void CByteArray::RemoveAt(int index, int count) {
    Storage(m_pData, m_nSize, m_nMaxSize, m_nGrowBy).remove(index, count);
}
