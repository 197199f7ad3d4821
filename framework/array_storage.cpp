#include "framework/array_storage.h"

#include <stdexcept>

namespace kor {

void throwOutOfArray() { throw std::out_of_range("array: index or count outside the array"); }

}  // namespace kor
