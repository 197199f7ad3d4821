// What the machine is like: processors, pages, memory.
#include <sched.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>

#include "platform/posix/kernel/reservation.h"

namespace {

constexpr WORD kProcessorAmd64 = 9;
constexpr DWORD kTypeAmd64 = 8664;

}  // namespace

void WINAPI GetSystemInfo(SYSTEM_INFO* information) {
    cpu_set_t usable;
    CPU_ZERO(&usable);
    if (::sched_getaffinity(0, sizeof usable, &usable) != 0) CPU_SET(0, &usable);
    *information = {};
    information->wProcessorArchitecture = kProcessorAmd64;
    information->dwPageSize = static_cast<DWORD>(kor::kPageSize);
    information->lpMinimumApplicationAddress = reinterpret_cast<void*>(kor::kLowestAddress);
    information->lpMaximumApplicationAddress = reinterpret_cast<void*>(kor::kAddressEnd - 1);
    for (unsigned i = 0; i < 8 * sizeof(DWORD_PTR); ++i)
        if (CPU_ISSET(i, &usable)) information->dwActiveProcessorMask |= DWORD_PTR{1} << i;
    information->dwNumberOfProcessors = static_cast<DWORD>(CPU_COUNT(&usable));
    information->dwProcessorType = kTypeAmd64;
    information->dwAllocationGranularity = static_cast<DWORD>(kor::kGranularity);
}

void WINAPI GlobalMemoryStatus(MEMORYSTATUS* status) {
    struct sysinfo machine {};
    ::sysinfo(&machine);
    const SIZE_T unit = machine.mem_unit;
    *status = {};
    status->dwLength = sizeof *status;
    status->dwTotalPhys = machine.totalram * unit;
    status->dwAvailPhys = (machine.freeram + machine.bufferram) * unit;
    status->dwTotalPageFile = status->dwTotalPhys + machine.totalswap * unit;
    status->dwAvailPageFile = status->dwAvailPhys + machine.freeswap * unit;
    status->dwTotalVirtual = kor::kAddressEnd - kor::kLowestAddress;
    status->dwAvailVirtual = status->dwTotalVirtual;
    const SIZE_T total = std::max<SIZE_T>(status->dwTotalPhys, 1);
    status->dwMemoryLoad = static_cast<DWORD>(100 - status->dwAvailPhys * 100 / total);
}
