#include "files/symbolic_link.h"

namespace kor {

std::optional<std::string> symbolicLinkTarget(const char*) { return std::nullopt; }

}  // namespace kor
