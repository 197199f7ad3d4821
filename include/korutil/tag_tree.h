#pragma once
/// Tag trees: small sets of parameters that describe themselves and go to a file and back.
///
/// A tree is built below a CRootTagTree with the Save functions, and read back with FindTag and the getters.
/// Each node has a tag id, which the caller chooses, and a type word: kind bits, and either an element code
/// or the caller's version (bits 0 to 26).
///
/// - 0x80000014: SaveLong, a signed 32-bit value
/// - 0x80000088: SaveDouble, a double
/// - 0x80000108: SavePoint, a point of two 32-bit values
/// - 0x10000011: SaveString, a text with its terminating zero
/// - 0x10000088: SaveDblArray and SaveStaticDblArray, doubles
/// - 0x20000000 or version: SaveTemporaryBuffer and SaveStaticBuffer, bytes
/// - 0x40000000 or version: CreateSection and CRootTagTree, children
///
/// The kind of a node is its type word with bits 0 to 26 cleared. Ids need not be unique; look-up by id finds
/// the first child of that id and kind.
///
/// In a file a tree is the root's header record of 16 bytes (tag id, type word, two data words,
/// little-endian) and the blocks below it; all positions in it are absolute in the file, in 32 bits.
/// docs/format-tag-tree.md describes it byte by byte. Only sections store children: children of any other
/// node are not written.
///
/// In a profile (korutil/profile.h) a tree is text: each section of the tree is one section of the file, and
/// the application's names stand for the tag ids (CRootTagTree::GetKeyStr, GetKeyId). An entry's key is its
/// name, a point and one of these; of equal ones the first counts, and letter case does not:
///
/// - Int: SaveLong, decimal
/// - Flt: SaveDouble, 15 significant digits
/// - Pt: SavePoint, x and y with a comma between them. It is not read back; that is required
/// - Str: SaveString, its first 259 bytes (whole characters). As all values of a profile, a text loses the
///   blanks at its ends, and it must have no line ends
/// - FltA: SaveDblArray, numbers with commas between them, their first 259 characters: of about a dozen long
///   numbers the last one may be cut, which is required; keep longer rows as bytes
/// - MVer and Mem: SaveTemporaryBuffer, the version and the bytes as upper-case hexadecimal digits
/// - Sec: CreateSection; the value is its name. The key Version of the section itself holds its version
///
/// A node's children are deleted with it, and so is data that the tree has copied. Nodes that a tree makes
/// share storage with their neighbours, in pieces of up to 1,024 nodes and of up to 64 KB of data; a piece is
/// released with the last of the nodes that share it. So the nodes of one tree belong to one thread at a
/// time, also after they were moved to different trees; otherwise different trees may be used by different
/// threads.

#include "korutil/framework/byte_array.h"
#include "korutil/tree.h"

class CFile;
class CRootTagTree;

namespace kor {
class TagData;
class TagTreeProfileReader;
class TagTreeReader;
class TagTreeWriter;
}  // namespace kor

/// A node of a tag tree.
class KORUTIL_CLASS CTagTree : public CKorSimpleTree {
    DECLARE_DYNAMIC(CTagTree)

  public:
    /// A node with id 0 and type 0, without data.
    CTagTree();
    ~CTagTree() override;
    CTagTree(const CTagTree&) = delete;
    CTagTree& operator=(const CTagTree&) = delete;

    /// As CObject's; nodes that a tree makes lie in shared pieces of memory, which delete knows.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept;
    static void* operator new(std::size_t size, void* place) noexcept;
    static void operator delete(void* node) noexcept;
    static void operator delete(void* node, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* node, void* place) noexcept;

    /// Adds a child as CKorSimpleTree::AddNewKnot does; given no node it makes a new CTagTree. Reading a tree
    /// makes its nodes through this function wherever it is overridden. An override gives a new CTagTree
    /// node, a child of this one at any place, and leaves the others alone.
    /// @throws CMemoryException
    CKorSimpleTree* AddNewKnot(CKorSimpleTree* node = nullptr, CKorSimpleTree* before = nullptr) override;

    /// The Save functions append one child and return it. None looks for an existing child with the same id.
    /// Null data has size 0. They throw a CMemoryException when memory is short or a size does not fit into
    /// 32 bits.
    CTagTree* SaveLong(DWORD tag, LONG value);
    CTagTree* SaveDouble(DWORD tag, double value);
    CTagTree* SavePoint(DWORD tag, POINT point);

