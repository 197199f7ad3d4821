#pragma once
/// Run-time class records: what a `CObject` can say about its class while the program runs.
///
/// Every class that wants one has a static member `class<ClassName>` (`CFile::classCFile`), declared in the
/// class with DECLARE_DYNAMIC and defined in one source file with IMPLEMENT_DYNAMIC. Records are constants:
/// they are ready before any constructor of a static object runs, and a class of one module may derive from a
/// class of another. Two records are the same class when they have the same address.

#include "korutil/platform.h"

class CObject;

struct KORUTIL_CLASS CRuntimeClass {
    const char* m_lpszClassName;  ///< the class's name, without a namespace
    int m_nObjectSize;            ///< size of an object in bytes
    UINT m_wSchema;               ///< schema number for storing objects; 0xFFFF: not stored
    CObject* (
        *m_pfnCreateObject)();  ///< makes an object with `new`; null for a class without DECLARE_DYNCREATE
    CRuntimeClass* (*m_pfnGetBaseClass)();  ///< gives the record of the base class; null for `CObject`

    /// Makes an object of the class with its default constructor; the caller deletes it.
    /// @return null when the class cannot be created dynamically or memory is short
    CObject* CreateObject() const;

    /// Whether the class is `base` or is derived from it.
    /// @param base  record to look for; null answers FALSE
    BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

/// The record of a class, as a `CRuntimeClass*`. Write the name without a namespace.
#define RUNTIME_CLASS(Class) (const_cast<CRuntimeClass*>(&Class::class##Class))

/// In the class's declaration: gives the class a record. What follows it is public.
#define DECLARE_DYNAMIC(Class)               \
  public:                                    \
    static const CRuntimeClass class##Class; \
    CRuntimeClass* GetRuntimeClass() const override;

/// In one source file: defines what DECLARE_DYNAMIC declared. `Base` is the class that it derives from.
#define IMPLEMENT_DYNAMIC(Class, Base) KORUTIL_IMPLEMENT_RUNTIME_CLASS(Class, Base, nullptr)

/// As DECLARE_DYNAMIC, for a class with a default constructor whose objects `CRuntimeClass::CreateObject` can
/// make.
#define DECLARE_DYNCREATE(Class) \
    DECLARE_DYNAMIC(Class)       \
    static CObject* CreateObject();

/// In one source file: defines what DECLARE_DYNCREATE declared.
#define IMPLEMENT_DYNCREATE(Class, Base)                 \
    CObject* Class::CreateObject() { return new Class; } \
    KORUTIL_IMPLEMENT_RUNTIME_CLASS(Class, Base, &Class::CreateObject)

/// Part of the two macros above. The base's record is asked for by a function, since its address in another
/// module is not known before that module is loaded.
#define KORUTIL_IMPLEMENT_RUNTIME_CLASS(Class, Base, creator)                                             \
    constinit const CRuntimeClass Class::class##Class = {#Class, static_cast<int>(sizeof(Class)), 0xFFFF, \
                                                         creator, [] { return RUNTIME_CLASS(Base); }};    \
    CRuntimeClass* Class::GetRuntimeClass() const { return RUNTIME_CLASS(Class); }
