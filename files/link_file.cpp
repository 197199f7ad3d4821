#include "files/link_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/win32.h"

namespace kor {
namespace {

using Bytes = std::span<const std::byte>;

// What is wrong with the file is told by this, within this source only.
struct Damaged {};

Bytes slice(Bytes bytes, std::size_t start) {
    if (start > bytes.size()) throw Damaged();
    return bytes.subspan(start);
}

Bytes slice(Bytes bytes, std::size_t start, std::size_t size) {
    const Bytes rest = slice(bytes, start);
    if (size > rest.size()) throw Damaged();
    return rest.first(size);
}

template <std::size_t size>
std::uint32_t number(Bytes bytes, std::size_t at) {
    const Bytes field = slice(bytes, at, size);
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;)
        value = value << 8 | std::to_integer<std::uint32_t>(field[i]);
    return value;
}

std::uint32_t dword(Bytes bytes, std::size_t at) { return number<4>(bytes, at); }
std::uint32_t word(Bytes bytes, std::size_t at) { return number<2>(bytes, at); }

// Up to a zero or the end.
std::string narrowText(Bytes bytes) {
    const auto end = std::find(bytes.begin(), bytes.end(), std::byte{0});
    return std::string(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::size_t>(end - bytes.begin()));
}

// Up to a zero or the end. Empty when the code page cannot express the text.
std::string wideText(Bytes bytes) {
    constexpr std::size_t kLongest = 0x8000;
    std::vector<WCHAR> text;
    for (std::size_t at = 0; at + 1 < bytes.size() && text.size() < kLongest; at += 2) {
        const auto unit = static_cast<WCHAR>(word(bytes, at));
        if (unit == 0) break;
        text.push_back(unit);
    }
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    std::string narrow(text.size() * 4, '\0');
    const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(),
                                         static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(std::max(size, 0)));
    std::vector<WCHAR> back(text.size());
    const bool same = !narrow.empty() &&
                      MultiByteToWideChar(CP_ACP, 0, narrow.data(), size, back.data(), length) == length &&
                      back == text;
    return same ? narrow : std::string();
}

// A text that stands in the code page and perhaps in UTF-16 too, each at an offset told in the header.
// @param wideAt  where the offset of the second one stands, 0 when there is none
std::string eitherText(Bytes bytes, std::size_t narrowAt, std::size_t wideAt) {
    const std::string wide = wideAt ? wideText(slice(bytes, dword(bytes, wideAt))) : std::string();
    return wide.empty() ? narrowText(slice(bytes, dword(bytes, narrowAt))) : wide;
}

// The name of a share, out of a CommonNetworkRelativeLink.
std::string shareName(Bytes bytes) {
    constexpr std::size_t kNameOffset = 8, kWideNameOffset = 20, kShortHeader = 0x14;
    const Bytes link = slice(bytes, 0, dword(bytes, 0));
    const bool hasWide = dword(link, kNameOffset) > kShortHeader;
    return eitherText(link, kNameOffset, hasWide ? kWideNameOffset : 0);
}

// The path that a LinkInfo tells.
std::string infoPath(Bytes info) {
    constexpr std::uint32_t kHasLocalPath = 1, kHasNetworkPath = 2, kWideHeader = 0x24;
    constexpr std::size_t kFlags = 8, kLocal = 16, kNetwork = 20, kSuffix = 24, kWideLocal = 28,
                          kWideSuffix = 32;
    const bool wide = dword(info, 4) >= kWideHeader;
    const std::uint32_t flags = dword(info, kFlags);
    const auto suffix = [&] { return eitherText(info, kSuffix, wide ? kWideSuffix : 0); };
    if (flags & kHasLocalPath) return eitherText(info, kLocal, wide ? kWideLocal : 0) + suffix();
    if (flags & kHasNetworkPath) return shareName(slice(info, dword(info, kNetwork))) + '\\' + suffix();
    return {};
}

// Walks over the parts of the file that follow its header.
class Reader {
  public:
    Reader(Bytes rest, bool wide) : rest_(rest), wide_(wide) {}

    void skipIdList() { take(2 + word(rest_, 0)); }
    Bytes takeInfo() {
        constexpr std::size_t kLeast = 28;
        if (dword(rest_, 0) < kLeast) throw Damaged();
        return take(dword(rest_, 0));
    }
    std::string takeText() {
        const std::size_t count = word(rest_, 0);
        const Bytes text = slice(take(2 + count * (wide_ ? 2 : 1)), 2);
        return wide_ ? wideText(text) : narrowText(text);
    }

  private:
    Bytes take(std::size_t size) {
        const Bytes part = slice(rest_, 0, size);
        rest_ = rest_.subspan(size);
        return part;
    }

    Bytes rest_;
    bool wide_;
};

bool isLink(Bytes file) {
    constexpr unsigned char kStart[] = {0x4C, 0, 0,    0, 0x01, 0x14, 0x02, 0, 0, 0,
                                        0,    0, 0xC0, 0, 0,    0,    0,    0, 0, 0x46};
    return file.size() >= sizeof kStart && std::memcmp(file.data(), kStart, sizeof kStart) == 0;
}

LinkTarget parse(Bytes file) {
    enum : std::uint32_t {
        kIdList = 1,
        kInfo = 2,
        kName = 4,
        kRelative = 8,
        kUnicode = 0x80,
        kNoInfo = 0x100
    };
    constexpr std::size_t kFlags = 20, kHeader = 76;
    const std::uint32_t flags = dword(file, kFlags);
    Reader reader(slice(file, kHeader), flags & kUnicode);
    LinkTarget target;
    if (flags & kIdList) reader.skipIdList();
    if (flags & kInfo) {
        const Bytes info = reader.takeInfo();
        if (!(flags & kNoInfo)) target.path = infoPath(info);
    }
    if (flags & kName) reader.takeText();
    if (flags & kRelative) target.relative = reader.takeText();
    return target;
}

}  // namespace

std::optional<LinkTarget> readLink(Bytes file) {
    if (!isLink(file)) return std::nullopt;
    try {
        return parse(file);
    } catch (const Damaged&) {
        return std::nullopt;
    }
}

}  // namespace kor
