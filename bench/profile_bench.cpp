// An initialisation file of 100 sections with 100 keys each: a key read again and for the first time, and a
// key written. Where a work waits for the disk the clock counts, elsewhere the thread's time of the
// processor.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/interleaved.h"
#include "bench/profile_peer.h"
#include "platform/win32.h"

namespace {
bool flushes = true;
}

// Every library of the process flushes through these, so that "without the flush" is measured by taking it
// away.
extern "C" int fsync(int file) { return flushes ? static_cast<int>(syscall(SYS_fsync, file)) : 0; }
extern "C" int fdatasync(int file) { return flushes ? static_cast<int>(syscall(SYS_fdatasync, file)) : 0; }

namespace {

using kor::bench::Limit;
using kor::bench::ProfilePeer;
using kor::bench::Work;
using kor::bench::work;

void require(bool holds) {
    if (holds) return;
    std::perror("profile_bench");
    std::exit(1);
}

std::string text() {
    std::string all;
    for (int section = 0; section < 100; ++section) {
        all += "[Section" + std::to_string(section) + "]\r\n";
        for (int key = 0; key < 100; ++key)
            all += "Key" + std::to_string(key) + "=value " + std::to_string(section * 1009 + key) + "\r\n";
    }
    return all;
}

// A folder on a disk: beside the program, not in a temporary folder that may be memory.
class Folder {
  public:
    Folder() {
        require(mkdtemp(path_.data()) != nullptr);
        std::string full(4096, '\0');
        require(realpath(path_.c_str(), full.data()) != nullptr);
        path_ = full.c_str();
    }
    ~Folder() { require(std::system(("rm -rf '" + path_ + "'").c_str()) == 0); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file(const char* name, const std::string& bytes) const {
        const std::string path = path_ + "/" + name;
        const int made = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        require(made >= 0 && write(made, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
        close(made);
        return path;
    }
    std::string path(const char* name) const { return path_ + "/" + name; }

  private:
    std::string path_ = "profile_bench-XXXXXX";
};

void readKey(const std::string& file) {
    char value[100];
    if (GetPrivateProfileStringA(kor::bench::kSection, kor::bench::kKey, "", value, sizeof value,
                                 file.c_str()) < 7)
        std::abort();
    benchmark::DoNotOptimize(value);
}

// Another value each time, so that there is something to write.
const char* nextValue() {
    static int number = 0;
    static char value[20];
    std::snprintf(value, sizeof value, "value %d", 100000 + number++ % 800000);
    return value;
}

void writeKey(const std::string& file) {
    if (!WritePrivateProfileStringA(kor::bench::kSection, kor::bench::kKey, nextValue(), file.c_str()))
        std::abort();
}

void readWhole(const std::string& native) {
    const int file = open(native.c_str(), O_RDONLY);
    struct stat status {};
    require(fstat(file, &status) == 0);
    const std::size_t size = static_cast<std::size_t>(status.st_size);
    const std::unique_ptr<char[]> bytes(new char[size]);
    require(read(file, bytes.get(), size) == status.st_size);
    close(file);
    benchmark::DoNotOptimize(bytes.get());
}

void writeAndRename(const std::string& native, const std::string& bytes) {
    const std::string beside = native + ".new";
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    require(fsync(file) == 0);
    close(file);
    require(rename(beside.c_str(), native.c_str()) == 0);
}

template <class Call>
Work timedWork(std::string name, Call call) {
    return {std::move(name), {}, [call](int count) mutable {
                timespec before{}, after{};
                clock_gettime(CLOCK_MONOTONIC, &before);
                for (int i = 0; i < count; ++i)
                    call();
                clock_gettime(CLOCK_MONOTONIC, &after);
                return static_cast<double>(after.tv_sec - before.tv_sec) +
                       static_cast<double>(after.tv_nsec - before.tv_nsec) * 1e-9;
            }};
}

bool measureReading(const std::string& native) {
    const std::string file = "Z:" + native;
    std::vector<Limit> limits{{work("stat",
                                    [native] {
                                        struct stat status {};
                                        require(stat(native.c_str(), &status) == 0);
                                        benchmark::DoNotOptimize(status);
                                    }),
                               2.5}};
    std::string noQt, noWine;
    const auto qt = kor::bench::makeQtPeer(native, noQt);
    if (qt) limits.push_back({{"Qt's settings, opened anew", [&qt](int count) { qt->read(count); }}, 0.25});
    const auto wine = kor::bench::makeWinePeer(native, noWine);
    if (wine)
        limits.push_back({{"Wine's function", {}, [&wine](int count) { return wine->read(count); }}, 0.25});
    const bool kept =
        kor::bench::compare(work("key read, the file unchanged", [file] { readKey(file); }), limits);
    if (!qt) kor::bench::skipped("key read", "Qt's settings", noQt);
    if (!wine) kor::bench::skipped("key read", "Wine's function", noWine);
    return kept;
}

bool measureParsing(const std::string& native) {
    const std::string file = "Z:" + native;
    const auto first = work("key read, the file never seen", [file] {
        WritePrivateProfileStringA(nullptr, nullptr, nullptr, nullptr);  // forgets all files
        readKey(file);
    });
    return kor::bench::compare(first, {{work("file read", [native] { readWhole(native); }), 4.5}});
}

bool measureWriting(const std::string& native, const std::string& bytes, const std::string& other) {
    const std::string file = "Z:" + native;
    bool kept = kor::bench::compare(
        timedWork("key written", [file] { writeKey(file); }),
        {{timedWork("file written, flushed and renamed", [&] { writeAndRename(other, bytes); }), 1.3}});
    std::string reason;
    const auto glib = kor::bench::makeGlibPeer(other, reason);
    if (!glib) {
        kor::bench::skipped("key written without the flush", "GLib's key file", reason);
        return kept;
    }
    flushes = false;
    kept = kor::bench::compare(work("key written without the flush", [file] { writeKey(file); }),
                               {{work("GLib's key file", [&glib] { glib->write(nextValue()); }), 0.5}}) &&
           kept;
    flushes = true;
    return kept;
}

}  // namespace

int main() {
    const Folder folder;
    const std::string bytes = text();
    const std::string file = folder.file("read.ini", bytes);
    const std::string written = folder.file("written.ini", bytes), other = folder.file("other.ini", bytes);
    // What has changed a moment ago is read again each time: by us within 20 ms, by Wine within seconds.
    const timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    require(utimensat(AT_FDCWD, file.c_str(), times, 0) == 0);
    usleep(50000);
    const bool reading = measureReading(file);
    const bool parsing = measureParsing(file);
    const bool writing = measureWriting(written, bytes, other);
    return reading && parsing && writing ? 0 : 1;
}
