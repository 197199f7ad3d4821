#pragma once
// What an initialisation file holds, as one text: the file's bytes, or UTF-8 where a byte-order mark says
// that they are Unicode.

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/kernel/code_page.h"
#include "platform/posix/kernel/profile_line.h"

namespace kor {

enum class ProfileEncoding { ansi, utf8, utf16LittleEndian, utf16BigEndian };

/// Takes the next bytes of a file. @return their number, 0 at the end, -1 with errno set
using ProfileSource = std::function<std::ptrdiff_t(char* data, std::size_t size)>;

/// Takes pieces of a file. @return false with errno set
using ProfileSink = std::function<bool(std::string_view bytes)>;

class ProfileText {
  public:
    /// Positions in a text are 32 bits; there is no larger one.
    static constexpr std::size_t kLargest = 0xFFFFFF00;

    /// An empty one.
    ProfileText() { setEncoding(ProfileEncoding::ansi); }

    /// Reads a file of about `size` bytes, at most half as many more as are kept for UTF-16.
    /// @return nothing on failure, with errno set: EFBIG for a file that is too large
    static std::optional<ProfileText> read(const ProfileSource& source, std::size_t size);

    std::string_view view() const { return {data_.get(), size_}; }
    ProfileEncoding encoding() const { return encoding_; }

    /// The page of `view()`.
    const CodePage& page() const { return *page_; }

    /// Its lead bytes, null when it has none.
    ProfileLeadByte leadBytes() const { return leadBytes_; }

    /// Between the callers' texts, in the ANSI code page, and this one's.
    /// @param holder  keeps the result where it is not `text` itself
    std::string_view fromCaller(std::string_view text, std::string& holder) const;
    std::string_view toCaller(std::string_view text, std::string& holder) const;

    /// Gives out the text, with the part from `begin` to `end` replaced by what `visit` gives to the sink
    /// that it gets, as the file's bytes. All return false as soon as a sink does.
    bool write(std::size_t begin, std::size_t end, const std::function<bool(const ProfileSink& sink)>& visit,
               const ProfileSink& sink) const;

  private:
    struct Free {
        void operator()(char* data) const { std::free(data); }
    };
    using Buffer = std::unique_ptr<char, Free>;

    static Buffer allocate(std::size_t size);
    bool readBytes(const ProfileSource& source, std::string_view first, std::size_t size);
    bool readUtf16(const ProfileSource& source, std::string_view first, std::size_t size);
    void cut(std::size_t capacity);
    void setEncoding(ProfileEncoding encoding);
    bool isUtf16() const { return encoding_ >= ProfileEncoding::utf16LittleEndian; }
    std::string_view mark() const;

    Buffer data_;
    std::size_t size_ = 0;
    ProfileEncoding encoding_;
    const CodePage* page_;
    ProfileLeadByte leadBytes_;
    bool isCallers_;   // the code page is the callers'
    std::string odd_;  // the half of a last UTF-16 unit, kept at the end of the file
};

}  // namespace kor
