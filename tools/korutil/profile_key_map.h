#pragma once
// The names that the entries of a parameter tree have in a settings file, from JSON.
//
//   {"id":1000,"name":"Setup","keys":{
//     "1":"Title",
//     "100":{"name":"Camera","keys":{"1":"Model","5":"Bits"}}}}
//
// The outermost node has an id and a name; "keys" has a name for each id, and for a section an object with
// its name and keys again. Ids are whole numbers from 1 to 2147483647, in decimal. A name has no dot and
// nothing that a key or a section's name cannot have. The library tells sections apart by their own id,
// wherever they stand: what is said about a section id in several places must agree, and is taken together.

#include <map>
#include <optional>
#include <set>
#include <string>

#include "korutil/tag_tree.h"
#include "tools/korutil/json.h"

namespace kor::profile {

class KeyMap {
  public:
    /// @throws json::Error
    explicit KeyMap(const json::Document& document);

    int rootId() const { return rootId_; }
    const std::string& rootName() const { return rootName_; }

    /// The name of an entry, in the code page; null when it has none.
    const std::string* nameOf(int section, int id) const;
    /// The entry of that name, without regard to case.
    std::optional<int> idOf(int section, const std::string& name) const;

    /// A section of a settings file, told by its name: Setup, Setup.Camera.
    struct Place {
        int id = 0;              ///< the section's own
        bool isSection = false;  ///< the map says that it is one
    };
    /// @return nothing for a name that the map does not lead to
    std::optional<Place> placeOf(const std::string& sectionName) const;

  private:
    struct Section {
        std::map<int, std::string> names;
        std::map<std::string, int> ids;  // by folded name
        std::set<int> sections;          // entries with names of their own
    };

    void take(const json::Document& document, int section, const json::Value& keys);
    void add(const json::Document& document, int section, int id, const json::Value& name);

    int rootId_ = 0;
    std::string rootName_;
    std::map<int, Section> sections_;
};

/// A tree whose names in a settings file come from a map, which must outlive it.
class MappedTree : public CRootTagTree {
  public:
    explicit MappedTree(const KeyMap& map);

    CString GetKeyStr(int parentTag, DWORD type, int tag) override;
    int GetKeyId(int parentTag, DWORD type, const CString& name) override;

  private:
    const KeyMap& map_;
};

}  // namespace kor::profile
