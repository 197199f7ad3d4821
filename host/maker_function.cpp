#include "host/maker_function.h"

#include <array>
#include <cstring>
#include <mutex>
#include <new>

#include "platform/module_changes.h"
#include "platform/win32.h"

namespace kor {
namespace {

using Function = void (*)();

// @param certain  receives whether it is more than a lack of memory that nothing was found
Function lookUp(const char* library, const char* name, bool& certain) {
    const DWORD lastError = GetLastError();
    FARPROC found = nullptr;
    SetLastError(ERROR_SUCCESS);
    try {
        const HMODULE module = GetModuleHandleA(library);
        found = module ? GetProcAddress(module, name) : nullptr;
        certain = GetLastError() != ERROR_NOT_ENOUGH_MEMORY;
    } catch (const std::bad_alloc&) {
        certain =
            false;  // natively a look-up takes memory; while it is short the embedded host does the work
    }
    SetLastError(lastError);
    return reinterpret_cast<Function>(found);
}

// What was found, or not, while the process's modules stay the same: looking among them takes much longer.
class Answers {
  public:
    Function find(const char* library, const char* name) {
        const ULONGLONG changes = korModuleChanges();
        Answer answer{library, name, nullptr};
        if (changes != 0 && known(changes, answer)) return answer.function;
        // Not under the lock: a thread that loads a module may look for a function too.
        bool certain = false;
        answer.function = lookUp(library, name, certain);
        if (changes != 0 && certain) keep(changes, answer);
        return answer.function;
    }

  private:
    struct Answer {
        const char* library;
        const char* name;
        Function function;
    };

    bool known(ULONGLONG changes, Answer& wanted) {
        const std::lock_guard lock(mutex_);
        if (changes != changes_) return false;
        for (std::size_t index = 0; index < count_; ++index) {
            const Answer& answer = answers_[index];
            if (std::strcmp(answer.name, wanted.name) || std::strcmp(answer.library, wanted.library))
                continue;
            wanted.function = answer.function;
            return true;
        }
        return false;
    }

    void keep(ULONGLONG changes, const Answer& answer) {
        const std::lock_guard lock(mutex_);
        if (changes != changes_) count_ = 0;
        changes_ = changes;
        if (count_ < answers_.size()) answers_[count_++] = answer;
    }

    std::mutex mutex_;
    ULONGLONG changes_ = 0;
    std::array<Answer, 16> answers_{};
    std::size_t count_ = 0;
};

}  // namespace

Function findMakerFunction(const char* library, const char* name) {
    static Answers answers;
    return answers.find(library, name);
}

}  // namespace kor
