#pragma once
// Runs `historicos host` as a child process over two pipes, one request line in and
// one answer line out at a time, with a temporary home for its configuration and
// data so that runs leave nothing behind.
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/scratch.hpp"

extern char** environ;

namespace hist::testing {

class HostProcess {
public:
    explicit HostProcess(std::vector<std::string> options) {
        home_ = scratch_.str();

        std::vector<std::string> argv{HISTORICOS_EXE, "host", "--app-path", home_ + "/app", "--work-dir",
                                      home_ + "/work"};
        argv.insert(argv.end(), options.begin(), options.end());
        std::vector<std::string> env;
        for (char** e = environ; *e; ++e) {
            std::string s(*e);
            if (s.rfind("XDG_", 0) == 0 || s.rfind("HISTORICOS_", 0) == 0 || s.rfind("HOME=", 0) == 0) continue;
            env.push_back(s);
        }
        env.push_back("HOME=" + home_);
        env.push_back("XDG_CONFIG_HOME=" + home_ + "/config");
        env.push_back("XDG_DATA_HOME=" + home_ + "/data");

        int in[2], out[2];
        if (pipe(in) != 0 || pipe(out) != 0) throw std::runtime_error("pipe failed");
        pid_ = fork();
        if (pid_ < 0) throw std::runtime_error("fork failed");
        if (pid_ == 0) {
            dup2(in[0], 0);
            dup2(out[1], 1);
            close(in[0]);
            close(in[1]);
            close(out[0]);
            close(out[1]);
            std::vector<char*> a, e;
            for (auto& s : argv) a.push_back(s.data());
            a.push_back(nullptr);
            for (auto& s : env) e.push_back(s.data());
            e.push_back(nullptr);
            execve(a[0], a.data(), e.data());
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        toChild_ = in[1];
        fromChild_ = out[0];
        signal(SIGPIPE, SIG_IGN);
    }

    ~HostProcess() {
        closeInput();
        if (fromChild_ >= 0) close(fromChild_);
        if (pid_ > 0) {
            int status = 0;
            waitpid(pid_, &status, 0);
        }
    }

    // Sends one line and waits (10 s at most) for one answer line; empty when none came.
    std::string ask(const std::string& line) {
        send(line);
        return readLine();
    }

    void send(const std::string& line) {
        std::string l = line + "\n";
        if (write(toChild_, l.data(), l.size()) != static_cast<ssize_t>(l.size()))
            throw std::runtime_error("write to host failed");
    }

    std::string readLine() {
        for (;;) {
            if (auto nl = buffer_.find('\n'); nl != std::string::npos) {
                std::string line = buffer_.substr(0, nl);
                buffer_.erase(0, nl + 1);
                return line;
            }
            pollfd p{fromChild_, POLLIN, 0};
            if (poll(&p, 1, 10000) <= 0) return {};
            char buf[4096];
            ssize_t n = read(fromChild_, buf, sizeof buf);
            if (n <= 0) return {};
            buffer_.append(buf, static_cast<size_t>(n));
        }
    }

    void closeInput() {
        if (toChild_ >= 0) close(toChild_);
        toChild_ = -1;
    }

    // Closes the input and returns the exit status once the host ends.
    int wait() {
        closeInput();
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string& home() const { return home_; }

private:
    Scratch scratch_{"historicos-host"};
    std::string home_;
    pid_t pid_ = -1;
    int toChild_ = -1, fromChild_ = -1;
    std::string buffer_;
};

}  // namespace hist::testing
