#pragma once
// Makes calls that change the disk fail, or end the process, at a chosen moment. A test program that compiles
// failing_files_native.cpp in has its own open, write, fsync, rename and so on, which every library of the
// process then uses. Nothing is flushed to the disk in such a program: the page cache outlives a process.

#include <functional>

namespace kor::test {

enum class FileFault {
    fails,           // the call does nothing: ENOSPC when it makes or writes a file, else EIO
    kills,           // the process ends before the call
    writesAndFails,  // half of what is to be written is, and the next call fails
    writesAndKills,  // half of what is to be written is, and the process ends
};

struct FileCalls {
    int made = 0;               // calls that change the disk
    bool reported = false;      // one failed whose failure loses data: a write, a flush, a rename
    bool full = false;          // the disk was told to be full
    bool afterReplace = false;  // a name had changed its file before
};

/// From now on the n-th call of this thread that changes the disk has the fault; 0: none.
void setFileFault(int nth, FileFault fault);

/// Ends the faults, and tells what happened.
FileCalls takeFileCalls();

/// From now on the times of files are told in whole ticks of so many nanoseconds, as on a system whose clock
/// is that coarse; 1: as they are.
void setFileTimeTick(long nanoseconds);

/// From now on the disk has no locks of folders and no files without a name, as with some network file
/// systems; or has them again.
void setBareDisk(bool bare);

/// Has something done at the next flush of this thread, in the midst of a writer's work.
void setAtFlush(std::function<void()> action);

}  // namespace kor::test
