#include "platform/common/text_lines.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <istream>
#include <system_error>

#include "runtime/text.h"

namespace ostrel::platform {

namespace {

void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

}  // namespace

std::string decodeAnsi(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    static constexpr std::array<uint16_t, 32> kHigh = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b < 0xA0) {
            appendUtf8(out, kHigh[b - 0x80u]);
        } else {
            appendUtf8(out, b);
        }
    }
    return out;
}

std::string systemReason(int error) {
    return error != 0 ? ": " + std::generic_category().message(error) : std::string();
}

bool TextLines::next(std::string& line) {
    for (;;) {
        const std::size_t end = pending_.find('\n', scanned_);
        if (end != std::string::npos) {
            take(line, end, end + 1);
            return true;
        }
        scanned_ = pending_.size();
        if (scanned_ - start_ > kMaxLineBytes)
            throw TextError{number_ + 1, "a line is longer than 8 MiB"};
        if (!fill()) break;
    }
    if (start_ == pending_.size()) return false;
    take(line, pending_.size(), pending_.size());
    return true;
}

void TextLines::take(std::string& line, std::size_t end, std::size_t next) {
    line.assign(pending_, start_, end - start_);
    if (encoding_ == Encoding::Utf8 && !isValidUtf8(line)) line = decodeAnsi(line);
    start_ = scanned_ = next;
    ++number_;
}

// Reads until some text is decoded; false at the end of the file.
bool TextLines::fill() {
    pending_.erase(0, start_);
    scanned_ -= start_;
    start_ = 0;
    const std::size_t before = pending_.size();
    while (!ended_ && pending_.size() == before) {
        in_.read(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
        if (in_.bad()) throw TextError{number_ + 1, "can't read the file" + systemReason(errno)};
        raw_.append(chunk_.data(), static_cast<std::size_t>(in_.gcount()));
        read_ += static_cast<std::uint64_t>(in_.gcount());
        if (read_ > kMaxFileBytes) throw TextError{number_ + 1, "the file is larger than 512 MiB"};
        ended_ = in_.eof();
        decode();
    }
    return pending_.size() > before;
}

// Moves what can be decoded of raw_ to pending_.
void TextLines::decode() {
    const std::string_view raw(raw_);
    if (encoding_ == Encoding::Unknown) {
        if (raw.size() < 3 && !ended_) return;  // a byte order mark may still come
        if (raw.starts_with("\xFE\xFF")) {
            throw TextError{1, "UTF-16 big-endian files are not supported"};
        }
        std::size_t mark = 0;
        if (raw.starts_with("\xFF\xFE")) {
            encoding_ = Encoding::Utf16Le;
            mark = 2;
        } else {
            encoding_ = Encoding::Utf8;
            if (raw.starts_with("\xEF\xBB\xBF")) mark = 3;
        }
        raw_.erase(0, mark);
    }
    if (encoding_ == Encoding::Utf8) {
        pending_ += raw_;
        raw_.clear();
        return;
    }
    // Whole units only; a high surrogate waits for its partner.
    std::size_t usable = raw_.size() & ~std::size_t{1};
    if (!ended_ && usable >= 2 && (static_cast<unsigned char>(raw_[usable - 1]) & 0xFC) == 0xD8) {
        usable -= 2;
    }
    pending_ += fromUtf16Bytes(std::string_view(raw_).substr(0, usable));
    raw_.erase(0, usable);
    if (ended_ && !raw_.empty()) {
        const auto lines = std::count(pending_.begin() + static_cast<std::ptrdiff_t>(start_),
                                      pending_.end(), '\n');
        throw TextError{number_ + 1 + static_cast<int>(lines),
                        "the file ends in half a UTF-16 character (an odd number of bytes)"};
    }
}

}  // namespace ostrel::platform
