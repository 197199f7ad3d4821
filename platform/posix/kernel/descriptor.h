#pragma once

#include <unistd.h>

#include <utility>

namespace kor {

/// The owner of a file descriptor.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (isOpen()) close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    bool isOpen() const { return number_ >= 0; }
    int get() const { return number_; }

  private:
    int number_ = -1;
};

}  // namespace kor
