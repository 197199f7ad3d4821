#include "persist/tag_tree_profile_writer.h"

#include <algorithm>
#include <array>
#include <limits>

#include "framework/bounded_text.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/profile.h"
#include "platform/win32.h"
#include "runtime/number_text.h"

namespace kor {
namespace {

constexpr UINT kValueRoom = 260;              // texts and rows of numbers are cut to 259 characters: required
constexpr int kMostNumbers = kValueRoom / 2;  // of which so many can still be seen

CString keyOf(const CString& name, const TagProfileSuffix& suffix) { return name + "." + suffix.name; }

}  // namespace

// Each section, and then the ones in it in their order, by a list of those that wait.
void TagTreeProfileWriter::write() {
    CPtrArray waiting;
    waiting.Add(&root_);
    while (waiting.GetSize() > 0) {
        const int last = waiting.GetSize() - 1;
        const auto* section = static_cast<const CTagTree*>(waiting.GetAt(last));
        waiting.RemoveAt(last);
        writeSection(*section);
        for (int index = section->GetChildCount() - 1; index >= 0; --index) {
            auto* child = static_cast<CTagTree*>((*section)[index]);
            if (child->GetType() == kTagSection) waiting.Add(child);
        }
    }
}

void TagTreeProfileWriter::writeSection(const CTagTree& section) {
    section_ = root_.GetSectionName(section);
    check(appWriteProfileInt(section_, kTagProfileVersion, static_cast<int>(section.GetVersion()), selector(),
                             nullptr));
    for (int index = 0; index < section.GetChildCount(); ++index)
        writeEntry(section, *static_cast<const CTagTree*>(section[index]));
}

void TagTreeProfileWriter::writeEntry(const CTagTree& section, const CTagTree& entry) {
    const DWORD type = entry.GetType();
    const DWORD shown = isImmediateTag(type) ? type : type & ~kTagVersionBits;
    const CString name =
        root_.GetKeyStr(static_cast<int>(section.GetTagID()), shown, static_cast<int>(entry.GetTagID()));
    char value[kValueRoom];
    switch (type) {
        case kTagLong:
            BoundedText(value, kValueRoom).append(entry.GetLong());
            return put(name, kIntSuffix, value);
        case kTagDouble:
            numberText(entry.GetDouble(), kSettingDigits, value);
            return put(name, kFloatSuffix, value);
        case kTagPoint:
            BoundedText(value, kValueRoom).append(entry.GetPoint().x).append(",").append(entry.GetPoint().y);
            return put(name, kPointSuffix, value);
        case kTagSection:
            return put(name, kSectionSuffix, name);
        case kTagString:
            BoundedText(value, kValueRoom).append(LPCSTR(entry.GetString()));
            return put(name, kTextSuffix, value);
        case kTagDoubleArray:
            return writeNumbers(name, entry);
        case kTagMemory:
            return writeMemory(name, entry);
        default:;
    }
}

void TagTreeProfileWriter::writeNumbers(const CString& name, const CTagTree& entry) {
    std::array<double, kMostNumbers> numbers;
    const int count = entry.GetDblArray(numbers.data(), kMostNumbers);
    char value[kValueRoom];
    BoundedText text(value, kValueRoom);
    for (int index = 0; index < count; ++index) {
        std::array<char, kNumberTextRoom> number;
        const std::size_t length =
            numberText(numbers[static_cast<std::size_t>(index)], kSettingDigits, number);
        text.append(index == 0 ? "" : ",").append({number.data(), length});
    }
    put(name, kFloatArraySuffix, value);
}

void TagTreeProfileWriter::writeMemory(const CString& name, const CTagTree& entry) {
    if (entry.GetDataSize() > DWORD{std::numeric_limits<int>::max()}) AfxThrowMemoryException();
    const int size = static_cast<int>(entry.GetDataSize());
    CByteArray bytes;
    bytes.SetSize(size);
    entry.CopyBuffer(bytes.GetData(), size);
    check(appWriteProfileInt(section_, keyOf(name, kMemoryVersionSuffix),
                             static_cast<int>(entry.GetVersion()), selector(), nullptr));
    check(appWriteProfileStruct(section_, keyOf(name, kMemorySuffix), bytes.GetData(),
                                static_cast<DWORD>(size), selector(), nullptr));
}

void TagTreeProfileWriter::put(const CString& name, const TagProfileSuffix& suffix, LPCSTR value) {
    check(appWriteProfileString(section_, keyOf(name, suffix), value, selector(), nullptr));
}

void TagTreeProfileWriter::check(BOOL written) const {
    if (!written) CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), profile_);
}

UINT_PTR TagTreeProfileWriter::selector() const { return profileFile(profile_); }

}  // namespace kor
