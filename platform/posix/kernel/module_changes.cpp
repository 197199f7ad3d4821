#include "platform/module_changes.h"

#include <link.h>

namespace {

// The counts are the same for every module, so the first one tells them.
int takeCounts(dl_phdr_info* module, std::size_t, void* changes) {
    *static_cast<ULONGLONG*>(changes) = module->dlpi_adds + module->dlpi_subs;
    return 1;
}

}  // namespace

KORPLATFORM_API ULONGLONG WINAPI korModuleChanges() {
    ULONGLONG changes = 0;
    dl_iterate_phdr(takeCounts, &changes);
    return changes;
}