    /// Copies a text, which is in the ANSI code page. Its size includes the terminating zero, but an empty
    /// text (or null) has size 0 and no data.
    CTagTree* SaveString(DWORD tag, LPCSTR text);
    /// The same; the second argument is ignored on purpose.
    CTagTree* SaveString(DWORD tag, DWORD ignored, LPCSTR text);

    /// Copies `count` doubles (none when negative).
    CTagTree* SaveDblArray(DWORD tag, const double* values, int count);
    /// The same without a copy: the values stay the caller's, alive and unchanged until the tree is written.
    CTagTree* SaveStaticDblArray(DWORD tag, const double* values, int count);

    /// Copies `size` bytes.
    /// @param version  the caller's version, bits 0 to 26
    CTagTree* SaveTemporaryBuffer(DWORD tag, DWORD version, const void* data, DWORD size);
    /// The same without a copy: the bytes stay the caller's, alive and unchanged until the tree is written.
    CTagTree* SaveStaticBuffer(DWORD tag, DWORD version, const void* data, DWORD size);

    /// @return the new section, for further Save calls
    CTagTree* CreateSection(DWORD tag, DWORD version);

    DWORD GetTagID() const;
    /// @return bits 0 to 26 of the type word
    DWORD GetVersion() const;
    /// @return the full type word of an immediate (bit 31) or an array (bit 28); of everything else the kind
    DWORD GetType() const;
    /// @return the size of the data in bytes, without padding; 0 for sections and immediates
    DWORD GetDataSize() const;

    /// The value of an immediate. A node of another type throws a CKorException, an internal error 0xE0000004
    /// with location 1030455 (GetLong), 1030445 (GetDouble) or 1030467 (GetPoint).
    LONG GetLong() const;
    double GetDouble() const;
    POINT GetPoint() const;

    /// Copies the first bytes of the data; data that was left in the file is read from the root's file, whose
    /// position moves.
    /// @param buffer   receives the bytes
    /// @param maximum  size of the buffer (0 when negative)
    /// @return the number of bytes copied
    /// @throws CKorException  internal error 0xE0000004, location 1030411, for a section or an immediate
    /// @throws CFileException of the file; endOfFile when the file has become too short; invalidFile when the
    /// data was left in another file than the one that is attached to the root, if any
    int CopyBuffer(void* buffer, int maximum) const;
    /// Copies whole elements through CopyBuffer, and fails as it does.
    /// @param maximum      number of elements that the buffer holds
    /// @param elementSize  bytes per element; 0 copies nothing
    /// @return the number of elements copied
    int GetArray(void* buffer, int maximum, int elementSize) const;
    /// GetArray for doubles.
    int GetDblArray(double* values, int maximum) const;
    /// @return the data as a text: up to its first zero byte, the last byte always counting as one; empty
    ///         when there are fewer than two bytes
    CString GetString() const;

    /// @param kind  type word with bits 0 to 26 cleared, for example 0x80000000 for an immediate
    /// @return the first child in child order with that id and kind; null when there is none
    CTagTree* FindTag(DWORD tag, DWORD kind) const;

  private:
    struct Header {
        DWORD tag = 0;
        DWORD type = 0;
        DWORD word0 = 0;
        DWORD word1 = 0;
    };

    CTagTree* addNode(const Header& header, const void* data = nullptr);
    CTagTree* privSaveBuffer(DWORD tag, DWORD type, const void* data, std::size_t size);
    CTagTree* privSaveStatic(DWORD tag, DWORD type, const void* data, std::size_t size);
    kor::TagData* lastData() const;
    CFile* rootFile() const;
    void dropData();
    void weigh();
    void addRow(int added);
    CTagTree* newChild() const;
    bool isLeft() const;
    ULONGLONG CalcAllSize(bool& left);
    ULONGLONG sumSizes();
    CTagTree* openChild(int next, bool& left) const;

    Header header_;
    const void* data_ = nullptr;  // null with a size: the data is still in the file
    union {
        kor::TagData* owned_ = nullptr;  // with data: the tree's copy, shared with neighbours read with it
        std::uintptr_t leftIn_;          // data that is still in the file: which file
        CTagTree* nextNew_;              // a section while a tree is read: the one to be read next
    };

    friend class CRootTagTree;
    friend class kor::TagTreeProfileReader;
    friend class kor::TagTreeReader;
    friend class kor::TagTreeWriter;
};

/// The root of a tag tree, attached to a file or a profile. It owns neither.
class KORUTIL_CLASS CRootTagTree : public CTagTree {
    DECLARE_DYNAMIC(CRootTagTree)

