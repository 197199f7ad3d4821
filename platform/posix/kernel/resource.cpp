#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/loaded_modules.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

struct Opened {
    std::shared_ptr<kor::Module> module;
    const kor::ResourceImage* resources = nullptr;  // null with the last error set
};

Opened open(HMODULE handle) {
    Opened result{kor::moduleOf(handle)};
    if (result.module && result.module->resources) {
        result.resources = &*result.module->resources;
    } else {
        SetLastError(result.module ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_MOD_NOT_FOUND);
    }
    return result;
}

char16_t upper(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
}

std::u16string wide(const char* text) {
    const int length = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::u16string result(static_cast<std::size_t>(length > 0 ? length : 1), u'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, result.data(), length);
    result.pop_back();
    return result;
}

// A type or name as functions take it: a number, a text, or "#123".
kor::ResourceKey keyOf(LPCSTR text) {
    if (IS_INTRESOURCE(text)) return {static_cast<WORD>(reinterpret_cast<ULONG_PTR>(text)), {}};
    if (*text != '#') {
        kor::ResourceKey key{0, wide(text)};
        for (char16_t& unit : key.name)
            unit = upper(unit);
        return key;
    }
    unsigned number = 0;
    for (const char* digit = text + 1; *digit >= '0' && *digit <= '9' && number <= 0xFFFF; ++digit) {
        number = number * 10 + static_cast<unsigned>(*digit - '0');
    }
    return {static_cast<WORD>(number <= 0xFFFF ? number : 0), {}};
}

// A resource's name as callers see it: a number when the text is empty.
struct Name {
    WORD number;
    std::string text;
};

std::string narrow(const std::u16string& text) {
    const int units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, result.data(), size, nullptr, nullptr);
    return result;
}

}  // namespace

HRSRC WINAPI FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language) {
    return kor::withMemory(nullptr, [&]() -> HRSRC {
        const auto [owner, resources] = open(module);
        if (!resources) return nullptr;
        const auto found = resources->find(keyOf(type), keyOf(name), language);
        if (!found.entry) SetLastError(found.error);
        return reinterpret_cast<HRSRC>(const_cast<std::byte*>(found.entry));
    });
}

HRSRC WINAPI FindResourceA(HMODULE module, LPCSTR name, LPCSTR type) {
    return FindResourceExA(module, type, name, 0);
}

HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource) {
    return kor::withMemory(nullptr, [&]() -> HGLOBAL {
        if (!resource) return nullptr;
        const auto [owner, resources] = open(module);
        const auto data = resources ? resources->data(resource) : std::nullopt;
        if (!data) {
            SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
            return nullptr;
        }
        return const_cast<std::byte*>(data->data());
    });
}

LPVOID WINAPI LockResource(HGLOBAL data) { return data; }

DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource) {
    return kor::withMemory(0, [&]() -> DWORD {
        if (!resource) return 0;
        const auto [owner, resources] = open(module);
        const auto data = resources ? resources->data(resource) : std::nullopt;
        if (!data) SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return data ? static_cast<DWORD>(data->size()) : 0;
    });
}

BOOL WINAPI FreeResource(HGLOBAL) { return FALSE; }

BOOL WINAPI EnumResourceNamesA(HMODULE module, LPCSTR type, ENUMRESNAMEPROCA function, LONG_PTR parameter) {
    std::vector<Name> names;
    const bool found = kor::withMemory(false, [&] {
        const auto [owner, resources] = open(module);
        if (!resources) return false;
        DWORD error = 0;
        for (const kor::ResourceKey& key : resources->names(keyOf(type), error))
            names.push_back({key.number, narrow(key.name)});
        if (names.empty()) SetLastError(error);
        return !names.empty();
    });
    // A lack of memory in the caller's function is the caller's.
    return found && std::all_of(names.begin(), names.end(), [&](Name& name) {
               LPSTR text = name.text.empty() ? MAKEINTRESOURCEA(name.number) : name.text.data();
               return function(module, type, text, parameter) != FALSE;
           });
}

BOOL WINAPI EnumResourceLanguagesA(HMODULE module, LPCSTR type, LPCSTR name, ENUMRESLANGPROCA function,
                                   LONG_PTR parameter) {
    std::vector<WORD> languages;
    const bool found = kor::withMemory(false, [&] {
        const auto [owner, resources] = open(module);
        if (!resources) return false;
        DWORD error = 0;
        languages = resources->languages(keyOf(type), keyOf(name), error);
        if (languages.empty()) SetLastError(error);
        return !languages.empty();
    });
    return found && std::all_of(languages.begin(), languages.end(), [&](WORD language) {
               return function(module, type, name, language, parameter) != FALSE;
           });
}
