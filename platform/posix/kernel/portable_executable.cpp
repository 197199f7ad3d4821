#include "platform/posix/kernel/portable_executable.h"

#include <algorithm>

namespace kor {
namespace {

constexpr WORD kDosMagic = 0x5A4D;
constexpr DWORD kMagic = 0x4550;
constexpr std::size_t kHeaderSize = 24;
constexpr WORD kForm32 = 0x10B;
constexpr WORD kForm64 = 0x20B;
constexpr WORD kIsLibrary = 0x2000;
constexpr std::size_t kSectionHeaderSize = 40;
constexpr std::size_t kImports = 1, kResources = 2, kDelayedImports = 13, kManagedCode = 14;

struct Header {
    std::size_t optional;     // offset of the optional header
    std::size_t directories;  // offset of the data directories
    std::size_t directoryCount;
    std::size_t sections;  // offset of the section headers
    std::size_t sectionCount;
};

std::optional<Header> readHeader(ByteView file) {
    const std::size_t start = dwordAt(file, 0x3C);
    if (wordAt(file, 0) != kDosMagic || dwordAt(file, start) != kMagic) return std::nullopt;
    const std::size_t optional = start + kHeaderSize, optionalSize = wordAt(file, start + 20);
    const WORD form = wordAt(file, optional);
    if (form != kForm32 && form != kForm64) return std::nullopt;
    const std::size_t fixedSize = form == kForm32 ? 96 : 112;
    if (optionalSize < fixedSize || optional + optionalSize > file.size()) return std::nullopt;
    const std::size_t directoryCount =
        std::min<std::size_t>(dwordAt(file, optional + fixedSize - 4), (optionalSize - fixedSize) / 8);
    const std::size_t sections = optional + optionalSize, sectionCount = wordAt(file, start + 6);
    if ((file.size() - sections) / kSectionHeaderSize < sectionCount) return std::nullopt;
    return Header{optional, optional + fixedSize, directoryCount, sections, sectionCount};
}

DWORD directoryAddress(ByteView file, const Header& header, std::size_t index) {
    return index < header.directoryCount ? dwordAt(file, header.directories + index * 8) : 0;
}

// The file's bytes at an address in memory up to the end of the section that holds it.
ByteView sectionFrom(ByteView file, const Header& header, DWORD address) {
    for (std::size_t i = 0; i < header.sectionCount; ++i) {
        const std::size_t section = header.sections + i * kSectionHeaderSize;
        const DWORD start = dwordAt(file, section + 12), size = dwordAt(file, section + 16);
        if (address < start || address - start >= size) continue;
        const std::size_t offset = std::size_t{dwordAt(file, section + 20)} + (address - start);
        if (offset >= file.size()) return {};
        return file.subspan(offset, std::min<std::size_t>(size - (address - start), file.size() - offset));
    }
    return {};
}

}  // namespace

std::optional<PortableExecutable> parsePortableExecutable(ByteView file) {
    const auto header = readHeader(file);
    if (!header) return std::nullopt;
    PortableExecutable result{};
    result.hasCode =
        !(wordAt(file, header->optional - 2) & kIsLibrary) || dwordAt(file, header->optional + 16) != 0;
    for (const std::size_t directory : {kImports, kDelayedImports, kManagedCode}) {
        if (directoryAddress(file, *header, directory) != 0) result.hasCode = true;
    }
    result.resourceAddress = directoryAddress(file, *header, kResources);
    if (result.resourceAddress != 0) {
        const ByteView bytes = sectionFrom(file, *header, result.resourceAddress);
        result.resources.assign(bytes.begin(), bytes.end());
    }
    return result;
}

}  // namespace kor
