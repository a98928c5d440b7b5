#pragma once
// One session of the JSON host protocol: each request line gets one answer line.
// A line that cannot be read is answered with "ok": false; nothing a request holds
// ends the session.
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "frame/services/data_service.hpp"
#include "host/statement_log.hpp"
#include "host/values.hpp"

namespace hist::host {

class Session {
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The answer to one request line (without its line end); nothing for a blank line.
    std::optional<std::string> handle(std::string_view line);
    // Answers every line of `in` on `out`, flushing after each, until end of input.
    void run(std::istream& in, std::ostream& out);

    ObjectNames& names() { return names_; }
    StatementLog& statements() { return log_; }

private:
    Json dispatch(const Json& req, Json& answer);
    void doNew(const Json& req, Json& answer);
    void doCall(const Json& req, Json& answer);
    void doRelease(const Json& req, Json& answer);
    void doMembers(const Json& req, Json& answer);
    void doTemplates(const Json& req, Json& answer);
    void doExec(const Json& req, Json& answer);
    void doQuery(const Json& req, Json& answer);

    ObjectNames names_;
    StatementLog log_;
    // The data service tells each statement; the session keeps those of the call in
    // progress.
    services::StatementObservers::Subscription statements_;
};

// The answer's error object for a hist::Error.
Json errorJson(long number, const std::string& source, const std::string& description);

}  // namespace hist::host
