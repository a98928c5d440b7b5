#pragma once
// A scratch folder for one test: made fresh on construction, named by the process
// and a counter so that parallel test programs and repeated uses never meet, and
// removed with everything in it at the end. Also the two file helpers tests use on it.
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace hist::testing {

class Scratch {
public:
    explicit Scratch(std::string_view tag = "hist") {
        static std::atomic<unsigned> counter{0};
        std::string tmpl = (std::filesystem::temp_directory_path() /
                            (std::string(tag) + "-" + std::to_string(::getpid()) + "-" +
                             std::to_string(counter++) + "-XXXXXX"))
                               .string();
        if (!::mkdtemp(tmpl.data())) throw std::runtime_error("cannot make a scratch folder " + tmpl);
        path_ = tmpl;
    }
    ~Scratch() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string str() const { return path_.string(); }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline void writeFile(const std::filesystem::path& p, const std::string& text) {
    std::filesystem::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << text;
}

inline std::string readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

}  // namespace hist::testing
