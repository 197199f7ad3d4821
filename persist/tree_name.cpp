// The one member that may be called on a null node. This file is compiled with
// -fno-delete-null-pointer-checks, so that the test is not optimised away; on both targets an ordinary member
// call reaches it with a null `this`.

#include "korutil/tree.h"

CString CKorTree::GetName() const {
    if (reinterpret_cast<std::uintptr_t>(this) == 0) return CString();  // tolerated: required
    return name_;
}