  public:
    /// Tag id 0, version 0, detached, size limit 0.
    CRootTagTree();
    CRootTagTree(DWORD tag, DWORD version);
    ~CRootTagTree() override;
    CRootTagTree(const CRootTagTree&) = delete;
    CRootTagTree& operator=(const CRootTagTree&) = delete;

    /// Maps an entry to its key name in a profile; this version returns an empty string. Override both for
    /// trees that are kept in profiles. A name must not have `=`, `]` or line ends.
    /// @param parentTag  tag id of the section (0 for the root itself)
    /// @param type       full type word of an immediate (0x80000014, ...), the kind of everything else
    ///                   (0x10000000 for texts and doubles, 0x20000000, 0x40000000)
    /// @param tag        tag id of the entry
    virtual CString GetKeyStr(int parentTag, DWORD type, int tag);
    /// Maps a key name back to the tag id; this version returns -1 (unknown).
    /// @param type  full type word, without a version: 0x10000011 for texts, 0x10000088 for doubles
    /// @return an id above 0; the entry is passed over for any other
    virtual int GetKeyId(int parentTag, DWORD type, const CString& name);

    /// @return the name of the profile section in which the entries of a section stand: the root's GetKeyStr
    ///         (0, 0x40000000, tag id), and for each section below it a point and its GetKeyStr; for a node
    ///         that is no section that of its parent and a point
    /// @throws CMemoryException
    CString GetSectionName(const CTagTree& node);

    /// Attaches a file for WriteTree and ReadTree. A node whose data stayed in a file remembers which: it is
    /// read from the same CFile object with the same path only, in whatever tree the node is by then, also
    /// when the file was detached in between. (Files without a path are told apart as long as they live.)
    /// @param file   must outlive the attachment
    /// @param limit  data blocks of more bytes stay in the file when a tree is read; 16384 when negative
    void AttachTo(CFile& file, int limit);
    /// Remembers the path of a profile, which is used while no file is attached.
    void AttachToProfile(LPCSTR path);
    /// Forgets the file; the profile path stays.
    void Detach();

    /// Writes the tree at the file's current position and leaves the position behind it. Pad bytes are zero,
    /// so that equal trees give equal bytes. Sizes and positions in the headers are set before anything is
    /// written. Data that was left in the file is loaded first. A tree of more than 1,000 levels is written,
    /// but ReadTree refuses it. Without a file and without a profile path it does nothing.
    ///
    /// With a profile path alone it writes the profile form, entry by entry, each as appWriteProfileString
    /// does; what else the profile holds stays, entries of an earlier tree included.
    /// @throws CFileException of the file or profile, with the tree written in part; before anything is
    ///         written: generic with system error 223 (ERROR_FILE_TOO_LARGE) when the tree would end beyond
    ///         4 GB, invalidFile when data was left in another file. (In the profile form invalidFile comes
    ///         when the node is reached whose data was left in a file.)
    /// @throws CMemoryException
    void WriteTree();

    /// Reads a tree at the file's current position, where its header record stands; the position behind it is
    /// not defined. The root takes on the tag id and type word found there; children are appended to those it
    /// has. Nothing in the file is trusted. Without a file and without a profile path it does nothing.
    /// @throws CFileException of the file; endOfFile when the file ends before the header or a child table or
    ///         data block lies outside the file; generic with system error 11 (ERROR_BAD_FORMAT) when a table
    ///         contains itself, the tables and loaded data together need more bytes than the file has, or
    ///         nodes are nested deeper than 1,000 levels below the root. After any exception the root has no
    ///         children and its former tag id and type word
    /// @throws CMemoryException
    ///
    /// With a profile path alone it reads the profile form. A child that is there already is kept against an
    /// entry of the same id and kind. Of each section of the profile the first 16384 bytes are read; that is
    /// required. What cannot be understood is passed over, as is what lies more than 1,000 levels below the
    /// root; a version (MVer) without its bytes stays as a child of type 0xA0000014, which is required. A
    /// value is all that follows the first `=` of its line. A missing profile changes nothing; one that is
    /// there and cannot be read throws a CFileException. After an exception the tree has what was read so
    /// far.
    void ReadTree();

  private:
    void WriteToFile(DWORD position);
    void ReadFromFile();
    void WriteToProFile();
    void ReadFromProFile();

    CFile* file_ = nullptr;
    LONG limit_ = 0;
    CString profile_;
    CByteArray section_;  // of the profile, as it was read

    friend class CTagTree;
    friend class kor::TagTreeReader;
    friend class kor::TagTreeWriter;
};
