#include "tools/listing_text.hpp"

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <unistd.h>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "platform/text.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::tools::listing {

namespace {

// The characters Windows-1252 places in 0x80..0x9F, by byte; 0 where the code page
// leaves the position unassigned (it then stands for the C1 control of that number).
constexpr char16_t kHigh[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

char ansiOf(UChar32 c) {
    if (c < 0) return '?';
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    if (c <= 0x9F) return kHigh[c - 0x80] == 0 ? static_cast<char>(c) : '?';
    for (int i = 0; i < 32; ++i)
        if (kHigh[i] == c) return static_cast<char>(0x80 + i);
    return '?';
}

}  // namespace

void appendAnsi(std::string& out, std::string_view utf8) {
    const auto* p = reinterpret_cast<const uint8_t*>(utf8.data());
    const int32_t n = static_cast<int32_t>(utf8.size());
    int32_t i = 0;
    while (i < n) {
        // Runs of ASCII go in as they are.
        int32_t j = i;
        while (j < n && p[j] < 0x80) ++j;
        if (j > i) {
            out.append(utf8.data() + i, static_cast<std::size_t>(j - i));
            i = j;
            if (i == n) break;
        }
        UChar32 c;
        U8_NEXT(p, i, n, c);
        out.push_back(ansiOf(c));
    }
}

std::string upperCase(std::string_view utf8) {
    return text::mapCodePoints(utf8, [](int32_t c) -> int32_t { return u_toupper(c); });
}

OutputFile::OutputFile(const std::string& path, const std::string& source) : source_(source) {
    fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ < 0) {
        const int e = errno;
        raise(e == ENOENT || e == ENOTDIR ? err::PathNotFound : err::PathFileAccess, source_,
              std::string(e == ENOENT || e == ENOTDIR ? "Path not found" : "Path/File access error") + " (" +
                  path + ")");
    }
    buf_.reserve(kBlock + (kBlock >> 2));
}

OutputFile::~OutputFile() {
    if (fd_ < 0) return;
    try {
        flush();
    } catch (...) {
        // The member is failing already; its error is the one that travels.
    }
    ::close(fd_);
}

OutputFile& OutputFile::value(const Variant& v) {
    if (v.isString())
        appendAnsi(buf_, v.asString());
    else
        appendAnsi(buf_, rt::printText(v));
    return *this;
}

void OutputFile::flush() {
    std::size_t done = 0;
    while (done < buf_.size()) {
        const ssize_t w = ::write(fd_, buf_.data() + done, buf_.size() - done);
        if (w < 0) {
            if (errno == EINTR) continue;
            const int e = errno;
            buf_.erase(0, done);
            raise(e == ENOSPC ? err::DiskFull : err::DeviceIo, source_,
                  e == ENOSPC ? "Disk full" : "Device I/O error");
        }
        done += static_cast<std::size_t>(w);
    }
    buf_.clear();
}

void OutputFile::close() {
    flush();
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) raise(err::DeviceIo, source_, "Device I/O error");
}

}  // namespace hist::tools::listing
