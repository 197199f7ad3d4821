#pragma once
// The process's one table of handles. A handle is a small multiple of 4, never 0.

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "korutil/platform.h"

namespace kor {

/// What a handle stands for; closed when the last handle and the last call on it are gone.
class HandleObject {
  public:
    virtual ~HandleObject() = default;
};

class HandleTable {
  public:
    struct Entry {
        std::shared_ptr<HandleObject> object;
        unsigned access = 0;  ///< what this handle may do, in the object's own bits
    };

    /// The process's table. What is still open at the end of the process is closed then.
    static HandleTable& instance();

    /// May throw std::bad_alloc; what cannot be undone takes a HandlePlace before it is done.
    HANDLE add(Entry entry);

    /// @return an entry without an object for a handle that is not open
    Entry find(HANDLE handle) const;

    /// Takes the handle out of the table. @return as `find`
    Entry remove(HANDLE handle);

  private:
    friend class HandlePlace;

    // The free places form a list, the longest unused first, so that a stale handle is noticed.
    struct Place {
        Entry entry;
        std::size_t nextFree = 0;
    };

    std::size_t takePlace();
    void givePlaceBack(std::size_t index);
    HANDLE fillPlace(std::size_t index, Entry entry);
    static void closeAll();

    mutable std::mutex mutex_;
    std::vector<Place> places_;
    std::size_t firstFree_ = 0;
    std::size_t lastFree_ = 0;
    std::size_t freeCount_ = 0;
};

/// A place in the process's table that is kept for a handle to come.
class HandlePlace {
  public:
    /// May throw std::bad_alloc.
    HandlePlace();
    ~HandlePlace();
    HandlePlace(const HandlePlace&) = delete;
    HandlePlace& operator=(const HandlePlace&) = delete;

    /// Makes the place a handle. To be called once at most; needs no memory.
    HANDLE fill(HandleTable::Entry entry);

  private:
    std::size_t index_;
    bool filled_ = false;
};

/// An open handle's object of one kind, with the handle's access; `object` is null, and the last error
/// ERROR_INVALID_HANDLE, when the handle is not open or of another kind.
template <typename Object>
struct Opened {
    std::shared_ptr<Object> object;
    unsigned access = 0;

    explicit operator bool() const { return object != nullptr; }
    Object* operator->() const { return object.get(); }
};

}  // namespace kor
