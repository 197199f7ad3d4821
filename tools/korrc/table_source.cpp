#include <string>

#include "outputs.h"

namespace korrc {

Bytes tableSource(const std::vector<Resource>& resources) {
    constexpr std::size_t kBytesInLine = 24;
    std::string text =
        "// Made by korrc from the resource files; changes belong there.\n"
        "#include \"korutil/platform.h\"\n\n"
        "alignas(8) static constexpr unsigned char image[] = {";
    const Bytes image = sectionImage(resources, 0);
    for (std::size_t i = 0; i < image.size(); ++i) {
        text += i % kBytesInLine == 0 ? "\n    " : " ";
        text += std::to_string(image[i]) + ",";
    }
    text +=
        "\n};\n\n"
        "extern \"C\" const KorResourceTable korResourceTable = {kKorResourceMagic, sizeof image, image};\n";
    return {text.begin(), text.end()};
}

}  // namespace korrc
