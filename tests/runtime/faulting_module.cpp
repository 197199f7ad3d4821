#include "tests/runtime/faulting_module.h"

#include <stdexcept>

#include "platform/win32.h"

namespace kor::test {
namespace {

class Module {
  public:
    Module() : module_(LoadLibraryA("faulting_module")) {
        const FARPROC entry = module_ ? GetProcAddress(module_, "korFaulting") : nullptr;
        if (!entry) throw std::runtime_error("faulting_module cannot be loaded");
        table_ = reinterpret_cast<decltype(&korFaulting)>(reinterpret_cast<void (*)()>(entry))();
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module() { FreeLibrary(module_); }

    const Faulting* table() const { return table_; }

  private:
    HMODULE module_;
    const Faulting* table_ = nullptr;
};

}  // namespace

const Faulting* faultingModule() {
    static const Module module;
    return module.table();
}

}  // namespace kor::test
