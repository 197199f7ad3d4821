#include "persist/tag_tree_profile_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/profile.h"
#include "korutil/text.h"
#include "persist/children.h"
#include "persist/tag_weight.h"
#include "platform/win32.h"
#include "runtime/integer_text.h"
#include "runtime/number_text.h"

namespace kor {
namespace {

constexpr int kBufferSize = 16384;
constexpr int kDeepestLevel = 1000;
constexpr const char* kPointSeparator = "s_PointSeparator";

constexpr std::array kSuffixes = {kIntSuffix,  kFloatSuffix,      kPointSuffix,         kSectionSuffix,
                                  kTextSuffix, kFloatArraySuffix, kMemoryVersionSuffix, kMemorySuffix};

// The texts of a list that ends with an empty one.
void addListToArray(std::span<const char> list, CStringArray& array) {
    while (!list.empty() && list.front() != '\0') {
        const auto length =
            static_cast<std::size_t>(std::find(list.begin(), list.end(), '\0') - list.begin());
        array.Add(CString(list.data(), static_cast<int>(length)));
        list = list.subspan(std::min(length + 1, list.size()));
    }
}

void saveNumbers(CTagTree& section, DWORD tag, LPCSTR text) {
    CByteArray bytes;
    bytes.SetSize(static_cast<int>(std::strlen(text) / 2 + 1) * static_cast<int>(sizeof(double)));
    int count = 0;
    for (LPCSTR next = text;;) {
        LPCSTR end = next;
        const double number = numberValue(next, &end);
        if (end == next) break;
        std::memcpy(bytes.GetData() + static_cast<std::size_t>(count++) * sizeof number, &number,
                    sizeof number);
        if (*end != ',') break;
        next = end + 1;
    }
    bytes.SetSize(count * static_cast<int>(sizeof(double)));
    section.SaveDblArray(tag, reinterpret_cast<const double*>(bytes.GetData()), count);
}

void saveMemory(CTagTree& section, DWORD tag, const CString& digits) {
    CByteArray bytes;
    bytes.SetSize(digits.GetLength() / 2);
    const auto size = static_cast<DWORD>(bytes.GetSize());
    if (utlStringToStruct(digits, static_cast<DWORD>(digits.GetLength()), bytes.GetData(), size))
        section.SaveTemporaryBuffer(tag, 0, bytes.GetData(), size);
}

// A point is looked for with the name of its separator in place of the separator, so none that was written is
// read back: required.
void savePoint(CTagTree& section, DWORD tag, LPCSTR text) {
    CStringArray pieces;
    strSplit(text, pieces, kPointSeparator);
    if (pieces.GetSize() < 2) return;
    section.SavePoint(tag, {integerValue(pieces.GetAt(0)), integerValue(pieces.GetAt(1))});
}

}  // namespace

TagTreeProfileReader::TagTreeProfileReader(CRootTagTree& root, const CString& profile, CByteArray& buffer)
    : root_(root), profile_(profile), buffer_(buffer) {}

// Each section, and then the ones in it in their order, by a list of those that wait.
void TagTreeProfileReader::read() {
    CPtrArray waiting;
    waiting.Add(&root_);
    while (waiting.GetSize() > 0) {
        const int last = waiting.GetSize() - 1;
        auto* section = static_cast<CTagTree*>(waiting.GetAt(last));
        waiting.RemoveAt(last);
        if (section->GetLevel() == kDeepestLevel) continue;
        readSection(*section);
        for (int index = section->GetChildCount() - 1; index >= 0; --index) {
            auto* child = static_cast<CTagTree*>((*section)[index]);
            if (child->GetType() == kTagSection) waiting.Add(child);
        }
    }
}

// One call, so that a section is cut at the size of the buffer: required.
void TagTreeProfileReader::readSection(CTagTree& section) {
    buffer_.SetSize(kBufferSize);
    auto* text = reinterpret_cast<char*>(buffer_.GetData());
    const CString name = root_.GetSectionName(section);
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetPrivateProfileSectionA(name, text, kBufferSize, profile_);
    if (length == 0) checkMissing(GetLastError());
    CStringArray lines;
    addListToArray({text, std::min<std::size_t>(length, kBufferSize)}, lines);
    const int former = section.GetChildCount();
    hasVersion_ = false;
    for (int index = 0; index < lines.GetSize(); ++index)
        readLine(section, lines.GetAt(index), former);
    applyVersions(section);
}

// A profile or a section that is not there is no failure; a profile that cannot be read is one.
void TagTreeProfileReader::checkMissing(DWORD error) const {
    if (error == ERROR_NOT_ENOUGH_MEMORY) AfxThrowMemoryException();
    const bool isMissing =
        error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (!isMissing) CFileException::ThrowOsError(static_cast<LONG>(error), profile_);
}

void TagTreeProfileReader::readLine(CTagTree& section, const CString& line, int former) {
    const int sign = line.Find('=');
    if (sign < 0) return;
    const CString key = line.Left(sign);
    const CString value = line.Mid(sign + 1);
    CString name;
    CString suffix;
    if (strSplitFromEnd(key, name, suffix, '.') < 0) {
        if (hasVersion_ || key.CompareNoCase(kTagProfileVersion) != 0) return;
        hasVersion_ = true;
        section.header_.type = (static_cast<DWORD>(integerValue(value)) & kTagVersionBits) | kTagSection;
        section.weigh();
    } else if (!name.IsEmpty()) {
        for (const TagProfileSuffix& known : kSuffixes)
            if (suffix.CompareNoCase(known.name) == 0) addEntry(section, name, known, value, former);
    }
}

// The children up to `former` were there before and are left alone, also by a version for one of them.
void TagTreeProfileReader::addEntry(CTagTree& section, const CString& name, const TagProfileSuffix& suffix,
                                    const CString& value, int former) {
    const bool isSection = suffix.type == kTagSection;
    const int tag =
        root_.GetKeyId(static_cast<int>(section.GetTagID()), suffix.type, isSection ? value : name);
    if (tag <= 0) return;
    const auto id = static_cast<DWORD>(tag);
    if (suffix.name != std::string_view(kMemoryVersionSuffix.name)) {
        if (!section.FindTag(id, suffix.type & ~kTagVersionBits)) addValue(section, id, suffix, value);
        return;
    }
    const CTagTree* const memory = section.FindTag(id, kTagMemory);
    if (memory && section.FindChild(memory) < former) return;
    if (!section.FindTag(id, kTagVersionMark & ~kTagVersionBits))
        section.addNode({id, kTagVersionMark, static_cast<DWORD>(integerValue(value)), 0});
}

void TagTreeProfileReader::addValue(CTagTree& section, DWORD tag, const TagProfileSuffix& suffix,
                                    const CString& value) {
    switch (suffix.type) {
        case kTagLong:
            section.SaveLong(tag, integerValue(value));
            break;
        case kTagDouble:
            section.SaveDouble(tag, numberValue(value, nullptr));
            break;
        case kTagPoint:
            savePoint(section, tag, value);
            break;
        case kTagSection:
            section.CreateSection(tag, 0);
            break;
        case kTagString:
            section.SaveString(tag, value);
            break;
        case kTagDoubleArray:
            saveNumbers(section, tag, value);
            break;
        default:
            saveMemory(section, tag, value);
    }
}

// A version whose bytes are missing stays as it is: required.
void TagTreeProfileReader::applyVersions(CTagTree& section) {
    for (int index = section.GetChildCount() - 1; index >= 0; --index) {
        auto* mark = static_cast<CTagTree*>(section[index]);
        if (mark->header_.type != kTagVersionMark) continue;
        CTagTree* const memory = section.FindTag(mark->header_.tag, kTagMemory);
        if (!memory) continue;
        memory->header_.type = (mark->header_.word0 & kTagVersionBits) | kTagMemory;
        memory->weigh();
        delete mark;
    }
}

}  // namespace kor
