#pragma once
// Durable small files for the per-user stores: a whole-file replace that a crash
// cannot leave half-written (temporary file, fsync, rename, fsync of the folder),
// and an exclusive lock that serialises read-modify-write across processes.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace hist::services {

// The file's bytes, or nothing when it does not exist. Raises hist::Error (5) when
// it exists but cannot be read; `what` names the store in the message.
std::optional<std::string> readStoreFile(const std::filesystem::path& file, std::string_view what);

// Replaces the file with `text`: the old contents or the new, never a mixture.
// Creates the folder when missing.
void replaceStoreFile(const std::filesystem::path& file, std::string_view text, std::string_view what);

// An exclusive advisory lock on `<file>.lock`, held for the object's life.
class StoreLock {
public:
    StoreLock(const std::filesystem::path& file, std::string_view what);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

private:
    int fd_ = -1;
};

// Unicode case folding of a UTF-8 text: the identity of names that ignore case.
std::string foldKey(std::string_view text);

// The folder of one user's stores under a settings folder:
// <settingsDir>/historicos/usuarios/<user>, the user's name folded and made safe
// for a file name.
std::filesystem::path userStoreDir(const std::string& settingsDir, const std::string& user);

inline constexpr const char* SrcSettings = "historicos.settings";

}  // namespace hist::services
