#pragma once
/// Error objects and the error ring: how every function of the library reports a failure.
///
/// A function that returns a success flag places an error object in the ring and returns 0; one that cannot
/// throws a `CKorException*` through an `appThrow...` function, which places the error too. Either way the
/// caller finds it with `appGetLastErrorObject`. An error has a code, a location number ("No.") that
/// identifies the place that raised it, a text for the user and a text for the debugger. The ring keeps the
/// eight most recent ones.
///
///     try {
///         tree.ReadTree();
///     } catch (CException* exception) {
///         appHandleException(exception);  // shows it and deletes it
///     }
///
/// Codes have the layout of the system's status codes: bits 31 and 30 severity (binary 11 error, 01
/// information), bit 29 set in every code of the library's own, bits 28 to 16 a facility, bits 15 to 0 the
/// code. Codes of the system (its last error, results of structured storage, fault codes) are kept as they
/// come.
///
/// A text argument is a text, or the number (below 0x10000) of a string resource of the module given in the
/// call. Its arguments are an argument list (KORUTIL_ARGUMENTS, KorArgumentList) for the conversions in it;
/// with null the text is taken as it stands, so that a `%` in it is just a character. Formatted texts end at
/// 4095 characters.
///
/// All state is process-wide and unguarded; the library is called from the host's user-interface thread.

#include "korutil/framework/exception.h"
#include "korutil/framework/object.h"
#include "korutil/framework/string.h"
#include "korutil/platform.h"

inline constexpr DWORD kErrorNoMemory = 14;           ///< the system's code; of the memory error object
inline constexpr DWORD kErrorUserBreak = 0x60000002;  ///< the user broke off (information)
inline constexpr DWORD kErrorArgument = 0xE0000003;   ///< an argument is not valid
inline constexpr DWORD kErrorDivisionByZero = 0xE0000005;
inline constexpr DWORD kErrorNoText = 0xE0000064;  ///< a message text could not be loaded or formatted
inline constexpr DWORD kErrorReserveExhausted = 0xE0CD03E9;  ///< the host's virtual-memory reserve is used up
inline constexpr DWORD kInfoReserveExhausted = 0x60CD03E9;   ///< the same with information severity

/// An error object. Code and location are 0 after construction.
class KORUTIL_CLASS CKorError : public CObject {
    DECLARE_DYNAMIC(CKorError)
  public:
    CKorError();
    CKorError(const CKorError&) = delete;
    CKorError& operator=(const CKorError&) = delete;
    ~CKorError() override;

    /// @return an object of equal content that the caller ends with `Delete`; throws a `CMemoryException*`
    /// when
    ///         memory is short
    virtual CKorError* Duplicate() const = 0;

    /// Ends an object that came from `Duplicate` or `new`.
    virtual void Delete() = 0;

    /// The text for the user.
    /// @param buffer       receives the text, cut to `size` - 1 characters and terminated; always written
    /// @param size         size of the buffer in characters
    /// @param helpContext  receives the help context; may be null
    /// @return 1; 0 when there is no text for the user
    virtual BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext) = 0;

    /// The text for the debugger, under the same rules.
    virtual void GetDebugMessage(char* buffer, UINT size) = 0;

    DWORD GetErrorCode() const;
    DWORD GetErrorLocation() const;

    /// Sets code and location, each only when the value given is not 0, so that either can be set alone.
    void SetError(DWORD code, DWORD location);

    /// Shows the text for the user in a message box with the product caption and the stop icon; for any kind
    /// but the memory error through `utlWarning`.
    /// @return 1; 0 when there is no text
    BOOL ShowErrorMessage();

    /// Writes the text for the debugger, in a frame, to the host's debug log (`dbgPrintLog`, flag 8). A
    /// memory error writes nothing.
    /// @return 1; 0 when there is no text
    BOOL OutputDebugMessage();

  protected:
    DWORD m_dwErrorCode;
    DWORD m_dwErrorLocation;
};

