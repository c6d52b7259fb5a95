// The lines of a text file, decoded to UTF-8 as they are read: the file is
// never held whole, and anything that reads as a stream (a pipe, a /proc
// file, a terminal) reads the same as a file on disk. A file that starts with
// the UTF-16LE byte order mark is UTF-16LE (big-endian is refused); anything
// else is UTF-8, and a line that isn't valid UTF-8 is read as Windows-1252.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace ostrel::platform {

// What a reader of a text file reports: the line (from 1) and what is wrong.
struct TextError {
    int line;
    std::string message;
};

// ": " and the reason of the last failed system call, where the library tells it.
std::string systemReason(int error);

// Text in the ANSI code page of the machine that wrote it. Modern tools write
// UTF-8 even into REGEDIT4 files, so valid UTF-8 is taken as it stands and
// anything else is read as Windows-1252.
std::string decodeAnsi(std::string_view bytes);

class TextLines {
  public:
    // Sizes no real file reaches, so that a device or an endless pipe ends in
    // an error naming the line instead of taking all memory.
    static constexpr std::uint64_t kMaxFileBytes = std::uint64_t{512} << 20;
    static constexpr std::size_t kMaxLineBytes = std::size_t{8} << 20;

    explicit TextLines(std::istream& in) : in_(in) {}

    // The next line, without its '\n'; false after the last. Throws TextError
    // when the stream fails or its bytes can't be text.
    bool next(std::string& line);

    // The number of the line last handed out.
    int number() const { return number_; }

  private:
    enum class Encoding { Unknown, Utf8, Utf16Le };
    static constexpr std::size_t kReadChunk = 64 * 1024;

    void take(std::string& line, std::size_t end, std::size_t next);
    bool fill();
    void decode();

    std::istream& in_;
    std::array<char, kReadChunk> chunk_{};
    std::string raw_;      // bytes read and not yet decoded
    std::string pending_;  // decoded text from start_ on not yet handed out
    std::size_t start_ = 0;
    std::size_t scanned_ = 0;  // pending_ holds no '\n' from start_ to here
    Encoding encoding_ = Encoding::Unknown;
    std::uint64_t read_ = 0;  // bytes taken from the stream
    bool ended_ = false;
    int number_ = 0;
};

}  // namespace ostrel::platform
