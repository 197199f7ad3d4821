#pragma once
// What the library would show to the user, kept instead.
#include <string>
#include <vector>

#include "korutil/host.h"
#include "korutil/warning.h"

namespace kor::test {

struct ShownWarning {
    UtlWarningRecord record;  // its texts are gone
    std::string text;
    std::string caption;
};

/// Begins the library's use under the caption "Measuring" and answers every warning, until the object's end.
class ShownWarnings {
  public:
    static constexpr int kAnswer = 6;

    ShownWarnings();
    ~ShownWarnings();
    ShownWarnings(const ShownWarnings&) = delete;
    ShownWarnings& operator=(const ShownWarnings&) = delete;

    /// All warnings since the last call.
    std::vector<ShownWarning> take();

    /// The one warning since the last call; any other number of them fails the test and gives an empty one.
    ShownWarning takeOne();
};

}  // namespace kor::test
