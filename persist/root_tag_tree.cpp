// The root of a tag tree: what it is attached to, writing and reading.

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/tag_tree.h"
#include "persist/tag_record.h"
#include "persist/tag_tree_reader.h"
#include "persist/tag_tree_writer.h"
#include "persist/tag_weight.h"

using namespace kor;

namespace {

constexpr LONG kUsualLimit = 16384;
constexpr LONG kTooLarge = 223;        // ERROR_FILE_TOO_LARGE
constexpr LONG kNotImplemented = 120;  // ERROR_CALL_NOT_IMPLEMENTED

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
    if (!usesFile()) return;
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
    if (!usesFile()) return;
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

// Whether there is a file to work on; when there is only a profile, it says that it cannot.
bool CRootTagTree::usesFile() const {
    if (!file_ && !profile_.IsEmpty())
        AfxThrowFileException(CFileException::generic, kNotImplemented, profile_);
    return file_ != nullptr;
}
