#include "runtime/error_ring.h"

#include <memory>
#include <typeinfo>

#include "korutil/framework/ptr_array.h"
#include "runtime/immortal.h"

namespace kor {
namespace {

constexpr int kSlots = 8;

struct ErrorRing {
    CPtrArray slots;  // owned errors and nulls; empty until the first placement and after clearing
    int next = 0;     // the slot that the next placement fills; not reset by clearing
};

ErrorRing& errorRing() {
    static Immortal<ErrorRing> ring;
    return *ring;
}

// The slots, made when there are none yet.
void** readySlots(ErrorRing& ring) {
    if (ring.slots.GetSize() < kSlots) {
        ring.slots.SetSize(kSlots);
        ring.next = 0;
    }
    return ring.slots.GetData();
}

int before(int slot) { return slot == 0 ? kSlots - 1 : slot - 1; }

void deleteSlot(void*& slot) {
    auto* error = static_cast<CKorError*>(slot);
    slot = nullptr;
    error->Delete();
}

struct DeleteError {
    void operator()(CKorError* error) const { error->Delete(); }
};

// The error that the next placement would delete, when it is one of ours, taken out of the ring to be filled
// anew: most errors then need no memory. Null when there is none.
CGeneralError* takeOldest() {
    ErrorRing& ring = errorRing();
    if (ring.slots.GetSize() == 0) return nullptr;
    void*& slot = ring.slots.GetData()[ring.next];
    auto* oldest = static_cast<CKorError*>(slot);
    if (!oldest || typeid(*oldest) != typeid(CGeneralError)) return nullptr;
    slot = nullptr;
    return static_cast<CGeneralError*>(oldest);
}

}  // namespace

struct ErrorRenewal {
    /// Makes an error what a new one with this code is, but for the user's text, which is to be set next.
    static void renew(CGeneralError& error, DWORD code) {
        error.m_dwErrorCode = code;
        if (!error.m_strDebugMessage.IsEmpty()) error.m_strDebugMessage.Empty();
    }
};

CMemError& memoryError() {
    static Immortal<CMemError> error;
    return *error;
}

void placeOwnedError(CKorError* error) {
    std::unique_ptr<CKorError, DeleteError> owner(error);
    ErrorRing& ring = errorRing();
    void*& slot = readySlots(ring)[ring.next];
    if (slot) deleteSlot(slot);
    slot = owner.release();
    ring.next = ring.next + 1 == kSlots ? 0 : ring.next + 1;
}

CGeneralError* makeError(UINT code, UINT number, const char* errorText, void* errorArguments,
                         const char* debugText, void* debugArguments, UINT helpContext, HINSTANCE instance) {
    std::unique_ptr<CGeneralError> error(takeOldest());
    if (error)
        ErrorRenewal::renew(*error, code);
    else
        error = std::make_unique<CGeneralError>(code);
    error->SetErrorMessage(errorText, errorArguments, helpContext, instance);
    error->SetDebugMessage(number, debugText, debugArguments, instance);
    return error.release();
}

}  // namespace kor

using namespace kor;

BOOL KORUTIL_CALL appPlaceError(UINT code, UINT number, const char* errorText, void* errorArguments,
                                const char* debugText, void* debugArguments, UINT helpContext,
                                HINSTANCE instance) {
    placeOwnedError(
        makeError(code, number, errorText, errorArguments, debugText, debugArguments, helpContext, instance));
    return 1;
}

BOOL KORUTIL_CALL appPlaceErrorObject(const CKorError& error) {
    placeOwnedError(error.Duplicate());
    return 1;
}

CKorError* KORUTIL_CALL appGetLastErrorObject() {
    ErrorRing& ring = errorRing();
    if (ring.slots.GetSize() == 0) return nullptr;
    return static_cast<CKorError*>(ring.slots.GetAt(before(ring.next)));
}

BOOL KORUTIL_CALL appRemoveLastError() {
    ErrorRing& ring = errorRing();
    if (ring.slots.GetSize() == 0) return 0;
    ring.next = before(ring.next);  // also over an empty slot: required
    void*& slot = ring.slots.ElementAt(ring.next);
    if (!slot) return 0;
    deleteSlot(slot);
    return 1;
}

void KORUTIL_CALL appClearErrors() {
    CPtrArray& slots = errorRing().slots;
    for (int slot = slots.GetUpperBound(); slot >= 0; --slot) {
        if (slots.GetAt(slot)) deleteSlot(slots.ElementAt(slot));
    }
    slots.RemoveAll();
}
