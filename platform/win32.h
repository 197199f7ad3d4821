#pragma once
// The one include for the platform inside the library: the public declarations and what only we call.
// On Windows all of it is the system's; elsewhere platform/posix supplies the same functions.

#include "korutil/platform.h"
#include "korutil/platform/control.h"
#include "korutil/platform/drawing_object.h"
#include "korutil/platform/exception.h"
#include "korutil/platform/last_error.h"
#include "korutil/platform/memory.h"
#include "korutil/platform/message_box.h"
#include "korutil/platform/module.h"
#include "korutil/platform/registry.h"
#include "korutil/platform/window.h"
#include "korutil/platform/window_message.h"

#ifdef _WIN32
#include <io.h>
#include <sys/stat.h>
#else
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/low_level_file.h"
#include "platform/posix/kernel/profile.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/time.h"
#endif
