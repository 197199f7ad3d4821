#pragma once
// OpenSSL's error queue, when it was there at build time.

namespace kor::bench {

/// Whether there is a peer to measure against.
bool errorPeerIsThere();

/// Raises an error with a text of 20 characters as its data.
void raiseInPeer(const char* text);

}  // namespace kor::bench
