#include "bench/tag_tree_peer.h"

std::unique_ptr<kor::bench::TreePeer> kor::bench::makeTreePeer() { return nullptr; }
