#include <openssl/err.h>

#include "bench/error_peer.h"

namespace kor::bench {

bool errorPeerIsThere() { return true; }

void raiseInPeer(const char* text) { ERR_raise_data(ERR_LIB_USER, 1, "%s", text); }

}  // namespace kor::bench
