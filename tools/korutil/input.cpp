#include "tools/korutil/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <vector>

#include "tools/korutil/failure.h"

namespace kor::command {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 30;
constexpr std::size_t kPieceSize = 64 * 1024;

class Descriptor {
  public:
    explicit Descriptor(const std::string& name) : number_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int number() const { return number_; }

  private:
    int number_;
};

std::string readAll(int descriptor, std::string_view shown) {
    std::string text;
    std::vector<char> piece(kPieceSize);
    for (;;) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw Failure(shown, systemReason(errno));
        if (count == 0) return text;
        text.append(piece.data(), static_cast<std::size_t>(count));
        if (text.size() > kMostBytes) throw Failure(shown, "it is larger than 1 GiB");
    }
}

}  // namespace

std::string readInput(std::string_view argument) {
    if (argument == "-") return readAll(STDIN_FILENO, "standard input");
    const Descriptor file{std::string(argument)};
    if (file.number() < 0) throw Failure(argument, systemReason(errno));
    struct stat status {};
    if (::fstat(file.number(), &status) == 0 && S_ISDIR(status.st_mode))
        throw Failure(argument, "it is a folder");
    return readAll(file.number(), argument);
}

bool hasSameBytes(std::string_view first, std::string_view second) {
    std::ifstream a{std::string(first), std::ios::binary};
    std::ifstream b{std::string(second), std::ios::binary};
    std::vector<char> pieceOfA(kPieceSize);
    std::vector<char> pieceOfB(kPieceSize);
    for (;;) {
        a.read(pieceOfA.data(), static_cast<std::streamsize>(kPieceSize));
        b.read(pieceOfB.data(), static_cast<std::streamsize>(kPieceSize));
        if (a.bad() || !a.is_open()) throw Failure(first, "it cannot be read");
        if (b.bad() || !b.is_open()) throw Failure(second, "it cannot be read");
        if (a.gcount() != b.gcount() ||
            !std::equal(pieceOfA.begin(), pieceOfA.begin() + a.gcount(), pieceOfB.begin()))
            return false;
        if (a.gcount() == 0) return true;
    }
}

bool isSameFile(std::string_view first, std::string_view second) {
    struct stat a {};
    struct stat b {};
    return ::stat(std::string(first).c_str(), &a) == 0 && ::stat(std::string(second).c_str(), &b) == 0 &&
           a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace kor::command
