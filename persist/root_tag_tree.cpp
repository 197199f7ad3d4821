// The root of a tag tree: what it is attached to, writing and reading.

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/tag_tree.h"
#include "persist/tag_record.h"
#include "persist/tag_tree_profile_reader.h"
#include "persist/tag_tree_profile_writer.h"
#include "persist/tag_tree_reader.h"
#include "persist/tag_tree_writer.h"
#include "persist/tag_weight.h"

using namespace kor;

namespace {

constexpr LONG kUsualLimit = 16384;
constexpr LONG kTooLarge = 223;  // ERROR_FILE_TOO_LARGE

}  // namespace

IMPLEMENT_DYNAMIC(CRootTagTree, CTagTree)

CRootTagTree::CRootTagTree() : CRootTagTree(0, 0) {}

CRootTagTree::CRootTagTree(DWORD tag, DWORD version) {
    header_.tag = tag;
    header_.type = version | kTagSection;
    weigh();
}

CRootTagTree::~CRootTagTree() { Detach(); }

CString CRootTagTree::GetKeyStr(int, DWORD, int) { return CString(); }

int CRootTagTree::GetKeyId(int, DWORD, const CString&) { return -1; }

void CRootTagTree::AttachTo(CFile& file, int limit) {
    file_ = &file;
    limit_ = limit < 0 ? kUsualLimit : limit;
}

void CRootTagTree::AttachToProfile(LPCSTR path) { profile_ = path; }

void CRootTagTree::Detach() { file_ = nullptr; }

void CRootTagTree::WriteTree() {
    if (!isSectionTag(header_.type)) dropData();
    header_.type |= kTagSection;
    weigh();
    if (!file_) return WriteToProFile();
    const ULONGLONG start = file_->GetPosition();
    bool left = false;
    const ULONGLONG size = kTagRecordSize + CalcAllSize(left);
    if (size > kTagFileEnd || start > kTagFileEnd - size)
        AfxThrowFileException(CFileException::generic, kTooLarge, file_->GetFilePath());
    if (left) {
        TagTreeReader(*file_, static_cast<DWORD>(limit_)).loadLeft(*this);
        file_->Seek(static_cast<LONGLONG>(start), CFile::begin);
    }
    WriteToFile(static_cast<DWORD>(start));
}

void CRootTagTree::ReadTree() {
    if (!file_) return ReadFromProFile();
    struct Undo {
        CRootTagTree* root;
        Header former;
        ~Undo() {
            if (!root) return;
            root->DeleteChildren();
            root->dropData();
            root->header_ = {former.tag, former.type, 0, 0};
            root->weigh();
        }
    } undo{this, header_};
    dropData();
    ReadFromFile();
    undo.root = nullptr;
}

void CRootTagTree::WriteToFile(DWORD position) {
    header_.word1 = position + kTagRecordSize;
    TagTreeWriter(*file_).write(*this);
}

void CRootTagTree::ReadFromFile() { TagTreeReader(*file_, static_cast<DWORD>(limit_)).read(*this); }

void CRootTagTree::WriteToProFile() {
    if (!profile_.IsEmpty()) TagTreeProfileWriter(*this, profile_).write();
}

void CRootTagTree::ReadFromProFile() {
    if (!profile_.IsEmpty()) TagTreeProfileReader(*this, profile_, section_).read();
}

CString CRootTagTree::GetSectionName(const CTagTree& node) {
    if (node.IsRoot()) return GetKeyStr(0, kTagSection, static_cast<int>(node.GetTagID()));
    CPtrArray path;
    node.GetTreePath(path, TRUE);
    const auto at = [&path](int index) { return static_cast<const CTagTree*>(path.GetAt(index)); };
    CString name = GetSectionName(*at(0));
    for (int index = 1; index < path.GetSize(); ++index) {
        name += ".";
        if (at(index)->GetType() != kTagSection) break;
        name += GetKeyStr(static_cast<int>(at(index - 1)->GetTagID()), kTagSection,
                          static_cast<int>(at(index)->GetTagID()));
    }
    return name;
}
