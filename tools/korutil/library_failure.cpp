#include "tools/korutil/library_failure.h"

#include <array>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"

namespace kor::command {
namespace {

struct Cause {
    int cause;
    std::string_view reason;
};

constexpr std::array kCauses = {
    Cause{CFileException::fileNotFound, "there is no such file"},
    Cause{CFileException::badPath, "there is no such folder, or the name is not valid"},
    Cause{CFileException::tooManyOpenFiles, "too many files are open"},
    Cause{CFileException::accessDenied, "access is denied"},
    Cause{CFileException::hardIO, "the device failed"},
    Cause{CFileException::sharingViolation, "another program is using the file"},
    Cause{CFileException::lockViolation, "another program is using the file"},
    Cause{CFileException::diskFull, "the disk is full, or the file may not become so large"},
    Cause{CFileException::endOfFile, "it is no parameter tree, or was cut off"},
};

std::string fileReason(const CFileException& exception) {
    for (const Cause& entry : kCauses) {
        if (entry.cause == exception.m_cause) return std::string(entry.reason);
    }
    if (exception.m_lOsError == ERROR_BAD_FORMAT) return "it is no parameter tree, or is damaged";
    return reasonOf(static_cast<DWORD>(exception.m_lOsError));
}

}  // namespace

std::string reasonOf(DWORD lastError) {
    std::array<char, 512> text{};
    const DWORD flags =
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length =
        FormatMessageA(flags, nullptr, lastError, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    std::string_view trimmed(text.data(), length);
    while (!trimmed.empty() && (trimmed.back() == ' ' || trimmed.back() == '.'))
        trimmed.remove_suffix(1);
    const std::string number = "system error " + std::to_string(lastError);
    return trimmed.empty() ? number : code_page::toUtf8(trimmed) + " (" + number + ")";
}

std::string reasonOf(CException& exception) {
    if (exception.IsKindOf(RUNTIME_CLASS(CMemoryException))) return "memory is short";
    if (exception.IsKindOf(RUNTIME_CLASS(CFileException)))
        return fileReason(static_cast<CFileException&>(exception));
    std::array<char, 512> text{};
    exception.GetErrorMessage(text.data(), static_cast<UINT>(text.size()), nullptr);
    return text[0] ? code_page::toUtf8(text.data()) : "the library failed without a message";
}

}  // namespace kor::command
