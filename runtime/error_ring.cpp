#include "runtime/error_ring.h"

#include <array>
#include <memory>
#include <utility>

#include "korutil/framework/ptr_array.h"
#include "runtime/immortal.h"

namespace kor {
namespace {

constexpr int kSlots = 8;

struct ErrorRing {
    CPtrArray slots;  // owned errors and nulls; empty until the first placement and after clearing
    int next = 0;     // the slot that the next placement fills; not reset by clearing
    std::array<bool, kSlots> made{};  // which of them makeError made
    CGeneralError* spare =
        nullptr;  // one that left the ring, to be filled anew: most errors then need no memory
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

struct DeleteError {
    void operator()(CKorError* error) const { error->Delete(); }
};
using ErrorOwner = std::unique_ptr<CKorError, DeleteError>;

ErrorOwner takeFrom(void*& slot) { return ErrorOwner(static_cast<CKorError*>(std::exchange(slot, nullptr))); }

// Empties the slot that is to be filled. The error's own Delete may do anything to the ring, so nothing of
// the ring is held meanwhile.
void evictOldest(ErrorRing& ring) {
    const int slot = ring.next;
    ErrorOwner oldest = takeFrom(readySlots(ring)[slot]);
    if (oldest && ring.made[static_cast<std::size_t>(slot)] && !ring.spare)
        ring.spare = static_cast<CGeneralError*>(oldest.release());
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

namespace {

void place(ErrorOwner error, bool made) {
    ErrorRing& ring = errorRing();
    readySlots(ring);
    evictOldest(ring);
    readySlots(ring)[ring.next] = error.release();
    ring.made[static_cast<std::size_t>(ring.next)] = made;
    ring.next = ring.next + 1 == kSlots ? 0 : ring.next + 1;
}

}  // namespace

void placeMadeError(CGeneralError* error) { place(ErrorOwner(error), true); }

CGeneralError* makeError(UINT code, UINT number, const char* errorText, void* errorArguments,
                         const char* debugText, void* debugArguments, UINT helpContext, HINSTANCE instance) {
    std::unique_ptr<CGeneralError> error(std::exchange(errorRing().spare, nullptr));
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
    placeMadeError(
        makeError(code, number, errorText, errorArguments, debugText, debugArguments, helpContext, instance));
    return 1;
}

BOOL KORUTIL_CALL appPlaceErrorObject(const CKorError& error) {
    place(ErrorOwner(error.Duplicate()), false);
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
    return takeFrom(ring.slots.ElementAt(ring.next)) ? 1 : 0;
}

void KORUTIL_CALL appClearErrors() {
    ErrorRing& ring = errorRing();
    std::array<ErrorOwner, kSlots> errors;
    for (int slot = 0; slot < ring.slots.GetSize(); ++slot)
        errors[static_cast<std::size_t>(slot)] = takeFrom(ring.slots.ElementAt(slot));
    ring.slots.RemoveAll();
    const std::unique_ptr<CGeneralError> spare(std::exchange(ring.spare, nullptr));
    for (auto error = errors.rbegin(); error != errors.rend(); ++error)
        error->reset();
}
