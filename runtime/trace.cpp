// Traces to the debugger.

#include <cstring>
#include <memory>
#include <new>

#include "host/bql.h"
#include "korutil/error.h"
#include "korutil/warning.h"
#include "platform/win32.h"

namespace {

constexpr UINT kLineRoom = 8192;
constexpr int kIndentation = 2;

void indent() { dbgPrint("%*s", kIndentation * CDebugFknOutput::m_iFuncStackCounter, ""); }

}  // namespace

void dbgPrint(const char* format, ...) {
    const std::unique_ptr<char[]> line(new (std::nothrow) char[kLineRoom]);
    if (!line) {
        OutOfMemoryError();
        return;
    }
    va_list list;
    va_start(list, format);
    const int length = kor::Bql_vszprintf(line.get(), kLineRoom, format, KORUTIL_ARGUMENTS(list));
    va_end(list);
    if (length > 0) OutputDebugStringA(line.get());
}

int CDebugFknOutput::m_iFuncStackCounter = 0;

CDebugFknOutput::CDebugFknOutput(const char* name, int* result, int disabled)
    : m_dwStart(0), m_szName{}, m_piResult(result), m_iDisabled(disabled) {
    if (m_iDisabled) return;
    m_dwStart = GetTickCount();
    if (name) std::memcpy(m_szName, name, ::strnlen(name, sizeof(m_szName)));
    indent();
    dbgPrint("%.50s()...\n", m_szName);
    ++m_iFuncStackCounter;
}

CDebugFknOutput::~CDebugFknOutput() {
    if (m_iDisabled) return;
    --m_iFuncStackCounter;
    indent();
    const DWORD duration = GetTickCount() - m_dwStart;
    if (m_piResult)
        dbgPrint("%.50s() returns %d (after %dms)\n", m_szName, *m_piResult, duration);
    else
        dbgPrint("%.50s() returns (after %dms)\n", m_szName, duration);
}
