#include "platform/posix/kernel/profile_name.h"

#include <sys/random.h>

#include <bit>
#include <chrono>
#include <cstring>

#include "platform/posix/kernel/letter_case.h"

namespace kor {
namespace {

struct Key {
    std::uint64_t words[2];
};

Key makeKey() {
    Key key{};
    if (getrandom(&key, sizeof key, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof key)) return key;
    const auto now = std::chrono::high_resolution_clock::now().time_since_epoch().count();
    // What is left where the system has no random numbers yet.
    return {{static_cast<std::uint64_t>(now), reinterpret_cast<std::uintptr_t>(&key)}};
}

// SipHash-1-3: without the key nobody can tell which names collide.
class KeyedHash {
  public:
    explicit KeyedHash(const Key& key)
        : a_(key.words[0] ^ 0x736F6D6570736575),
          b_(key.words[1] ^ 0x646F72616E646F6D),
          c_(key.words[0] ^ 0x6C7967656E657261),
          d_(key.words[1] ^ 0x7465646279746573) {}

    void add(std::uint64_t word) {
        d_ ^= word;
        mix();
        a_ ^= word;
    }

    std::uint32_t finish() {
        c_ ^= 0xFF;
        mix();
        mix();
        mix();
        return static_cast<std::uint32_t>(a_ ^ b_ ^ c_ ^ d_);
    }

  private:
    void mix() {
        a_ += b_;
        b_ = std::rotl(b_, 13) ^ a_;
        a_ = std::rotl(a_, 32);
        c_ += d_;
        d_ = std::rotl(d_, 16) ^ c_;
        a_ += d_;
        d_ = std::rotl(d_, 21) ^ a_;
        c_ += b_;
        b_ = std::rotl(b_, 17) ^ c_;
        c_ = std::rotl(c_, 32);
    }

    std::uint64_t a_, b_, c_, d_;
};

constexpr bool isAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

constexpr char32_t asciiCapital(char character) {
    const auto value = static_cast<unsigned char>(character);
    return value >= 'a' && value <= 'z' ? value - 32u : value;
}

// Takes the first character off, as a capital. Bytes that are none stay what they are, each for itself.
char32_t takeCapital(std::string_view& text, const CodePage& page) {
    const char first = text.front();
    if (isAscii(first)) {
        text.remove_prefix(1);
        return asciiCapital(first);
    }
    const CodePage::Character next = page.decode(text);
    text.remove_prefix(next.valid ? next.length : 1);
    if (!next.valid) return 0x110000u + static_cast<unsigned char>(first);
    const bool hasCase = next.character < 0x10000;
    return hasCase ? char32_t{upperCase(static_cast<char16_t>(next.character))} : next.character;
}

constexpr std::size_t kBlock = sizeof(std::uint64_t);
constexpr std::uint64_t kEachByte = 0x0101010101010101;

template <typename Word>
std::uint64_t wordAt(std::string_view text, std::size_t at) {
    Word word;
    std::memcpy(&word, text.data() + at, sizeof word);
    return word;
}

// The last up to eight bytes of a name, some of them twice in a short one.
std::uint64_t lastBlock(std::string_view name) {
    const std::size_t size = name.size();
    if (size >= 8) return wordAt<std::uint64_t>(name, size - 8);
    if (size >= 4) return wordAt<std::uint32_t>(name, 0) | wordAt<std::uint32_t>(name, size - 4) << 32;
    if (size == 0) return 0;
    return wordAt<std::uint8_t>(name, 0) | wordAt<std::uint8_t>(name, size / 2) << 8 |
           wordAt<std::uint8_t>(name, size - 1) << 16;
}

// The letters of a block of ASCII as capitals: the high bit of a sum tells where a byte is at least `a`, and
// where it is more than `z`.
std::uint64_t asciiCapitals(std::uint64_t block) {
    const std::uint64_t fromA = block + (0x80 - 'a') * kEachByte;
    const std::uint64_t behindZ = block + (0x80 - 'z' - 1) * kEachByte;
    return block - ((fromA & ~behindZ & (0x80 * kEachByte)) >> 2);
}

}  // namespace

std::uint32_t profileNameHash(std::string_view name, const CodePage& page) {
    static const Key key = makeKey();
    const std::size_t size = name.size();
    KeyedHash hash(key);
    std::uint64_t bytes = 0;
    for (std::size_t at = 0; at + kBlock < size; at += kBlock) {
        const std::uint64_t block = wordAt<std::uint64_t>(name, at);
        bytes |= block;
        hash.add(asciiCapitals(block));
    }
    const std::uint64_t last = lastBlock(name);
    if (((bytes | last) & (0x80 * kEachByte)) == 0) {
        hash.add(asciiCapitals(last));
        hash.add(size);
        return hash.finish();
    }
    // No ASCII is the capital of anything else, so that two names that are the same are both hashed in this
    // way or both in the other one.
    hash = KeyedHash(key);
    while (!name.empty())
        hash.add(takeCapital(name, page));
    return hash.finish();
}

bool isSameProfileName(std::string_view first, std::string_view second, const CodePage& page) {
    if (first == second) return true;
    while (!first.empty() && !second.empty()) {
        if (takeCapital(first, page) != takeCapital(second, page)) return false;
    }
    return first.empty() && second.empty();
}

}  // namespace kor
