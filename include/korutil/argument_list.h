#pragma once
/// Argument lists built in memory. Formatting arguments travel as one `void*`: a started `va_list` in the
/// form of KORUTIL_ARGUMENTS, or a list built here, argument by argument, as a variadic call would have
/// passed them.
///
///     KorArgumentList arguments;
///     arguments.add(7).add("C:\\IMAGE.TIF").add(0.5);
///     appPlaceError(code, number, "%d: %s at %g", arguments.arguments(), nullptr, nullptr, 0, nullptr);

#include <cstring>
#include <type_traits>
#include <vector>

#include "korutil/platform.h"
#include "korutil/platform/arguments.h"

/// A row of arguments. Natively each takes one slot of 8 bytes; on 32 bits a slot has 4 bytes, and doubles
/// and 64-bit integers take two. Texts and other pointers are kept as pointers, not copied.
class KorArgumentList {
  public:
    /// Appends an argument: an integer of up to 64 bits (smaller ones are promoted to int, as in a call), an
    /// enumeration, a floating-point number (taken as a double) or a pointer.
    /// @return this list
    template <class Value>
    KorArgumentList& add(Value value) {
        if constexpr (std::is_pointer_v<Value> || std::is_null_pointer_v<Value>) {
            return append(static_cast<const void*>(value));
        } else if constexpr (std::is_floating_point_v<Value>) {
            static_assert(sizeof(Value) <= sizeof(double), "pass a double");
            return append(static_cast<double>(value));
        } else if constexpr (std::is_enum_v<Value>) {
            return add(static_cast<std::underlying_type_t<Value>>(value));
        } else {
            static_assert(std::is_integral_v<Value>, "an argument is a number or a pointer");
            return append(+value);
        }
    }

    /// Forgets all arguments.
    void clear() { slots_.clear(); }

    /// @return the list as formatting arguments; valid until this object is changed, moved or destroyed
    void* arguments() {
        slots_.reserve(1);  // an empty list has an address too
        return memory_.over(slots_.data());
    }

  private:
    template <class Value>
    KorArgumentList& append(Value value) {
        constexpr std::size_t kSlots = (sizeof(Value) + sizeof(UINT_PTR) - 1) / sizeof(UINT_PTR);
        UINT_PTR words[kSlots] = {};
        std::memcpy(words, &value, sizeof(Value));
        for (const UINT_PTR word : words) {
            slots_.push_back(word);
        }
        return *this;
    }

    std::vector<UINT_PTR> slots_;
    kor::ArgumentsInMemory memory_;
};
