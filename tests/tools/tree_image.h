#pragma once
// Parameter-tree files made by hand, so that the command is not only compared with itself.
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace kor::test {

struct Node {
    std::uint32_t id = 0;
    std::uint32_t type = 0;
    std::uint32_t word0 = 0;  ///< of an immediate
    std::uint32_t word1 = 0;
    std::string data = {};  ///< of a block
    std::vector<Node> children = {};
};

/// The file that holds this tree and nothing else.
std::string imageOf(const Node& root);

/// A random tree with entries of every type that a file can hold, unknown ones too.
/// @param strings  bytes that its strings are made of, but zero
Node randomTree(std::mt19937& generator, const std::string& strings);

}  // namespace kor::test
