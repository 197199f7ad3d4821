#include <array>

#include "outputs.h"

namespace korrc {
namespace {

constexpr std::size_t kImageBase = 0x10000000;
constexpr std::size_t kPage = 0x1000;     // alignment of sections in memory
constexpr std::size_t kFileUnit = 0x200;  // and in the file
constexpr std::size_t kHeadersSize = 0x200;
constexpr std::size_t kDirectories = 16;

constexpr std::size_t alignUp(std::size_t value, std::size_t unit) {
    return (value + unit - 1) / unit * unit;
}

struct Section {
    const char* name;
    std::size_t flags;
    Bytes bytes;
    std::size_t address = 0;
    std::size_t fileOffset = 0;
};

constexpr std::size_t kCodeFlags = 0x60000020;         // code, executable, readable
constexpr std::size_t kDataFlags = 0x40000040;         // initialised data, readable
constexpr std::size_t kDiscardableFlags = 0x42000040;  // and not needed after loading

// The function's address is that of the code section.
Bytes exportTable(const std::string& fileName, std::size_t address, std::size_t function) {
    constexpr std::size_t kHeader = 40, kFunctions = kHeader, kNames = kFunctions + 4, kOrdinals = kNames + 4,
                          kModuleName = kOrdinals + 4;
    const std::string exported = "RequiredResourceDllVersion";
    Bytes bytes;
    Writer writer(bytes);
    writer.dword(0);
    writer.dword(0);
    writer.dword(0);
    writer.dword(address + kModuleName);
    writer.dword(1);  // the first ordinal
    writer.dword(1);  // functions
    writer.dword(1);  // names
    writer.dword(address + kFunctions);
    writer.dword(address + kNames);
    writer.dword(address + kOrdinals);
    writer.dword(function);
    writer.dword(address + kModuleName + fileName.size() + 1);
    writer.dword(0);
    for (const std::string& text : {fileName, exported})
        writer.append({text.c_str(), text.c_str() + text.size() + 1});
    return bytes;
}

Bytes codeReturning(std::uint32_t value) {
    Bytes bytes;
    Writer writer(bytes);
    writer.byte(0xB8);  // mov eax, value
    writer.dword(value);
    writer.byte(0xC3);  // ret
    return bytes;
}

// One block without a relocation: with no block at all, the library could not be moved in memory.
Bytes relocations(std::size_t page) {
    Bytes bytes;
    Writer writer(bytes);
    writer.dword(page);
    writer.dword(12);
    writer.dword(0);
    return bytes;
}

void optionalHeader(Writer& writer, const std::array<Section, 4>& sections) {
    const auto& [code, exports, resources, moves] = sections;
    const auto inFile = [](const Section& section) { return alignUp(section.bytes.size(), kFileUnit); };
    writer.word(0x10B);
    writer.word(1);  // linker version
    writer.dword(inFile(code));
    writer.dword(inFile(exports) + inFile(resources) + inFile(moves));
    writer.dword(0);
    writer.dword(0);  // no entry point
    writer.dword(code.address);
    writer.dword(exports.address);
    writer.dword(kImageBase);
    writer.dword(kPage);
    writer.dword(kFileUnit);
    writer.dword(4);  // system version 4.0
    writer.dword(0);
    writer.dword(4);
    writer.dword(0);
    writer.dword(alignUp(moves.address + moves.bytes.size(), kPage));
    writer.dword(kHeadersSize);
    writer.dword(0);
    writer.word(2);      // user interface
    writer.word(0x140);  // may be moved, data not executable
    writer.dword(0x100000);
    writer.dword(0x1000);
    writer.dword(0x100000);
    writer.dword(0x1000);
    writer.dword(0);
    writer.dword(kDirectories);
    std::array<const Section*, kDirectories> directories{};
    directories[0] = &exports;
    directories[2] = &resources;
    directories[5] = &moves;
    for (const Section* section : directories) {
        writer.dword(section ? section->address : 0);
        writer.dword(section ? section->bytes.size() : 0);
    }
}

void sectionHeader(Writer& writer, const Section& section) {
    const std::size_t start = writer.size();
    for (const char* c = section.name; *c; ++c)
        writer.byte(static_cast<unsigned char>(*c));
    writer.padTo(start + 8);
    writer.dword(section.bytes.size());
    writer.dword(section.address);
    writer.dword(alignUp(section.bytes.size(), kFileUnit));
    writer.dword(section.fileOffset);
    writer.padTo(start + 36);
    writer.dword(section.flags);
}

}  // namespace

Bytes library(const std::vector<Resource>& resources, const std::string& fileName,
              std::uint32_t requiredVersion) {
    std::array<Section, 4> sections{{{".text", kCodeFlags, {}},
                                     {".edata", kDataFlags, {}},
                                     {".rsrc", kDataFlags, {}},
                                     {".reloc", kDiscardableFlags, {}}}};
    std::size_t address = kPage, fileOffset = kHeadersSize;
    for (Section& section : sections) {
        section.address = address;
        section.fileOffset = fileOffset;
        if (&section == &sections[0]) section.bytes = codeReturning(requiredVersion);
        if (&section == &sections[1]) section.bytes = exportTable(fileName, address, sections[0].address);
        if (&section == &sections[2])
            section.bytes = sectionImage(resources, static_cast<std::uint32_t>(address));
        if (&section == &sections[3]) section.bytes = relocations(sections[0].address);
        address = alignUp(address + section.bytes.size(), kPage);
        fileOffset += alignUp(section.bytes.size(), kFileUnit);
    }

    Bytes bytes;
    Writer writer(bytes);
    writer.word(0x5A4D);  // "MZ"
    writer.padTo(0x3C);
    writer.dword(0x40);
    writer.dword(0x4550);  // "PE"
    writer.word(0x14C);    // i386
    writer.word(sections.size());
    writer.dword(0);  // no time stamp: the same sources give the same bytes
    writer.dword(0);
    writer.dword(0);
    writer.word(96 + kDirectories * 8);
    writer.word(0x210E);  // executable, 32 bits, library, no symbols
    optionalHeader(writer, sections);
    for (const Section& section : sections)
        sectionHeader(writer, section);
    for (const Section& section : sections) {
        writer.padTo(section.fileOffset);
        writer.append(section.bytes);
    }
    writer.padTo(fileOffset);
    return bytes;
}

}  // namespace korrc
