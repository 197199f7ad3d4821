#pragma once
// A terminal, and what stands in the place of a program's standard files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <string>

namespace kor::test {

// Puts another file in the place of a descriptor for a while.
class Redirected {
  public:
    Redirected(int descriptor, int replacement) : descriptor_(descriptor), before_(dup(descriptor)) {
        dup2(replacement, descriptor);
    }
    ~Redirected() {
        dup2(before_, descriptor_);
        close(before_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

  private:
    int descriptor_;
    int before_;
};

class Terminal {
  public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master_);
        unlockpt(master_);
        slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
        termios settings{};
        tcgetattr(slave_, &settings);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(slave_, TCSANOW, &settings);
    }
    ~Terminal() {
        close(slave_);
        close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    int slave() const { return slave_; }
    void type(const std::string& keys) const {
        EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    // What was written so far: it arrives piece by piece.
    std::string shown() const {
        std::string text;
        pollfd ready{master_, POLLIN, 0};
        char piece[256];
        while (poll(&ready, 1, kPatience) > 0) {
            const ssize_t count = read(master_, piece, sizeof(piece));
            if (count <= 0) break;
            text.append(piece, static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    static constexpr int kPatience = 200;  // milliseconds

    int master_;
    int slave_ = -1;
};

}  // namespace kor::test