/// Memory is short. There is one such object in the process (see `appPlaceMemoryError`); nothing that is done
/// with it takes memory: its duplicate is the object itself, and deleting it does nothing.
class KORUTIL_CLASS CMemError : public CKorError {
    DECLARE_DYNAMIC(CMemError)
  public:
    CMemError();
    ~CMemError() override;
    CKorError* Duplicate() const override;
    void Delete() override;
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext) override;
    void GetDebugMessage(char* buffer, UINT size) override;

  private:
    friend class CKorError;
    void CheckMessage();

    char m_szMessage[64];
};

namespace kor {
struct ErrorRenewal;
}

/// Every other error.
class KORUTIL_CLASS CGeneralError : public CKorError {
    DECLARE_DYNAMIC(CGeneralError)
  public:
    explicit CGeneralError(DWORD code);
    ~CGeneralError() override;
    CKorError* Duplicate() const override;
    void Delete() override;
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext) override;

    /// "Error %u; No.: %u;" with code and location and a line break, then the debug text, or, only when there
    /// is none, the user's text. What does not fit into the rest of the buffer with its terminator is left
    /// out whole.
    void GetDebugMessage(char* buffer, UINT size) override;

    /// Sets the user's text and the help context. A text that cannot be loaded or formatted becomes empty and
    /// leaves the error 0xE0000064 in the ring, location 1000437 (loading) or 1000450 (formatting). A number
    /// without a module is no text, and no error.
    /// @param text    null for none
    void SetErrorMessage(const char* text, void* arguments, UINT helpContext, HINSTANCE instance);

    /// Sets the location, whatever the text, and the debug text, unless the text given is null or empty.
    void SetDebugMessage(UINT number, const char* text, void* arguments, HINSTANCE instance);

  private:
    friend struct kor::ErrorRenewal;
    void SetString(const char* text, HINSTANCE instance, void* arguments, int toErrorMessage);

    CString m_strErrorMessage;
    CString m_strDebugMessage;
    UINT m_nHelpContext;
};

/// The exception that carries an error object of its own. It is thrown by pointer; the one who catches it
/// ends it with `Delete`, or hands it to `appHandleException`.
class KORUTIL_CLASS CKorException : public CException {
    DECLARE_DYNAMIC(CKorException)
  public:
    /// Carries no error.
    CKorException();
    /// Carries a duplicate of an error. When memory is short for that, the shortage is shown to the user and
    /// the exception carries none.
    explicit CKorException(const CKorError& error);
    CKorException(const CKorException&) = delete;
    CKorException& operator=(const CKorException&) = delete;
    ~CKorException() override;

    /// Code and location of the error carried; 0 when there is none.
    DWORD GetErrorCode() const;
    DWORD GetErrorLocation() const;

    /// The error carried, null for none. It belongs to the exception.
    CKorError* GetErrorObject() const;

    /// The text for the user of the error carried.
    /// @param helpContext  may be null; 0 when there is no error
    /// @return 1; 0, with an empty text, when there is none
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext) override;

    /// As `CGeneralError::SetErrorMessage`, for the error carried.
    /// @return 1; 0 when the error carried has no text of its own to change
    BOOL SetErrorMessage(const char* text, void* arguments, UINT helpContext, HINSTANCE instance);

  private:
    CKorError* m_pError;
};

// ------------------------------------------------------------------------------------------------ the ring
//
// Placing an error throws a `CMemoryException*` when memory is short; only `appPlaceMemoryError` never
// throws.

/// Places an error in the ring.
/// @param code            its code
/// @param number          its location number
/// @param errorText       text or string number for the user; null for none
/// @param errorArguments  arguments for the conversions in it, null to take the text as it stands
/// @param debugText       the same for the debugger
/// @param helpContext     help context of the user's text
/// @param instance        module from which string numbers are loaded
/// @return 1
KORUTIL_API BOOL KORUTIL_CALL appPlaceError(UINT code, UINT number, const char* errorText,
                                            void* errorArguments, const char* debugText, void* debugArguments,
                                            UINT helpContext, HINSTANCE instance);

