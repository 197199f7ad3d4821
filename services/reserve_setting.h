#pragma once
// The reserve's size in the settings.

#include "runtime/reserve.h"

namespace kor {

/// The host's settings: section "System", key "Reserve-Memory".
ReserveStore& reserveSetting();

}  // namespace kor
