#pragma once
// How a command ends: with an exit status, and when it cannot do its work with an exception that main turns
// into one line and an exit status.

#include <stdexcept>
#include <string>
#include <string_view>

namespace kor::command {

enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,
    kAnswerIsNo = 1,  ///< done, and the answer was written: two files differ, a file has faults
    kWrongUsage = 2,
    kNoAnswer = 2,   ///< of a command whose answer may be no: the failure that left it without an answer
    kIncomplete = 3  ///< done, but not everything could be kept, which was told
};

/// Refused or failed: exit status 1.
class Failure : public std::runtime_error {
  public:
    /// @param where   the file (or other thing) that it is about, in UTF-8
    /// @param reason  why, without a full stop
    Failure(std::string_view where, std::string_view reason)
        : std::runtime_error(std::string(where) + ": " + std::string(reason)) {}
};

/// The command line is wrong: exit status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The C library's text of an errno value.
std::string systemReason(int errorNumber);

}  // namespace kor::command
