#include "backends/audit.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/clock.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::backend {

namespace {

constexpr const char* kSource = "historicos.audit";

nlohmann::json valueOf(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty:
        case VarType::Null: return nullptr;
        case VarType::Boolean: return v.asBool();
        case VarType::Integer: return v.asInteger();
        case VarType::Long: return v.asLong();
        case VarType::Double: return v.asDouble();
        case VarType::Date: return rt::isoText(v.asDate().serial);
        default: return rt::CStr(v);
    }
}

// The log file, opened for appending: each write lands at the end even when
// several processes write one log.
class LogFile {
public:
    explicit LogFile(const std::string& path) : path_(path) {
        fd_ = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
        if (fd_ < 0) fail(errno);
    }
    ~LogFile() {
        if (fd_ >= 0) ::close(fd_);
    }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    void append(const std::string& lines) {
        std::size_t done = 0;
        while (done < lines.size()) {
            const ssize_t n = ::write(fd_, lines.data() + done, lines.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) fail(errno);
            done += static_cast<std::size_t>(n);
        }
    }

private:
    [[noreturn]] void fail(int e) const {
        raise(e == ENOSPC ? err::DiskFull : err::PathFileAccess, kSource,
              "The audit log " + path_ + " cannot be written: " + std::strerror(e));
    }
    std::string path_;
    int fd_ = -1;
};

class AuditedSession final : public Session {
public:
    AuditedSession(std::unique_ptr<Session> inner, const std::string& path)
        : inner_(std::move(inner)), log_(path) {}

    void query(std::string_view sent, RowSink& sink) override { inner_->query(sent, sink); }

    long long execute(std::string_view sent) override {
        const long long n = inner_->execute(sent);
        record(sent, nullptr);
        return n;
    }

    long long execute(std::string_view sent, std::span<const Variant> params,
                      std::span<const FieldType> types) override {
        const long long n = inner_->execute(sent, params, types);
        nlohmann::json values = nlohmann::json::array();
        for (const Variant& v : params) values.push_back(valueOf(v));
        record(sent, &values);
        return n;
    }

    long long lastInsertRowId() override { return inner_->lastInsertRowId(); }

    int begin() override {
        const int level = inner_->begin();
        marks_.push_back(pending_.size());
        return level;
    }
    void commit() override {
        inner_->commit();
        if (!marks_.empty()) marks_.pop_back();
        if (marks_.empty()) flush();
    }
    void rollback() override {
        inner_->rollback();
        if (!marks_.empty()) {
            pending_.resize(marks_.back());
            marks_.pop_back();
        }
    }
    int depth() const override { return inner_->depth(); }
    std::vector<std::string> integrityCheck() override { return inner_->integrityCheck(); }
    sql::Dialect dialect() const override { return inner_->dialect(); }

private:
    void record(std::string_view sent, const nlohmann::json* values) {
        const CallSite& call = outermostCall();
        nlohmann::ordered_json e;
        e["time"] = rt::isoText(Clock::now());
        e["user"] = CurrentUser::name();
        e["class"] = call.className;
        e["member"] = call.member;
        e["text"] = std::string(sent);
        if (values) e["values"] = *values;
        pending_.push_back(e.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
        if (marks_.empty()) flush();
    }

    void flush() {
        std::string lines;
        for (const std::string& l : pending_) lines += l;
        pending_.clear();
        if (!lines.empty()) log_.append(lines);
    }

    std::unique_ptr<Session> inner_;
    LogFile log_;
    std::vector<std::string> pending_;   // entries not yet written
    std::vector<std::size_t> marks_;     // pending_.size() at each open level
};

}  // namespace

std::unique_ptr<Session> auditedSession(std::unique_ptr<Session> inner, const std::string& path) {
    return std::make_unique<AuditedSession>(std::move(inner), path);
}

}  // namespace hist::backend
