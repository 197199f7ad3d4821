#include <algorithm>
#include <cstring>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/loaded_modules.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

constexpr WORD kStringType = 6;
constexpr unsigned kBlockSize = 16;

// Sixteen texts, each with its length in front; what does not lie within the resource is not there.
kor::StringBlock parseBlock(const kor::ResourceImage& resources, WORD number) {
    kor::StringBlock block;
    const auto found = resources.find({kStringType, {}}, {number, {}}, 0);
    const auto data = resources.data(found.entry);
    if (!found.entry || !data) return block;
    const auto start = static_cast<std::size_t>(data->data() - resources.bytes().data());
    std::size_t offset = 0;
    for (auto& place : block.places) {
        if (data->size() - offset < 2) break;
        const WORD length = kor::wordAt(*data, offset);
        offset += 2;
        if (data->size() - offset < std::size_t{length} * 2) break;
        place = {static_cast<DWORD>(start + offset), length};
        offset += std::size_t{length} * 2;
    }
    return block;
}

// There are no more than 4,096 blocks, so neither are there in the table of those that were looked for.
kor::StringBlock::Place placeOf(kor::Module& module, UINT id) {
    const WORD number = static_cast<WORD>(LOWORD(id) / kBlockSize + 1);
    const std::lock_guard lock(module.blocksLock);
    auto block = module.blocks.find(number);
    if (block == module.blocks.end()) {
        block = module.blocks.emplace(number, parseBlock(*module.resources, number)).first;
    }
    return block->second.places[id % kBlockSize];
}

bool isAscii(kor::ByteView units) {
    for (std::size_t i = 0; i < units.size(); i += 2) {
        if (std::to_integer<unsigned>(units[i]) >= 0x80 || units[i + 1] != std::byte{0}) return false;
    }
    return true;
}

std::size_t storeAscii(kor::ByteView units, LPSTR buffer, std::size_t room) {
    const std::size_t count = std::min(units.size() / 2, room);
    for (std::size_t i = 0; i < count; ++i)
        buffer[i] = std::to_integer<char>(units[i * 2]);
    return count;
}

// Stores as many whole characters as there is room for.
std::size_t storeText(kor::ByteView units, LPSTR buffer, std::size_t room) {
    std::u16string wide;
    for (std::size_t i = 0; i < units.size(); i += 2)
        wide += static_cast<char16_t>(kor::wordAt(units, i));
    std::size_t stored = 0;
    for (std::size_t i = 0; i < wide.size();) {
        const bool pair =
            (wide[i] & 0xFC00) == 0xD800 && i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00;
        const int count = pair ? 2 : 1;
        char character[8];
        const int size = WideCharToMultiByte(CP_ACP, 0, wide.data() + i, count, character, sizeof character,
                                             nullptr, nullptr);
        if (size <= 0 || static_cast<std::size_t>(size) > room - stored) break;
        std::memcpy(buffer + stored, character, static_cast<std::size_t>(size));
        stored += static_cast<std::size_t>(size);
        i += static_cast<std::size_t>(count);
    }
    return stored;
}

}  // namespace

int WINAPI LoadStringA(HINSTANCE instance, UINT id, LPSTR buffer, int size) {
    return kor::withMemory(0, [&]() -> int {
        if (!buffer || size <= 0) return buffer && size == 0 ? -1 : 0;
        *buffer = '\0';
        const auto module = kor::moduleOf(instance);
        if (!module || !module->resources) {
            SetLastError(module ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_MOD_NOT_FOUND);
            return 0;
        }
        const auto place = placeOf(*module, id);
        if (place.length == 0) {
            SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
            return 0;
        }
        const auto units = module->resources->bytes().subspan(place.offset, std::size_t{place.length} * 2);
        const auto room = static_cast<std::size_t>(size) - 1;
        const std::size_t stored =
            isAscii(units) ? storeAscii(units, buffer, room) : storeText(units, buffer, room);
        buffer[stored] = '\0';
        return static_cast<int>(stored);
    });
}
