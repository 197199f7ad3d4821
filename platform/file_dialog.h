#pragma once
// The platform's dialogs that ask for a file. They stand apart from win32.h: the system's header makes a
// macro of a name that the framework's files have a member of.

#include "platform/win32.h"

#ifdef _WIN32
#include <commdlg.h>
#else
#include "platform/posix/user/file_dialog.h"
#endif
