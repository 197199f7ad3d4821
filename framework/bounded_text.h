#pragma once
// A text that is put together in a caller's buffer, without memory of its own.

#include <string_view>

#include "korutil/platform.h"

namespace kor {

class BoundedText {
  public:
    /// The text so far is empty; with a null buffer or a size of 0 nothing is ever written.
    BoundedText(char* buffer, UINT size);

    /// Appends as many whole characters as fit; after a cut nothing more is appended.
    BoundedText& append(std::string_view text);
    BoundedText& append(LONG number);

  private:
    char* next_;
    UINT room_;  // the ending zero is accounted for
};

}  // namespace kor
