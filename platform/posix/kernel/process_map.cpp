#include "platform/posix/kernel/process_map.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/posix/kernel/native_text.h"
#include "platform/posix/kernel/page_protection.h"
#include "platform/posix/kernel/thread_stack.h"

namespace kor {
namespace {

bool sameFile(const MapEntry& one, const MapEntry& other) {
    return one.file != 0 && one.file == other.file && one.device[0] == other.device[0] &&
           one.device[1] == other.device[1];
}

bool parseEntry(const char* line, std::string_view whole, MapEntry& entry) {
    unsigned long long begin = 0;
    unsigned long long end = 0;
    char access[5] = {};
    if (std::sscanf(line, "%llx-%llx %4s %*x %x:%x %llu", &begin, &end, access, &entry.device[0],
                    &entry.device[1], &entry.file) != 6)
        return false;
    entry.pages = {begin, end};
    entry.protect = pageProtection(access[0] == 'r', access[1] == 'w', access[2] == 'x');
    entry.mainStack = whole.ends_with("[stack]");
    return true;
}

constexpr DWORD kImageProtect = PAGE_EXECUTE_WRITECOPY;

MemoryBlock blockOf(const MapEntry& entry, std::uintptr_t region, DWORD regionProtect) {
    // Address space that nothing can use yet is what the system calls reserved.
    const bool reserved = entry.file == 0 && entry.protect == PAGE_NOACCESS;
    return {entry.pages,
            region,
            regionProtect,
            reserved ? MEM_RESERVE : MEM_COMMIT,
            reserved ? 0 : entry.protect,
            entry.file != 0 ? MEM_IMAGE : MEM_PRIVATE};
}

// All adjoining entries of one file.
std::vector<MemoryBlock> imageRegion(const std::vector<MapEntry>& entries, std::size_t at) {
    const auto continues = [&](std::size_t i) {
        return sameFile(entries[i], entries[i - 1]) && entries[i].pages.begin == entries[i - 1].pages.end;
    };
    std::size_t first = at;
    while (first > 0 && continues(first))
        --first;
    std::vector<MemoryBlock> blocks;
    for (std::size_t i = first; i < entries.size() && (i == first || continues(i)); ++i)
        blocks.push_back(blockOf(entries[i], entries[first].pages.begin, kImageProtect));
    return blocks;
}

std::vector<MemoryBlock> stackBlocks(const StackParts& parts) {
    std::vector<MemoryBlock> blocks;
    const std::uintptr_t region = parts.whole.begin;
    const auto add = [&](std::uintptr_t begin, std::uintptr_t end, DWORD state, DWORD protect) {
        if (begin < end)
            blocks.push_back({{begin, end}, region, PAGE_READWRITE, state, protect, MEM_PRIVATE});
    };
    add(parts.whole.begin, parts.guard, MEM_RESERVE, 0);
    add(parts.guard, parts.guard + kPageSize, MEM_COMMIT, PAGE_READWRITE | PAGE_GUARD);
    add(parts.guard + kPageSize, parts.whole.end, MEM_COMMIT, PAGE_READWRITE);
    return blocks;
}

// The stack that holds an address: the main thread's by its entry, the calling thread's by what it knows.
bool stackAt(const std::vector<MapEntry>& entries, std::uintptr_t address, StackParts& parts) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!entries[i].mainStack) continue;
        parts = mainStack(entries[i].pages, i > 0 ? entries[i - 1].pages.end : 0);
        if (parts.whole.contains(address)) return true;
    }
    return callingThreadStack(parts) && parts.whole.contains(address);
}

// The rest of an entry of which the calling thread's stack is a part.
void cutStackOff(PageRange& pages, std::uintptr_t address) {
    StackParts parts;
    if (!callingThreadStack(parts)) return;
    if (address >= parts.whole.end && pages.begin < parts.whole.end) pages.begin = parts.whole.end;
    if (address < parts.whole.begin && pages.end > parts.whole.begin) pages.end = parts.whole.begin;
}

}  // namespace

std::vector<MapEntry> readProcessMap() {
    std::vector<MapEntry> entries;
    const std::string text = nativeText("/proc/self/maps");
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        MapEntry entry{};
        if (parseEntry(text.c_str() + at, std::string_view(text).substr(at, end - at), entry))
            entries.push_back(entry);
        at = end + 1;
    }
    return entries;
}

std::vector<MemoryBlock> regionAt(const std::vector<MapEntry>& entries, std::uintptr_t address) {
    if (entries.empty()) return {};
    StackParts stack;
    if (stackAt(entries, address, stack)) return stackBlocks(stack);
    PageRange gap{0, kAddressEnd};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].pages.contains(address)) {
            if (entries[i].file != 0) return imageRegion(entries, i);
            MapEntry entry = entries[i];
            cutStackOff(entry.pages, address);
            return {blockOf(entry, entry.pages.begin, entry.protect)};
        }
        if (entries[i].pages.end <= address) gap.begin = entries[i].pages.end;
        if (entries[i].pages.begin > address) {
            gap.end = entries[i].pages.begin;
            if (entries[i].mainStack) {
                const StackParts above = mainStack(entries[i].pages, gap.begin);
                gap.end = above.whole.begin;
            }
            break;
        }
    }
    return {{gap, 0, 0, MEM_FREE, PAGE_NOACCESS, 0}};
}

bool readMapped(const PageRange& pages, DWORD& protect) {
    std::uintptr_t covered = pages.begin;
    for (const MapEntry& entry : readProcessMap()) {
        if (!entry.pages.contains(covered)) continue;
        if (covered == pages.begin) protect = entry.protect;
        covered = entry.pages.end;
        if (covered >= pages.end) return true;
    }
    return false;
}

}  // namespace kor
