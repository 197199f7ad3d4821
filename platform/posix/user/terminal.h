#pragma once
// Talking to the user on the terminal: standard error asks, standard input answers. All texts are UTF-8.

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace kor {

/// Whether somebody can be asked: both are terminals.
bool canAsk();

/// One question at a time: held from a question to its answer.
std::mutex& terminalLock();

void print(std::string_view text);

/// Reads a line, without its end. What exceeds `most` is dropped.
/// @return false when there is none any more
bool readLine(std::string& line, std::size_t most);

}  // namespace kor
