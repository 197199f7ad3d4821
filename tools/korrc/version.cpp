#include "version.h"

#include <functional>

namespace korrc {
namespace {

constexpr std::size_t kUnicode = 1200;

// A node of the version tree: its length, the length and kind of its value, its key; then value and children.
void node(Writer& writer, std::size_t valueLength, bool isText, std::u16string_view key,
          const std::function<void()>& content) {
    writer.align(4);
    const std::size_t start = writer.size();
    writer.word(0);
    writer.word(valueLength);
    writer.word(isText ? 1 : 0);
    writer.text(key);
    writer.align(4);
    content();
    writer.setWord(start, writer.size() - start);
}

void fixedBlock(Writer& writer, const Version& version) {
    const std::size_t high = version.number[0] << 16 | version.number[1], low = version.number[2] << 16;
    // Signature, structure version; file and product version; flags mask and flags; 32-bit Windows, a
    // library.
    for (const std::size_t field : {std::size_t{0xFEEF04BD}, std::size_t{0x10000}, high, low, high, low,
                                    std::size_t{0x3F}, std::size_t{0}, std::size_t{0x40004}, std::size_t{2},
                                    std::size_t{0}, std::size_t{0}, std::size_t{0}}) {
        writer.dword(field);
    }
}

std::u16string widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

std::u16string hexWord(std::size_t value) {
    std::u16string text;
    for (int shift = 12; shift >= 0; shift -= 4)
        text += u"0123456789ABCDEF"[value >> shift & 0xF];
    return text;
}

}  // namespace

Resource versionResource(const Version& version) {
    Resource resource{kVersion, 1, version.language, {}};
    Writer writer(resource.bytes);
    const auto& [major, minor, patch] = version.number;
    const std::u16string number =
        widen(std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch) + ".0");
    const auto text = [&](std::u16string_view key, const std::u16string& value) {
        node(writer, value.size() + 1, true, key, [&] { writer.text(value); });
    };
    node(writer, 52, false, u"VS_VERSION_INFO", [&] {
        fixedBlock(writer, version);
        node(writer, 0, true, u"StringFileInfo", [&] {
            node(writer, 0, true, hexWord(version.language) + hexWord(kUnicode), [&] {
                text(u"FileDescription", version.description);
                text(u"FileVersion", number);
                text(u"InternalName", version.name);
                text(u"OriginalFilename", version.name + u".dll");
                text(u"ProductName", u"KorUtil");
                text(u"ProductVersion", number);
            });
        });
        node(writer, 0, true, u"VarFileInfo", [&] {
            node(writer, 4, false, u"Translation", [&] {
                writer.word(version.language);
                writer.word(kUnicode);
            });
        });
    });
    return resource;
}

}  // namespace korrc
