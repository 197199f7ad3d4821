#include "bench/profile_peer.h"

std::unique_ptr<kor::bench::ProfilePeer> kor::bench::makeQtPeer(const std::string&, std::string& reason) {
    reason = "its headers were not found";
    return nullptr;
}
