#include "outputs.h"

namespace korrc {
namespace {

constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kMoveablePure = 0x30;

void header(Writer& writer, std::size_t size, std::size_t type, std::size_t name, std::size_t flags,
            std::size_t language) {
    writer.dword(size);
    writer.dword(kHeaderSize);
    writer.word(0xFFFF);
    writer.word(type);
    writer.word(0xFFFF);
    writer.word(name);
    writer.dword(0);
    writer.word(flags);
    writer.word(language);
    writer.dword(0);
    writer.dword(0);
}

}  // namespace

Bytes resourceFile(const std::vector<Resource>& resources) {
    Bytes bytes;
    Writer writer(bytes);
    header(writer, 0, 0, 0, 0, 0);  // marks the 32-bit form
    for (const Resource& resource : resources) {
        header(writer, resource.bytes.size(), resource.type, resource.name, kMoveablePure, resource.language);
        writer.append(resource.bytes);
        writer.align(4);
    }
    return bytes;
}

}  // namespace korrc
