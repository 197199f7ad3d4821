#include "files/buffered_file_record.h"

#include <new>

#include "korutil/framework/memory_exception.h"
#include "resources/ids.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

constexpr std::size_t kMostOfDefaultName = 260;

bool push() {
    auto* record = new (std::nothrow) FileData;
    if (!record) return false;
    record->m_pPrevious = currentRecord;
    currentRecord = record;
    return true;
}

// The record that is always there was not pushed, and nothing is before it.
bool pop() {
    FileData* popped = currentRecord;
    if (!popped->m_pPrevious) return false;
    currentRecord = popped->m_pPrevious;
    delete popped;
    return true;
}

// Made while the library is loaded, destroyed while it is unloaded with all that is still pushed.
struct Base {
    ~Base() {
        while (pop())
            ;
    }
    FileData record;
} base;

}  // namespace

FileData* currentRecord = &base.record;

void resetFile(FileData& file) {
    file.m_dwPosition = 0;
    file.m_dwCapacity = 0;
    file.m_hBuffer = nullptr;
    file.m_dwLength = 0;
    file.m_bReadOnly = 0;
    file.m_iHandle = kNoFile;
}

}  // namespace kor

FileData::FileData()
    : m_dwPosition(0),
      m_dwCapacity(0),
      m_hBuffer(nullptr),
      m_bMessages(1),
      m_iHandle(kNoFile),
      m_pPrevious(nullptr),
      m_bReadOnly(0),
      m_dwLength(0) {}

FileData::~FileData() = default;

const char* KORUTIL_CALL fileGetName() { return kor::currentFile().m_strName; }

void KORUTIL_CALL fileSetName(const char* name) {
    CString& own = kor::currentFile().m_strName;
    char text[kor::kMostOfDefaultName + 1];
    if (!name) name = kor::loadOwnText(kor::text::kFileWithoutName, text);
    try {
        own = name;
    } catch (CMemoryException* exception) {
        exception->Delete();
        own.Empty();
    }
}

BOOL KORUTIL_CALL fileEnableErrorMsg(BOOL enable) {
    FileData& file = kor::currentFile();
    const BOOL previous = file.m_bMessages;
    file.m_bMessages = enable;
    return previous;
}

BOOL KORUTIL_CALL filePushFileData() { return kor::push(); }

BOOL KORUTIL_CALL filePopFileData() { return kor::pop(); }