/// Places a duplicate of an error object; the ninth error in the ring takes the place of the oldest.
/// @return 1
KORUTIL_API BOOL KORUTIL_CALL appPlaceErrorObject(const CKorError& error);

/// Places the memory error object. When memory is too short even for the ring, that is shown to the user
/// instead.
/// @return 1; 0 when the ring could not be made
KORUTIL_API BOOL KORUTIL_CALL appPlaceMemoryError();

/// @return the error placed last, which still belongs to the ring; null when there is none, or when the place
///         before the next one to be filled is empty
KORUTIL_API CKorError* KORUTIL_CALL appGetLastErrorObject();

/// Deletes the error placed last. The position moves back by one even when that place is empty, on purpose:
/// repeated calls walk backwards over empty places.
/// @return 1 when an object was deleted, else 0
KORUTIL_API BOOL KORUTIL_CALL appRemoveLastError();

/// Deletes all errors and releases the ring's memory.
KORUTIL_API void KORUTIL_CALL appClearErrors();

/// Shows the last error to the user; it stays in the ring.
/// @return 1 when there was one, else 0
KORUTIL_API BOOL KORUTIL_CALL appShowLastError();

// ------------------------------------------------------------------------------------------ throwing errors
//
// Each places an error in the ring and throws a `CKorException*` that carries a duplicate. None returns.

#define KORUTIL_THROWS KORUTIL_API __attribute__((noreturn)) void KORUTIL_CALL

/// The arguments are those of `appPlaceError`.
KORUTIL_THROWS appThrowException(UINT code, UINT number, const char* errorText, void* errorArguments,
                                 const char* debugText, void* debugArguments, UINT helpContext,
                                 HINSTANCE instance);

/// 0x60000002: the user broke off.
KORUTIL_THROWS appThrowUserBreak();

/// 0xE0000003: an argument is not valid.
KORUTIL_THROWS appThrowArgumentError(UINT number);

/// 0xE0000005, with a debug text that names the location number and no text for the user.
KORUTIL_THROWS appThrowDivZero(UINT number);

/// An internal error with the caller's code: a debug text, no text for the user.
KORUTIL_THROWS appThrowInternalError(UINT code, UINT number);

/// The calling thread's last error of the system: a debug text, no text for the user.
KORUTIL_THROWS appThrowLastError(UINT number);

/// A file error, with a text for the user chosen by the code: not found (2, 0x80030002), access denied (5,
/// 0x80030005), not enough memory (8, 0x80030008), any other.
/// @param resultCode  the system's or structured storage's code
/// @param fileName    name of the file, put into the text; null for none: the text for "not found" is then
/// shown with
///                    its place for the name as it stands, which is required
/// @param mode        2 when the file was to be written: says so for access denied
KORUTIL_THROWS appThrowFileError(LONG resultCode, UINT number, const char* fileName, UINT mode);

// --------------------------------------------------------------------------------------- reporting failures

/// Shows a caught exception to the user. The framework's memory exception is shown as the memory error, which
/// is also placed. A `CKorException` shows its error's text and writes its debug text to the log; when the
/// virtual-memory reserve is exhausted, the setting of its size is written anew and the user is told. Any
/// other exception reports itself. The exception is not deleted.
/// @return 1 when something was shown, else 0
KORUTIL_API BOOL KORUTIL_CALL appReportException(CException* exception);

/// Reports an exception as `appReportException` does and ends it with `Delete`.
/// @return the result of the report
KORUTIL_API BOOL KORUTIL_CALL appHandleException(CException* exception);

/// Shows the text of the memory error object; takes no memory.
/// @return 1
KORUTIL_API BOOL KORUTIL_CALL appWarningNoMemory();

/// The same.
KORUTIL_API BOOL KORUTIL_CALL OutOfMemoryError();
