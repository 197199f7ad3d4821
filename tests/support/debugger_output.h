#pragma once
// What is sent to the debugger while an object of this class lives.
#include <string>

namespace kor::test {

class DebuggerOutput {
  public:
    DebuggerOutput();
    ~DebuggerOutput();
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    /// Ends the listening.
    /// @return all texts, one behind the other
    std::string take();

  private:
    bool listening_ = true;
};

}  // namespace kor::test
