#include "files/buffered_file_message.h"

#include "files/buffered_file_record.h"
#include "korutil/warning.h"
#include "resources/ids.h"
#include "runtime/process_state.h"

namespace kor {

int showFileMessage(UINT textId, const char* name) {
    const FileData& file = currentFile();
    if (!file.m_bMessages) return 0;
    // The handler that shows it may set the record's name anew.
    const CString kept = file.m_strName;
    if (!name || name == static_cast<const char*>(file.m_strName)) name = kept;
    return utlFileWarning(resourceModule(), nullptr, textId, name, 0);
}

}  // namespace kor

using kor::showFileMessage;

void KORUTIL_CALL fileNoMemoryError(const char* name) { showFileMessage(kor::text::kFileNoMemory, name); }
void KORUTIL_CALL fileOpenError(const char* name) { showFileMessage(kor::text::kFileFailed, name); }
void KORUTIL_CALL fileReadError(const char* name) { showFileMessage(kor::text::kFileReadDenied, name); }
void KORUTIL_CALL fileWriteError(const char* name) { showFileMessage(kor::text::kFileWriteDenied, name); }

int KORUTIL_CALL fileDecodeError(const char* name) {
    return showFileMessage(kor::text::kFileCannotDecode, name);
}
int KORUTIL_CALL fileEncodeError(const char* name) {
    return showFileMessage(kor::text::kFileCannotEncode, name);
}
int KORUTIL_CALL fileFormatError(const char* name) { return showFileMessage(kor::text::kFileFormat, name); }
int KORUTIL_CALL fileEntryAdjusted(const char* name) {
    return showFileMessage(kor::text::kFileEntryAdjusted, name);
}
