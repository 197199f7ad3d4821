#pragma once
/// The two ends of an argument list that is handed on as a `void*` (KORUTIL_ARGUMENTS): how a callee reads
/// one, and how one is laid over a row of slots in memory. Callers that build one want
/// korutil/argument_list.h.

#include <cstring>

#include "korutil/platform.h"

/// Starts a copy of a list that was handed on, so that the caller's own stays where it is.
/// @param copy       a va_list variable; end it with va_end
/// @param arguments  the `void*`, not null
#ifdef _WIN32
#define KORUTIL_COPY_ARGUMENTS(copy, arguments) va_copy(copy, static_cast<va_list>(arguments))
#else
#ifndef __x86_64__
#error "The native target's argument lists are those of x86-64"
#endif
#define KORUTIL_COPY_ARGUMENTS(copy, arguments) va_copy(copy, *static_cast<va_list*>(arguments))
#endif

namespace kor {

/// An argument list whose arguments stand in a row of pointer-sized slots, first to last.
class ArgumentsInMemory {
  public:
    /// @return the list in the form that is handed on, valid while this object and the slots are
    void* over(UINT_PTR* slots) {
#ifdef _WIN32
        return slots;
#else
        // All registers count as used up, so every argument is taken from the row.
        constexpr std::uint32_t kGeneralRegisters = 6 * 8;
        constexpr std::uint32_t kAllRegisters = kGeneralRegisters + 8 * 16;
        const Tag tag = {kGeneralRegisters, kAllRegisters, slots, nullptr};
        static_assert(sizeof(tag) == sizeof(list_));
        std::memcpy(list_, &tag, sizeof(tag));
        return static_cast<void*>(list_);
#endif
    }

  private:
#ifndef _WIN32
    // What a va_list of x86-64 holds (System V ABI, AMD64 supplement, 3.5.7).
    struct Tag {
        std::uint32_t generalOffset;
        std::uint32_t floatingOffset;
        void* overflowArea;
        void* registerArea;
    };

    va_list list_{};
#endif
};

}  // namespace kor
