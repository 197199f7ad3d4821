#pragma once
/// The base of the framework's exceptions. They are thrown and caught by pointer:
///
///     try { file.Write(data, size); }
///     catch (CFileException* e) { ...; e->Delete(); }
///
/// Whoever catches one and does not throw it on calls `Delete`, which frees it when it was made to be freed.

#include "korutil/framework/object.h"

class KORUTIL_CLASS CException : public CObject {
    DECLARE_DYNAMIC(CException)
  public:
    /// An exception made with `new`: `Delete` frees it.
    CException();
    /// @param autoDelete  FALSE for a static or local object, which `Delete` leaves alone
    explicit CException(BOOL autoDelete);
    ~CException() override;

    /// Writes a text for the user, cut to the buffer and always ended.
    /// @param buffer       receives the text; an empty one when there is none
    /// @param size         size of the buffer in bytes, the end included; 0 writes nothing
    /// @param helpContext  when not null, receives the help topic of the text, 0 for none
    /// @return TRUE when there is a text
    virtual BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr);

    /// Shows the text of `GetErrorMessage` in a message box. Without a text it shows the string resource
    /// `messageId` of this library (61704, "No error message is available.", when that is 0 or missing).
    /// @param type  message-box style; an exclamation icon is added when it names none
    /// @return the answer: an `ID...` number of the message box, 0 when it could not be shown
    virtual int ReportError(UINT type = 0, UINT messageId = 0);

    /// Frees the exception unless it was made not to be freed. Nothing may touch it afterwards.
    void Delete();

  protected:
    BOOL m_bAutoDelete;
};
