// Splitting and searching texts.

#include "korutil/framework/memory_exception.h"
#include "korutil/text.h"
#include "platform/win32.h"

// The text is copied before a result is touched: it may be that of a result.

void KORUTIL_CALL strSplit(const char* text, CStringArray& array, const char* separator) {
    const CString whole(text);
    const CString mark(separator);
    CStringArray elements;
    int start = 0;
    // An empty field ends the split: required.
    for (int found; (found = whole.Find(mark, start)) > start; start = found + mark.GetLength())
        elements.Add(whole.Mid(start, found - start));
    elements.Add(whole.Mid(start));
    array.Copy(elements);
}

int KORUTIL_CALL strSplitFromEnd(const char* text, CString& left, CString& right, char separator) {
    const CString whole(text);
    const int index = whole.ReverseFind(separator);
    CString before;
    CString behind;
    if (index >= 0) {
        before = whole.Left(index);
        behind = whole.Mid(index + 1);
    }
    left = static_cast<CString&&>(before);
    right = static_cast<CString&&>(behind);
    return index;
}

char* KORUTIL_CALL _tcsistr(const char* text, const char* pattern) {
    if (!text || !pattern) return nullptr;
    try {
        CString lowerText(text);
        CString lowerPattern(pattern);
        lowerText.MakeLower();
        lowerPattern.MakeLower();
        const int index = lowerText.Find(lowerPattern);
        return index >= 0 ? const_cast<char*>(text) + index : nullptr;
    } catch (CException* exception) {
        exception->Delete();
        return nullptr;
    }
}
