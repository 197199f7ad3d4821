#pragma once
// Work in a process of its own, natively.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kor::test {

/// Does the work in a child of this process, which ends without the test's end; false from it fails the test.
template <class Work>
void inChild(Work work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace kor::test
