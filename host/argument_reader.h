#pragma once
// Reads the arguments of a list that was handed on, one after the other, from a copy.

#include <cstdarg>

#include "korutil/platform/arguments.h"

namespace kor {

class ArgumentReader {
  public:
    /// @param arguments  may be null: then there is none
    explicit ArgumentReader(void* arguments) : there_(arguments != nullptr) {
        if (there_) KORUTIL_COPY_ARGUMENTS(list_, arguments);
    }
    ~ArgumentReader() {
        if (there_) va_end(list_);
    }
    ArgumentReader(const ArgumentReader&) = delete;
    ArgumentReader& operator=(const ArgumentReader&) = delete;

    bool there() const { return there_; }
    int nextInt() { return va_arg(list_, int); }
    LONGLONG nextLongLong() { return va_arg(list_, LONGLONG); }
    double nextDouble() { return va_arg(list_, double); }
    void* nextPointer() { return va_arg(list_, void*); }

  private:
    bool there_;
    va_list list_;
};

}  // namespace kor
