#pragma once
/// An array of pointers that it does not own.
///
/// An index that the array does not have, a negative size and a count that reaches past the end are mistakes
/// of the caller: they throw `std::out_of_range`, and nothing outside the array is ever touched. Lack of
/// memory throws a `CMemoryException*`; either way the array stays as it was. The room grows by at least half
/// of itself, so that appending costs the same however long the array is. An empty array holds no memory.

#include "korutil/framework/object.h"

class KORUTIL_CLASS CPtrArray : public CObject {
    DECLARE_DYNAMIC(CPtrArray)
  public:
    CPtrArray();
    ~CPtrArray() override;

    int GetSize() const;
    /// The last valid index; -1 for an empty array.
    int GetUpperBound() const;
    /// Makes the array `size` elements long; new ones are null, and 0 gives all memory back.
    /// @param growBy  the least number of elements to make room for at a time; 0: the array chooses,
    ///                -1: as before
    void SetSize(int size, int growBy = -1);
    /// Gives back memory that the elements do not need.
    void FreeExtra();
    /// Makes the array empty and gives its memory back.
    void RemoveAll();

    void* GetAt(int index) const;
    void SetAt(int index, void* element);
    void*& ElementAt(int index);
    void* operator[](int index) const;
    void*& operator[](int index);
    /// The elements in a row, null when there are none; valid until the array grows or shrinks.
    const void* const* GetData() const;
    void** GetData();

    /// Sets an element, making the array long enough for it first.
    void SetAtGrow(int index, void* element);
    /// Appends an element. @return its index
    int Add(void* element);
    /// Appends the elements of `source`, which may be this array. @return the index of the first of them
    int Append(const CPtrArray& source);
    /// Replaces the elements by those of `source`.
    void Copy(const CPtrArray& source);
    /// Inserts `count` times an element in front of the one at `index`; an index past the end makes the array
    /// grow to it. A count below 1 inserts nothing.
    void InsertAt(int index, void* element, int count = 1);
    /// Inserts the elements of `source`, which may be this array; a null `source` inserts nothing.
    void InsertAt(int index, const CPtrArray* source);
    /// Removes `count` elements; all of them must be there. A count of 0 removes nothing.
    void RemoveAt(int index, int count = 1);

  private:
    void** m_pData;
    int m_nSize;
    int m_nMaxSize;
    int m_nGrowBy;
};
