#include "frame/services/store_file.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>


#include "platform/error.hpp"

namespace hist::services {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(std::string_view what, const fs::path& file, const std::string& problem) {
    throw Error(err::InvalidCall, SrcSettings, std::string(what) + " " + file.string() + ": " + problem);
}

std::string sysText(int e) { return std::strerror(e); }

void makeFolder(const fs::path& dir, std::string_view what) {
    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec) fail(what, dir, "cannot create the folder (" + ec.message() + "); check its permissions");
}

}  // namespace

std::optional<std::string> readStoreFile(const fs::path& file, std::string_view what) {
    int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT) return std::nullopt;
        fail(what, file, "cannot be read (" + sysText(errno) + "); check its permissions");
    }
    std::string text;
    char buf[8192];
    for (;;) {
        ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0) {
            if (errno == EINTR) continue;
            int e = errno;
            ::close(fd);
            fail(what, file, "cannot be read (" + sysText(e) + ")");
        }
        if (n == 0) break;
        text.append(buf, static_cast<size_t>(n));
    }
    ::close(fd);
    return text;
}

void replaceStoreFile(const fs::path& file, std::string_view text, std::string_view what) {
    static std::atomic<unsigned> counter{0};
    fs::path dir = file.parent_path();
    makeFolder(dir, what);
    fs::path tmp = file;
    tmp += ".tmp." + std::to_string(::getpid()) + "." + std::to_string(counter++);
    int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) fail(what, file, "cannot be written (" + sysText(errno) + "); check the folder's permissions");
    auto abandon = [&](int e) {
        ::close(fd);
        ::unlink(tmp.c_str());
        fail(what, file, "cannot be written (" + sysText(e) + "); check free space and permissions");
    };
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            abandon(errno);
        }
        done += static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0) abandon(errno);
    if (::close(fd) != 0) {
        int e = errno;
        ::unlink(tmp.c_str());
        fail(what, file, "cannot be written (" + sysText(e) + ")");
    }
    if (::rename(tmp.c_str(), file.c_str()) != 0) {
        int e = errno;
        ::unlink(tmp.c_str());
        fail(what, file, "cannot be replaced (" + sysText(e) + ")");
    }
    // The rename itself must reach the disk too.
    int dfd = ::open(dir.empty() ? "." : dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0) {
        ::fsync(dfd);
        ::close(dfd);
    }
}

namespace {

std::atomic<long long> gWaitLimitMs{5000};

// Removes `<file>.tmp.*`, the copies of writers that died before their rename.
// Best effort: a copy that cannot be removed is harmless, only untidy.
void clearStaleCopies(const fs::path& file) {
    const std::string prefix = file.filename().string() + ".tmp.";
    std::error_code ec;
    fs::directory_iterator it(file.parent_path().empty() ? fs::path(".") : file.parent_path(), ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (name.compare(0, prefix.size(), prefix) == 0) {
            std::error_code ignored;
            fs::remove(it->path(), ignored);
        }
    }
}

}  // namespace

std::chrono::milliseconds StoreLock::waitLimit() { return std::chrono::milliseconds(gWaitLimitMs.load()); }
void StoreLock::setWaitLimit(std::chrono::milliseconds limit) { gWaitLimitMs.store(limit.count()); }

StoreLock::StoreLock(const fs::path& file, std::string_view what) {
    makeFolder(file.parent_path(), what);
    fs::path lock = file;
    lock += ".lock";
    fd_ = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0) fail(what, lock, "cannot be opened (" + sysText(errno) + "); check the folder's permissions");
    // Polls a non-blocking lock so that a holder that never lets go (a program
    // stopped in a debugger, a hung process) makes this writer fail, not hang.
    const auto limit = waitLimit();
    const auto deadline = std::chrono::steady_clock::now() + limit;
    auto pause = std::chrono::milliseconds(1);
    while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        const int e = errno;
        if (e == EINTR) continue;
        if (e != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) {
            ::close(fd_);
            fd_ = -1;
            if (e != EWOULDBLOCK) fail(what, lock, "cannot be locked (" + sysText(e) + ")");
            fail(what, file,
                 "is busy: another program kept it locked for more than " + std::to_string(limit.count()) +
                     " ms; try again once that program is done");
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::milliseconds(25));
    }
    clearStaleCopies(file);
}

StoreLock::~StoreLock() {
    if (fd_ >= 0) {
        ::flock(fd_, LOCK_UN);
        ::close(fd_);
    }
}

fs::path userStoreDir(const std::string& settingsDir, const std::string& user) {
    // The folded name, with every byte outside [a-z0-9._-] written %XX, so that a
    // name can never reach outside its folder nor collide with another.
    std::string folded = foldKey(user);
    std::string safe;
    static const char* hex = "0123456789ABCDEF";
    for (unsigned char ch : folded) {
        bool plain = (ch >= 'a' && ch <= 'z') || (ch >= '0' && ch <= '9') || ch == '_' || ch == '-' ||
                     (ch == '.' && !safe.empty());
        if (plain) {
            safe += static_cast<char>(ch);
        } else {
            safe += '%';
            safe += hex[ch >> 4];
            safe += hex[ch & 15];
        }
    }
    if (safe.empty()) safe = "%";
    return fs::path(settingsDir) / "historicos" / "usuarios" / safe;
}

}  // namespace hist::services
