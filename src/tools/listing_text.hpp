#pragma once
// The text side of the listings: the 8-bit code page their files are written in,
// upper case as the runtime's UCase gives it, and the output file, filled through a
// buffer and written in large blocks.
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/variant.hpp"

namespace hist::tools::listing {

// Appends UTF-8 text as Windows-1252 bytes: ASCII and U+00A0..U+00FF as themselves,
// the 27 letters and signs the code page keeps in 0x80..0x9F at their places, the
// five unassigned C1 positions as themselves; any other character, and a byte that is
// no valid UTF-8, becomes '?'.
void appendAnsi(std::string& out, std::string_view utf8);

// Upper case, one code point for one (simple case mapping, as UCase does it: "ß"
// stays, "ó" becomes "Ó"). Bytes that are no valid UTF-8 are kept as they are.
std::string upperCase(std::string_view utf8);

// A listing file being written. Opening replaces what the file held. Text collects in
// a buffer that goes to the file in blocks of about a megabyte; close() writes the
// rest. A failure of a member half-way is left as it is: the destructor writes what
// was collected, so the file holds everything up to the failure.
class OutputFile {
public:
    // Error 76 when the folder does not exist, 75 when the file cannot be opened.
    OutputFile(const std::string& path, const std::string& source);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Text that is ASCII already, as it stands.
    OutputFile& raw(std::string_view ascii) {
        buf_.append(ascii);
        return *this;
    }
    // Text of the system (UTF-8), in the file's code page.
    OutputFile& text(std::string_view utf8) {
        appendAnsi(buf_, utf8);
        return *this;
    }
    // A value as the runtime's Print # writes it.
    OutputFile& value(const Variant& v);
    // The line end, then a block write when the buffer is full.
    OutputFile& endl() {
        buf_.append("\r\n", 2);
        if (buf_.size() >= kBlock) flush();
        return *this;
    }
    // A whole line of ASCII text.
    OutputFile& line(std::string_view ascii) { return raw(ascii).endl(); }

    // Writes the rest and closes; errors 57/61 on a failed write.
    void close();

private:
    static constexpr std::size_t kBlock = std::size_t{1} << 20;
    void flush();

    int fd_ = -1;
    std::string buf_;
    std::string source_;
};

}  // namespace hist::tools::listing
