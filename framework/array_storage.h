#pragma once
// What the array classes have in common: changing a block of elements whose fields stand in the array object.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "korutil/framework/memory_exception.h"

namespace kor {

[[noreturn]] void throwOutOfArray();

/// The index, after a check that it is below the size.
inline int checkedIndex(int index, int size) {
    if (index < 0 || index >= size) throwOutOfArray();
    return index;
}

/// One change of an array. Elements may be moved by copying their bytes, and copying one never fails; every
/// function changes nothing until nothing can fail any more.
template <class Element>
class ArrayStorage {
  public:
    ArrayStorage(Element*& data, int& size, int& room, int& growBy)
        : data_(data), size_(size), room_(room), growBy_(growBy) {}

    void setSize(int size, int growBy) {
        if (size < 0) throwOutOfArray();
        if (size > size_) {
            reserve(size, growBy >= 0 ? growBy : growBy_);
            std::uninitialized_value_construct_n(data_ + size_, size - size_);
        } else {
            std::destroy_n(data_ + size, size_ - size);
        }
        size_ = size;
        if (growBy >= 0) growBy_ = growBy;
        if (size == 0) freeExtra();
    }

    void freeExtra() {
        if (room_ == size_) return;
        if (size_ == 0) {
            std::free(std::exchange(data_, nullptr));
        } else if (!reallocate(size_)) {
            return;
        }
        room_ = size_;
    }

    void setAtGrow(int index, Element element) {
        if (index < 0) throwOutOfArray();
        if (index >= size_) setSize(grown(index, 1), -1);
        data_[index] = std::move(element);
    }

    int add(Element element) {
        reserve(grown(size_, 1), growBy_);
        std::construct_at(data_ + size_, std::move(element));
        return size_++;
    }

    /// `source` may be the pointer of this array, which moves as the array grows.
    int append(const Element* const& source, int count) {
        const int first = size_;
        reserve(grown(size_, count), growBy_);
        std::uninitialized_copy_n(source, count, data_ + first);
        size_ += count;
        return first;
    }

    void copy(const Element* source, int count) {
        if (source == data_) return;
        reserve(count, growBy_);
        std::destroy_n(data_, size_);
        std::uninitialized_copy_n(source, count, data_);
        size_ = count;
        if (size_ == 0) freeExtra();
    }

    void insert(int index, Element element, int count) {
        if (index < 0) throwOutOfArray();
        if (count < 1) return;
        std::uninitialized_fill_n(openGap(index, count), count, element);
    }

    /// `source` is not a part of this array.
    void insert(int index, const Element* source, int count) {
        if (index < 0) throwOutOfArray();
        if (count > 0) std::uninitialized_copy_n(source, count, openGap(index, count));
    }

    void remove(int index, int count) {
        if (index < 0 || count < 0 || index > size_ || count > size_ - index) throwOutOfArray();
        std::destroy_n(data_ + index, count);
        moveElements(index + count, index);
        size_ -= count;
    }

  private:
    static int grown(int size, int count) {
        if (count > INT_MAX - size) AfxThrowMemoryException();
        return size + count;
    }

    bool reallocate(int room) {
        const std::size_t bytes = static_cast<std::size_t>(room) * sizeof(Element);
        if (bytes / sizeof(Element) != static_cast<std::size_t>(room)) return false;
        void* moved = std::realloc(static_cast<void*>(data_), bytes);
        if (moved == nullptr) return false;
        data_ = static_cast<Element*>(moved);
        return true;
    }

    void reserve(int size, int growBy) {
        if (size <= room_) return;
        constexpr int kLeast = std::max<int>(4, 32 / sizeof(Element));
        const int step = std::max({growBy, room_ / 2, kLeast});
        const int ample = std::max(size, step > INT_MAX - room_ ? INT_MAX : room_ + step);
        if (reallocate(ample)) {
            room_ = ample;
        } else if (reallocate(size)) {
            room_ = size;
        } else {
            AfxThrowMemoryException();
        }
    }

    // Moves the elements from one index on to another; what they leave and what they cover holds no elements.
    void moveElements(int from, int to) {
        if (from < size_)
            std::memmove(static_cast<void*>(data_ + to), static_cast<const void*>(data_ + from),
                         static_cast<std::size_t>(size_ - from) * sizeof(Element));
    }

    // Makes room for elements in front of an index; the caller constructs them.
    Element* openGap(int index, int count) {
        const int size = grown(std::max(index, size_), count);
        reserve(size, growBy_);
        if (index > size_) {
            std::uninitialized_value_construct_n(data_ + size_, index - size_);
        } else {
            moveElements(index, index + count);
        }
        size_ = size;
        return data_ + index;
    }

    Element*& data_;
    int& size_;
    int& room_;
    int& growBy_;
};

}  // namespace kor
