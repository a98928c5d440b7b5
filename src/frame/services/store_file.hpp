#pragma once
// Durable small files for the per-user stores: a whole-file replace that a crash
// cannot leave half-written (temporary file, fsync, rename, fsync of the folder),
// and an exclusive lock that serialises read-modify-write across processes.
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.hpp"

namespace hist::services {

// The file's bytes, or nothing when it does not exist. Raises hist::Error (5) when
// it exists but cannot be read; `what` names the store in the message.
std::optional<std::string> readStoreFile(const std::filesystem::path& file, std::string_view what);

// Replaces the file with `text`: the old contents or the new, never a mixture.
// Creates the folder when missing. Call it holding the file's StoreLock: the
// temporary copy it writes (`<file>.tmp.<pid>.<n>`) is only safe from the lock's
// clean-up while the lock is held.
void replaceStoreFile(const std::filesystem::path& file, std::string_view text, std::string_view what);

// An exclusive advisory lock on `<file>.lock`, held for the object's life.
// Taking it waits at most waitLimit() for another holder to let go, then raises
// hist::Error (5) naming the store. Once taken, it removes the temporary copies
// of the file that a writer killed midway left behind: every writer writes its
// copy under this lock, so none of them is in use.
class StoreLock {
public:
    StoreLock(const std::filesystem::path& file, std::string_view what);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

    // How long taking a lock waits; 5 seconds unless set (tests shorten it).
    static std::chrono::milliseconds waitLimit();
    static void setWaitLimit(std::chrono::milliseconds limit);

private:
    int fd_ = -1;
};

// The identity of names that ignore case (the library's one folding, platform/text.hpp).
inline std::string foldKey(std::string_view t) { return text::fold(t); }

// The folder of one user's stores under a settings folder:
// <settingsDir>/historicos/usuarios/<user>, the user's name folded and made safe
// for a file name.
std::filesystem::path userStoreDir(const std::string& settingsDir, const std::string& user);

inline constexpr const char* SrcSettings = "historicos.settings";

}  // namespace hist::services
