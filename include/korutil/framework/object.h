#pragma once
/// The root of the framework's classes: an object that knows its class.
///
/// Derive from it, give the class a record (`runtime_class.h`), and `IsKindOf` tells an object's class at run
/// time, also across modules. Objects are made with `new`; when memory is short, `new` throws a
/// `CMemoryException*` (arrays of objects throw `std::bad_alloc`). Objects are not copied unless a class says
/// how.

#include <new>

#include "korutil/framework/runtime_class.h"

class CArchive;
class CDumpContext;

class KORUTIL_CLASS CObject {
  public:
    static const CRuntimeClass classCObject;

    /// The record of the object's class; every class with a record overrides it.
    virtual CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    /// For derived classes that are stored in an archive of the host's; does nothing here.
    virtual void Serialize(CArchive& archive);
    /// For derived classes: stops the program when the object is damaged; does nothing here.
    virtual void AssertValid() const;
    /// For derived classes: describes the object to a context of the host's; does nothing here.
    virtual void Dump(CDumpContext& context) const;

    /// Whether the object's class is `type` or is derived from it.
    BOOL IsKindOf(const CRuntimeClass* type) const;
    /// Whether the object's class has a schema number, so that its objects may be stored.
    BOOL IsSerializable() const;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept;
    static void* operator new(std::size_t size, void* place) noexcept;
    static void operator delete(void* block) noexcept;
    static void operator delete(void* block, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* block, void* place) noexcept;

  protected:
    CObject();
};
