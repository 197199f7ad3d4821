#include "platform/posix/kernel/profile_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";
constexpr std::size_t kPiece = 32768;
constexpr unsigned char kLeadInBoth = 0x81;  // 932 and 936

// Fills the data unless the file ends before. @return the bytes read; nothing with errno set
std::optional<std::size_t> readAll(const ProfileSource& source, char* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const std::ptrdiff_t got = source(data + done, size - done);
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

char16_t unitAt(const char* bytes, bool bigEndian) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    const auto second = static_cast<unsigned char>(bytes[1]);
    return static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
}

// A surrogate without its other half has a form of its own, the one that UTF-8 would give it, so that it is
// written back as it was.
Decoded decodeKept(std::string_view text) {
    const Decoded next = decodeUtf8(text);
    if (next.valid || text.size() < 3 || text[0] != '\xED') return next;
    const auto second = static_cast<unsigned char>(text[1]);
    const auto third = static_cast<unsigned char>(text[2]);
    if (second < 0xA0 || second > 0xBF || third < 0x80 || third > 0xBF) return next;
    return {0xD000u | (second & 0x3Fu) << 6 | (third & 0x3Fu), 3, true};
}

bool writeUtf16(std::string_view text, bool bigEndian, const ProfileSink& sink) {
    std::array<char, kPiece> bytes;
    std::size_t used = 0;
    while (!text.empty()) {
        const Decoded next = decodeKept(text);
        char16_t units[2];
        for (std::size_t index = 0, count = encodeUtf16(next.character, units); index < count; ++index) {
            bytes[used + (bigEndian ? 1 : 0)] = static_cast<char>(units[index] & 0xFF);
            bytes[used + (bigEndian ? 0 : 1)] = static_cast<char>(units[index] >> 8);
            used += 2;
        }
        text.remove_prefix(next.length);
        if (used <= bytes.size() - 4 && !text.empty()) continue;
        if (!sink({bytes.data(), used})) return false;
        used = 0;
    }
    return true;
}

}  // namespace

ProfileText::Buffer ProfileText::allocate(std::size_t size) {
    Buffer data(static_cast<char*>(std::malloc(std::max<std::size_t>(size, 1))));
    if (!data) throw std::bad_alloc();
    return data;
}

std::optional<ProfileText> ProfileText::read(const ProfileSource& source, std::size_t size) {
    std::array<char, 4096> start;
    const auto got = readAll(source, start.data(), std::min(size, start.size()));
    if (!got) return std::nullopt;
    std::string_view first(start.data(), *got);
    ProfileText text;
    if (first.starts_with(kLittleEndianMark)) text.setEncoding(ProfileEncoding::utf16LittleEndian);
    if (first.starts_with(kBigEndianMark)) text.setEncoding(ProfileEncoding::utf16BigEndian);
    if (first.starts_with(kUtf8Mark)) text.setEncoding(ProfileEncoding::utf8);
    first.remove_prefix(text.mark().size());
    size -= std::min(size, text.mark().size());
    const bool done =
        text.isUtf16() ? text.readUtf16(source, first, size) : text.readBytes(source, first, size);
    if (!done) return std::nullopt;
    return text;
}

bool ProfileText::readBytes(const ProfileSource& source, std::string_view first, std::size_t size) {
    if (size > kLargest) {
        errno = EFBIG;
        return false;
    }
    data_ = allocate(size);
    std::memcpy(data_.get(), first.data(), first.size());
    const auto got = readAll(source, data_.get() + first.size(), size - first.size());
    size_ = first.size() + got.value_or(0);
    return got.has_value();
}

