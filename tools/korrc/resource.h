#pragma once
// A compiled resource, and the writer of little-endian records that resources are made of.

#include <cstdint>
#include <string_view>

#include "source_file.h"

namespace korrc {

enum Type : std::uint16_t {
    kCursor = 1,
    kDialog = 5,
    kString = 6,
    kRawData = 10,
    kGroupCursor = 12,
    kVersion = 16
};

inline constexpr std::uint16_t kNeutral = 0;

struct Resource {
    std::uint16_t type;
    std::uint16_t name;
    std::uint16_t language;
    Bytes bytes;
};

/// Appends little-endian fields to a block of bytes.
class Writer {
  public:
    explicit Writer(Bytes& bytes) : bytes_(bytes) {}

    void byte(std::size_t value) { bytes_.push_back(static_cast<std::uint8_t>(value)); }
    void word(std::size_t value) {
        byte(value & 0xFF);
        byte(value >> 8 & 0xFF);
    }
    void dword(std::size_t value) {
        word(value & 0xFFFF);
        word(value >> 16 & 0xFFFF);
    }
    void units(std::u16string_view text) {
        for (const char16_t unit : text)
            word(unit);
    }
    void text(std::u16string_view text) {
        units(text);
        word(0);
    }
    void append(const Bytes& more) { bytes_.insert(bytes_.end(), more.begin(), more.end()); }
    void align(std::size_t unit) { bytes_.resize((bytes_.size() + unit - 1) / unit * unit); }
    void padTo(std::size_t size) { bytes_.resize(size); }
    std::size_t size() const { return bytes_.size(); }

    /// Stores a field again whose value was not known when it was written.
    void setWord(std::size_t at, std::size_t value) {
        bytes_[at] = static_cast<std::uint8_t>(value);
        bytes_[at + 1] = static_cast<std::uint8_t>(value >> 8);
    }

  private:
    Bytes& bytes_;
};

}  // namespace korrc
