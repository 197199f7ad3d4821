// Wine's function of the same name, in a program of its own: what counts is that process's time of the
// processor, without Wine's server, so that it is told rather too short.
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "bench/profile_peer.h"

namespace {

bool runs(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

std::string fixture(const char* what) {
    return std::string(PROFILE_WINE_FIXTURE) + " " + what + " '" + PROFILE_WINE_PREFIX + "'";
}

class WinePeer : public kor::bench::ProfilePeer {
  public:
    explicit WinePeer(const std::string& file) {
        int in[2], out[2];
        if (pipe(in) != 0 || pipe(out) != 0) std::abort();
        child_ = fork();
        if (child_ == 0) {
            dup2(in[0], STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            for (const int end : {in[0], in[1], out[0], out[1]})
                close(end);
            setenv("WINEPREFIX", PROFILE_WINE_PREFIX, 1);
            setenv("WINEDEBUG", "-all", 1);
            unsetenv("DISPLAY");
            execlp("wine", "wine", PROFILE_WINE_PROGRAM, ("Z:" + file).c_str(), kor::bench::kSection,
                   kor::bench::kKey, nullptr);
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        to_ = in[1];
        from_ = out[0];
    }
    ~WinePeer() override {
        close(to_);
        close(from_);
        waitpid(child_, nullptr, 0);
        runs(fixture("stop"));
    }

    // @return whether the program answers with a value
    bool isAlive() { return ask(1) > 0; }

    double read(int count) override {
        const double before = seconds();
        if (ask(count) <= 0) std::abort();
        return seconds() - before;
    }
    void write(const char*) override {}

  private:
    int ask(std::int32_t count) {
        std::int32_t length = 0;
        signal(SIGPIPE, SIG_IGN);
        if (::write(to_, &count, sizeof count) != sizeof count) return 0;
        return ::read(from_, &length, sizeof length) == sizeof length ? length : 0;
    }
    double seconds() const {
        clockid_t clock{};
        timespec now{};
        if (clock_getcpuclockid(child_, &clock) != 0 || clock_gettime(clock, &now) != 0) std::abort();
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    }

    pid_t child_ = 0;
    int to_ = -1;
    int from_ = -1;
};

}  // namespace

std::unique_ptr<kor::bench::ProfilePeer> kor::bench::makeWinePeer(const std::string& file,
                                                                  std::string& reason) {
    reason = "it is not installed, or there was no compiler for Windows";
    if (access(PROFILE_WINE_PROGRAM, R_OK) != 0 || !runs("command -v wine") || !runs(fixture("start")))
        return nullptr;
    auto peer = std::make_unique<WinePeer>(file);
    reason = "its program does not run";
    return peer->isAlive() ? std::move(peer) : nullptr;
}
