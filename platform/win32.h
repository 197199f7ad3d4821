#pragma once
// The one include for the platform inside the library: the public declarations and what only we call.
// On Windows all of it is the system's; elsewhere platform/posix supplies the same functions.

#include "korutil/platform.h"
#include "korutil/platform/exception.h"
#include "korutil/platform/last_error.h"
#include "korutil/platform/memory.h"
#include "korutil/platform/module.h"
#include "korutil/platform/window.h"

#ifndef _WIN32
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/time.h"
#endif
