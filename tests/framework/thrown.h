#pragma once
// What a piece of work throws, in words that a test can compare.
#include <string>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"

namespace kor::test {

/// "cause error" of the file exception that the work throws ("badSeek 131"); "nothing" when it throws none.
/// @param fileName  receives the exception's file; may be null
template <class Work>
std::string causeOf(Work work, std::string* fileName = nullptr) {
    static constexpr const char* kNames[] = {
        "none",         "generic",          "fileNotFound",     "badPath",       "tooManyOpen",
        "accessDenied", "invalidFile",      "removeCurrentDir", "directoryFull", "badSeek",
        "hardIO",       "sharingViolation", "lockViolation",    "diskFull",      "endOfFile"};
    try {
        work();
    } catch (CFileException* e) {
        std::string text = std::string(kNames[e->m_cause]) + " " + std::to_string(e->m_lOsError);
        if (fileName != nullptr) *fileName = static_cast<const char*>(e->m_strFileName);
        e->Delete();
        return text;
    }
    return "nothing";
}

template <class Work>
bool isMemoryFailure(Work work) {
    try {
        work();
    } catch (CMemoryException* e) {
        e->Delete();
        return true;
    }
    return false;
}

}  // namespace kor::test
