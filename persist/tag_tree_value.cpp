// What a node of a tag tree tells: id, type, values, data.

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "korutil/error.h"
#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/tag_tree.h"
#include "persist/children.h"
#include "persist/left_data.h"
#include "persist/tag_record.h"

using namespace kor;

namespace {

constexpr UINT kWrongType = 0xE0000004;
constexpr UINT kNoData = 1030411;
constexpr UINT kNoDouble = 1030445;
constexpr UINT kNoLong = 1030455;
constexpr UINT kNoPoint = 1030467;

}  // namespace

DWORD CTagTree::GetTagID() const { return header_.tag; }

DWORD CTagTree::GetVersion() const { return header_.type & kTagVersionBits; }

DWORD CTagTree::GetType() const {
    return header_.type & (kTagImmediate | kTagArray) ? header_.type : header_.type & ~kTagVersionBits;
}

DWORD CTagTree::GetDataSize() const { return isDataTag(header_.type) ? header_.word0 : 0; }

LONG CTagTree::GetLong() const {
    if (header_.type != kTagLong) appThrowInternalError(kWrongType, kNoLong);
    return static_cast<LONG>(header_.word0);
}

double CTagTree::GetDouble() const {
    if (header_.type != kTagDouble) appThrowInternalError(kWrongType, kNoDouble);
    return std::bit_cast<double>(ULONGLONG{header_.word1} << 32 | header_.word0);
}

POINT CTagTree::GetPoint() const {
    if (header_.type != kTagPoint) appThrowInternalError(kWrongType, kNoPoint);
    return {static_cast<LONG>(header_.word0), static_cast<LONG>(header_.word1)};
}

int CTagTree::CopyBuffer(void* buffer, int maximum) const {
    if (!isDataTag(header_.type)) appThrowInternalError(kWrongType, kNoData);
    const DWORD count = std::min(header_.word0, static_cast<DWORD>(std::max(maximum, 0)));
    if (count == 0) return 0;
    if (data_) {
        std::memcpy(buffer, data_, count);
        return static_cast<int>(count);
    }
    CFile* file = rootFile();
    if (!file || fileMark(*file) != leftIn_) AfxThrowFileException(CFileException::invalidFile);
    file->Seek(header_.word1, CFile::begin);
    if (file->Read(buffer, count) != count)
        AfxThrowFileException(CFileException::endOfFile, -1, file->GetFilePath());
    return static_cast<int>(count);
}

int CTagTree::GetArray(void* buffer, int maximum, int elementSize) const {
    int count = 0;
    if (elementSize > 0) {
        const DWORD elements = GetDataSize() / static_cast<DWORD>(elementSize);
        const int largest =
            std::numeric_limits<int>::max() / elementSize;  // of a buffer that CopyBuffer can fill
        count =
            static_cast<int>(std::min<DWORD>(elements, static_cast<DWORD>(std::clamp(maximum, 0, largest))));
    }
    CopyBuffer(buffer, count * elementSize);
    return count;
}

int CTagTree::GetDblArray(double* values, int maximum) const {
    return GetArray(values, maximum, static_cast<int>(sizeof(double)));
}

CString CTagTree::GetString() const {
    CString text;
    const DWORD size = GetDataSize();
    if (size < 2) return text;
    if (size > static_cast<DWORD>(std::numeric_limits<int>::max())) AfxThrowMemoryException();
    char* characters = text.GetBuffer(static_cast<int>(size));
    CopyBuffer(characters, static_cast<int>(size));
    characters[size - 1] = 0;
    text.ReleaseBuffer();
    return text;
}

CTagTree* CTagTree::FindTag(DWORD tag, DWORD kind) const {
    for (int index = 0; index < count(); ++index) {
        auto* node = static_cast<CTagTree*>(at(index));
        if (node->header_.tag == tag && (node->header_.type & ~kTagVersionBits) == kind) return node;
    }
    return nullptr;
}

CFile* CTagTree::rootFile() const {
    const CKorSimpleTree* root = GetRoot();
    return root->IsKindOf(RUNTIME_CLASS(CRootTagTree)) ? static_cast<const CRootTagTree*>(root)->file_
                                                       : nullptr;
}
