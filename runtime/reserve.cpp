#include "runtime/reserve.h"

#include "korutil/lifecycle.h"

namespace kor {

ReserveSize& reserveSize() {
    static ReserveSize size;
    return size;
}

}  // namespace kor

DWORD KORUTIL_CALL appGetReserveSizeForVirtualAlloc() { return kor::reserveSize().get(); }

BOOL KORUTIL_CALL appSetReserveSizeForVirtualAlloc(DWORD bytes) { return kor::reserveSize().set(bytes); }