// Piece by piece, so that the file's bytes and the text are never both in memory.
bool ProfileText::readUtf16(const ProfileSource& source, std::string_view first, std::size_t size) {
    const std::size_t capacity = size / 2 * 3;
    if (capacity > kLargest) {
        errno = EFBIG;
        return false;
    }
    data_ = allocate(capacity);
    std::array<char, kPiece> bytes;
    std::memcpy(bytes.data(), first.data(), first.size());
    std::size_t left = size - first.size();
    std::size_t held = first.size();
    char16_t pending = 0;  // a high surrogate whose other half is looked for
    for (;;) {
        const auto got = readAll(source, bytes.data() + held, std::min(left, bytes.size() - held));
        if (!got) return false;
        left -= *got;
        held += *got;
        for (std::size_t at = 0; at + 1 < held; at += 2) {
            const char16_t units[2] = {pending,
                                       unitAt(&bytes[at], encoding_ == ProfileEncoding::utf16BigEndian)};
            const Decoded pair = pending ? decodeUtf16({units, 2}) : Decoded{};
            // The first half stands there already, in three bytes.
            if (pair.length == 2) size_ -= 3;
            const char32_t character = pair.length == 2 ? pair.character : units[1];
            size_ += encodeUtf8(character, data_.get() + size_);
            pending = units[1] >= 0xD800 && units[1] <= 0xDBFF ? units[1] : u'\0';
        }
        const bool ended = *got == 0 || left == 0;
        if (held % 2 != 0 && ended) odd_ = bytes[held - 1];
        if (ended) break;
        bytes[0] = bytes[held - 1];
        held %= 2;
    }
    cut(capacity);
    return true;
}

void ProfileText::cut(std::size_t capacity) {
    if (size_ == capacity) return;
    char* smaller = static_cast<char*>(std::realloc(data_.get(), std::max<std::size_t>(size_, 1)));
    if (!smaller) return;
    data_.release();
    data_.reset(smaller);
}

std::string_view ProfileText::mark() const {
    constexpr std::string_view kMarks[] = {"", kUtf8Mark, kLittleEndianMark, kBigEndianMark};
    return kMarks[static_cast<std::size_t>(encoding_)];
}

void ProfileText::setEncoding(ProfileEncoding encoding) {
    encoding_ = encoding;
    const bool isAnsi = encoding == ProfileEncoding::ansi;
    page_ = isAnsi ? &ansiPage() : codePage(CP_UTF8);
    isCallers_ = isAnsi || ansiCodePage() == CP_UTF8;
    leadBytes_ = nullptr;
    if (page_->isLeadByte(kLeadInBoth))
        leadBytes_ = [](unsigned char byte) { return ansiPage().isLeadByte(byte); };
}

std::string_view ProfileText::fromCaller(std::string_view text, std::string& holder) const {
    if (isCallers_) return text;
    holder.clear();
    for (std::string_view rest = text; !rest.empty();) {
        const CodePage::Character next = ansiPage().decode(rest);
        char bytes[4];
        holder.append(bytes, encodeUtf8(next.character, bytes));
        rest.remove_prefix(next.length);
    }
    return holder;
}

// What the page lacks becomes `?`, of a pair of UTF-16 two: as the system does it.
std::string_view ProfileText::toCaller(std::string_view text, std::string& holder) const {
    if (isCallers_) return text;
    holder.clear();
    for (std::string_view rest = text; !rest.empty();) {
        const Decoded next = decodeKept(rest);
        char bytes[4];
        const std::size_t count = ansiPage().encode(next.character, bytes);
        if (count != 0) {
            holder.append(bytes, count);
        } else {
            holder.append(next.character < 0x10000 ? "?" : "??");
        }
        rest.remove_prefix(next.length);
    }
    return holder;
}

bool ProfileText::write(std::size_t begin, std::size_t end,
                        const std::function<bool(const ProfileSink& sink)>& visit,
                        const ProfileSink& sink) const {
    const ProfileSink put = [&](std::string_view part) {
        if (part.empty()) return true;
        return isUtf16() ? writeUtf16(part, encoding_ == ProfileEncoding::utf16BigEndian, sink) : sink(part);
    };
    if (!mark().empty() && !sink(mark())) return false;
    return put(view().substr(0, begin)) && visit(put) && put(view().substr(end)) &&
           (odd_.empty() || sink(odd_));
}

}  // namespace kor
