#pragma once
// What an entry of a parameter tree holds: its type, and its value as the command's texts and JSON have it.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "korutil/platform.h"

namespace kor::tree {

enum class Type { kLong, kDouble, kPoint, kString, kDoubles, kMemory, kSection, kOther };

inline constexpr DWORD kImmediateBit = 0x80000000;
inline constexpr DWORD kSectionBit = 0x40000000;
inline constexpr DWORD kMemoryBit = 0x20000000;
inline constexpr DWORD kVersionMask = 0x07FFFFFF;

inline constexpr DWORD kLongWord = 0x80000014;
inline constexpr DWORD kDoubleWord = 0x80000088;
inline constexpr DWORD kPointWord = 0x80000108;
inline constexpr DWORD kStringWord = 0x10000011;
inline constexpr DWORD kDoublesWord = 0x10000088;

/// The type that a type word stands for; kOther for one that the library reads but does not write.
Type typeOf(DWORD typeWord);

/// The name of a type as the command line and JSON have it.
std::string_view nameOf(Type type);

/// The type of that name. @return false when there is none
bool typeNamed(std::string_view name, Type& type);

/// The types of which a command line can give a value, for messages.
inline constexpr std::string_view kValueTypes = "long, double, point, string, doubles or memory";

/// Bytes of a block that is turned into a text as a whole: a string, and whatever --all shows.
inline constexpr std::size_t kLargestText = 64u << 20;

/// The content of an entry that is not a section.
struct Content {
    DWORD typeWord = 0;
    std::array<DWORD, 2> words{};  ///< of an immediate
    std::string data;              ///< of a block
};

Content longContent(LONG value);
Content doubleContent(double value);
Content pointContent(POINT value);
Content memoryContent(DWORD version, std::string bytes);

/// A string's content: no data for an empty one, else its bytes and a zero. @param text  in the code page
Content stringContent(std::string_view text);

/// Appends the eight bytes of one element to an array of doubles.
void appendElement(Content& doubles, double value);

double doubleOf(const std::array<DWORD, 2>& words);

/// Element `index` of an array of doubles.
double elementOf(std::string_view data, std::size_t index);

/// Whether a block's bytes are what its type says, so that the type's own form shows all of them: a string
/// ends with its only zero (or is empty and has no data), an array holds whole doubles.
bool isRegular(Type type, std::string_view data);

/// The same of the data words of an immediate: a long has a second one, which is 0.
bool isRegular(Type type, const std::array<DWORD, 2>& words);

/// A double in its shortest form that reads back; NaN, Infinity and -Infinity by name; a NaN of other bits
/// than the usual one as 0x and the 16 digits of its bits.
std::string doubleText(double value);

/// Whether doubleText writes that value as a word and not as a JSON number.
bool isSpecial(double value);

/// The value of one of the words that doubleText writes. @return false for any other text
bool specialNamed(std::string_view text, double& value);

/// Pairs of hexadecimal digits, upper case.
std::string hexText(std::string_view bytes);

/// Whether a text is pairs of hexadecimal digits of either case.
bool isHex(std::string_view text);

/// The bytes of pairs of hexadecimal digits of either case. @return false for any other text
bool bytesOfHex(std::string_view text, std::string& bytes);

/// "0x80000014".
std::string wordText(DWORD word);

/// The content that a command line gives: a whole number; a number or word as doubleText has it; x,y; a text
/// in UTF-8; numbers joined by commas (none for an empty text); pairs of hexadecimal digits, blanks allowed
/// between.
/// @param where  what the message begins with when the code page cannot express a text
/// @throws command::UsageError for a text that is not such a value, and for a type that takes none
/// @throws command::Failure for a text that the code page cannot express
Content contentOfText(Type type, std::string_view text, std::string_view where);

}  // namespace kor::tree
