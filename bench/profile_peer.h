#pragma once
// What else reads and writes the initialisation file of the benchmark.

#include <memory>
#include <string>

namespace kor::bench {

inline constexpr char kSection[] = "Section50";
inline constexpr char kKey[] = "Key50";

class ProfilePeer {
  public:
    virtual ~ProfilePeer() = default;
    /// Reads one key `count` times, each time as if it were the only one. @return the seconds that it took,
    /// or 0 when they are the caller's
    virtual double read(int count) = 0;
    /// Sets one key and writes the file, when the peer can.
    virtual void write(const char* value) = 0;
};

/// Each is null, with a reason, when the peer is not installed.
std::unique_ptr<ProfilePeer> makeQtPeer(const std::string& file, std::string& reason);
std::unique_ptr<ProfilePeer> makeGlibPeer(const std::string& file, std::string& reason);
std::unique_ptr<ProfilePeer> makeWinePeer(const std::string& file, std::string& reason);

}  // namespace kor::bench
