#pragma once
// An object that lives until the process ends: others may still use it while static objects are destroyed.

#include <cstddef>
#include <new>

namespace kor {

template <class T>
class Immortal {
  public:
    Immortal() : object_(::new (storage_) T) {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;

    T& operator*() { return *object_; }

  private:
    alignas(T) std::byte storage_[sizeof(T)];
    T* object_;
};

}  // namespace kor
