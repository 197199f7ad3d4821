#pragma once
// Trees as bytes: records and images made by hand, files in memory, and what an exception said.
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "korutil/error.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/mem_file.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/tag_tree.h"

namespace kor::test {

using Bytes = std::vector<BYTE>;

/// Words as a file holds them.
inline Bytes words(std::initializer_list<DWORD> values) {
    Bytes bytes;
    for (const DWORD value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<BYTE>(value >> shift));
    return bytes;
}

inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

inline Bytes text(const std::string& characters) { return Bytes(characters.begin(), characters.end()); }

inline void setWord(Bytes& bytes, std::size_t at, DWORD value) {
    const Bytes word = words({value});
    std::copy(word.begin(), word.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

/// A file in memory that holds these bytes and cannot grow.
class ImageFile : public CMemFile {
  public:
    explicit ImageFile(Bytes bytes) : bytes_(std::move(bytes)) {
        Attach(bytes_.data(), static_cast<UINT>(bytes_.size()));
    }

  private:
    Bytes bytes_;
};

inline Bytes content(CFile& file) {
    Bytes bytes(static_cast<std::size_t>(file.GetLength()));
    file.SeekToBegin();
    bytes.resize(file.Read(bytes.data(), static_cast<UINT>(bytes.size())));
    return bytes;
}

/// What the tree writes, at a position of an empty file.
inline Bytes written(CRootTagTree& root) {
    CMemFile file;
    root.AttachTo(file, -1);
    root.WriteTree();
    root.Detach();
    return content(file);
}

inline CTagTree& childAt(const CTagTree& node, int index) { return *static_cast<CTagTree*>(node[index]); }

/// What was thrown: "none", "memory", "file <cause> <system error>" or "error <code in hex> <location>".
template <class Action>
std::string thrownBy(Action action) {
    try {
        action();
    } catch (CFileException* e) {
        const std::string what = "file " + std::to_string(e->m_cause) + " " + std::to_string(e->m_lOsError);
        e->Delete();
        return what;
    } catch (CMemoryException* e) {
        e->Delete();
        return "memory";
    } catch (CKorException* e) {
        char code[16];
        std::snprintf(code, sizeof code, "%08X", static_cast<unsigned>(e->GetErrorCode()));
        const std::string what = "error " + std::string(code) + " " + std::to_string(e->GetErrorLocation());
        e->Delete();
        return what;
    }
    return "none";
}

inline const std::string kEndOfFile = "file 14 -1";
inline const std::string kBadFormat = "file 1 11";
inline const std::string kInvalidFile = "file 6 -1";

}  // namespace kor::test
