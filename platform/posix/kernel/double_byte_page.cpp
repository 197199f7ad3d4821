#include "platform/posix/kernel/double_byte_page.h"

#include <iconv.h>

#include <cerrno>
#include <new>
#include <span>
#include <vector>

namespace kor {
namespace {

class Converter {
  public:
    Converter(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {
        // A lack of memory is told as a missing converter at times, so it is asked for again.
        if (!isOpen()) descriptor_ = iconv_open(to, from);
        if (!isOpen() && errno == ENOMEM) throw std::bad_alloc();
    }
    ~Converter() {
        if (isOpen()) iconv_close(descriptor_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool isOpen() const { return descriptor_ != iconv_t(-1); }

    // @return bytes written, 0 unless all of the input is one convertible character
    std::size_t convert(std::string_view from, std::span<char> to) const {
        iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(from.data());
        std::size_t inLeft = from.size();
        char* out = to.data();
        std::size_t outLeft = to.size();
        const std::size_t result = iconv(descriptor_, &in, &inLeft, &out, &outLeft);
        return result == 0 && inLeft == 0 ? to.size() - outLeft : 0;
    }

  private:
    iconv_t descriptor_;
};

struct Single {
    unsigned char byte;
    char16_t unit;
};

// A rectangle of codes for the user's own characters: rows of trail bytes, without 0x7F, that are numbered in
// a row of the private use area. Cells that the converter knows are passed over.
struct UserArea {
    unsigned char leadFirst;
    unsigned char leadLast;
    unsigned char trailFirst;
    unsigned char trailLast;
    char16_t start;
};

// The page's shape, and what the C library's converter leaves out of it.
struct PageRules {
    const char* converter;
    char32_t replacement;
    unsigned char leadFirst;
    unsigned char leadLast;
    unsigned char kanaFirst;  // single bytes between the lead bytes, up to before `kanaEnd`
    unsigned char kanaEnd;
    std::span<const Single> singles;
    std::span<const UserArea> userAreas;
};

constexpr std::size_t kCodes = 0x10000;

class DoubleBytePage final : public CodePage {
  public:
    explicit DoubleBytePage(const PageRules& rules)
        : rules_(rules), toUnicode_(kCodes), fromUnicode_(kCodes) {}

    bool load();

    Character decode(std::string_view text) const override {
        const auto first = static_cast<unsigned char>(text[0]);
        if (!isLeadByte(first)) {
            const char16_t unit = toUnicode_[first];
            return {unit || !first ? char32_t{unit} : rules_.replacement, 1,
                    (unit || !first) && !isReserved(unit)};
        }
        const unsigned trail = text.size() > 1 ? static_cast<unsigned char>(text[1]) : 0;
        if (trail == 0) return {rules_.replacement, 1, false};
        const char16_t unit = toUnicode_[first << 8 | trail];
        return {unit ? char32_t{unit} : rules_.replacement, 2, unit != 0};
    }

    std::size_t encode(char32_t character, char* bytes) const override {
        const std::uint16_t code = character < kCodes ? fromUnicode_[character] : 0;
        if (code == 0 && character != 0) return 0;
        if (code < 0x100) {
            bytes[0] = static_cast<char>(code);
            return 1;
        }
        bytes[0] = static_cast<char>(code >> 8);
        bytes[1] = static_cast<char>(code & 0xFF);
        return 2;
    }

    bool isLeadByte(unsigned char byte) const override {
        const bool single = byte >= rules_.kanaFirst && byte < rules_.kanaEnd;
        return byte >= rules_.leadFirst && byte <= rules_.leadLast && !single;
    }

  private:
    // Single bytes without a meaning are let through as these, but are not valid.
    static bool isReserved(char16_t unit) { return unit >= 0xF8F0 && unit <= 0xF8FF; }

    void readConverter(const Converter& decoder, const Converter& encoder);
    void addUserArea(const UserArea& area);

    void add(unsigned code, char16_t unit) {
        toUnicode_[code] = unit;
        fromUnicode_[unit] = static_cast<std::uint16_t>(code);
    }

    const PageRules& rules_;
    std::vector<char16_t> toUnicode_;  // by lead byte and trail byte, or by the single byte
    std::vector<std::uint16_t> fromUnicode_;
};

void DoubleBytePage::readConverter(const Converter& decoder, const Converter& encoder) {
    for (unsigned code = 0; code < kCodes; ++code) {
        const std::size_t size = code < 0x100 ? 1 : 2;
        const char bytes[2] = {static_cast<char>(size == 2 ? code >> 8 : code),
                               static_cast<char>(code & 0xFF)};
        if ((size == 2) != isLeadByte(static_cast<unsigned char>(bytes[0]))) continue;
        char unit[8];
        if (decoder.convert({bytes, size}, unit) != 2) continue;
        toUnicode_[code] = static_cast<char16_t>(static_cast<unsigned char>(unit[1]) << 8 |
                                                 static_cast<unsigned char>(unit[0]));
        // Several codes may mean one character; the converter knows the one that is written.
        char back[8];
        const std::size_t length = encoder.convert({unit, 2}, back);
        if (std::string_view(back, length) == std::string_view(bytes, size)) add(code, toUnicode_[code]);
    }
}

void DoubleBytePage::addUserArea(const UserArea& area) {
    char16_t unit = area.start;
    for (unsigned lead = area.leadFirst; lead <= area.leadLast; ++lead) {
        for (unsigned trail = area.trailFirst; trail <= area.trailLast; ++trail) {
            if (trail != 0x7F && toUnicode_[lead << 8 | trail] == 0) add(lead << 8 | trail, unit++);
        }
    }
}

bool DoubleBytePage::load() {
    const Converter decoder("UTF-16LE", rules_.converter);
    const Converter encoder(rules_.converter, "UTF-16LE");
    if (!decoder.isOpen() || !encoder.isOpen()) return false;
    readConverter(decoder, encoder);
    for (const Single& single : rules_.singles)
        add(single.byte, single.unit);
    for (const UserArea& area : rules_.userAreas)
        addUserArea(area);
    return true;
}

std::unique_ptr<CodePage> loaded(const PageRules& rules) {
    auto page = std::make_unique<DoubleBytePage>(rules);
    if (!page->load()) return nullptr;
    return page;
}

constexpr Single kJapaneseSingles[] = {
    {0x80, 0x0080}, {0xA0, 0xF8F0}, {0xFD, 0xF8F1}, {0xFE, 0xF8F2}, {0xFF, 0xF8F3}};
constexpr Single kChineseSingles[] = {{0x80, 0x20AC}, {0xFF, 0xF8F5}};
constexpr UserArea kChineseAreas[] = {{0xAA, 0xAF, 0xA1, 0xFE, 0xE000}, {0xF8, 0xFE, 0xA1, 0xFE, 0xE234},
                                      {0xA1, 0xA7, 0x40, 0xA0, 0xE4C6}, {0xA2, 0xA7, 0xA1, 0xFE, 0xE766},
                                      {0xA8, 0xA9, 0x40, 0xFE, 0xE7BC}, {0xD7, 0xD7, 0xFA, 0xFE, 0xE810},
                                      {0xFE, 0xFE, 0x50, 0xA0, 0xE815}};

constexpr PageRules kJapaneseRules{"CP932", 0x30FB, 0x81, 0xFC, 0xA0, 0xE0, kJapaneseSingles, {}};
constexpr PageRules kChineseRules{"CP936", U'?', 0x81, 0xFE, 0, 0, kChineseSingles, kChineseAreas};

}  // namespace

std::unique_ptr<CodePage> japanesePage() { return loaded(kJapaneseRules); }

std::unique_ptr<CodePage> chinesePage() { return loaded(kChineseRules); }

}  // namespace kor
