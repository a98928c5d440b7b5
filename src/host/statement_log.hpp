#pragma once
// The statements one host call sent, in order, as the answer's `sql` lists them.
// The data service tells its observers each statement (operation, iBase, connection,
// the text as composed and as sent); the host's session records them here for the
// call in progress, and with --trace shows each one on standard error.
#include <iosfwd>
#include <string>
#include <vector>

#include "host/values.hpp"
#include "platform/object.hpp"

namespace hist::host {

struct StatementRecord {
    std::string op;    // "AbrirRs", "EjecutarSql", "UpdateBatch", "Requery"
    int base = 0;      // iBase
    ObjectPtr conn;    // the connection that ran it
    std::string text;  // as the member composed it
    std::string sent;  // as the engine received it
};

// The one --trace form of a statement: "[<op> <iBase>] <text as composed>", and below it
// "    sent: <text as the engine received it>" when the translation changed it (a
// statement refused before the engine shows "    refused").
void writeTrace(std::ostream& out, const std::string& op, int base, const std::string& composed,
                const std::string& sent);

class StatementLog {
public:
    void begin() { records_.clear(); }
    void record(StatementRecord r);
    const std::vector<StatementRecord>& records() const { return records_; }
    // The answer's `sql`: {"op","base","conn","text","sent"} per statement.
    Json toJson(ObjectNames& names) const;

    void setTrace(std::ostream* out) { trace_ = out; }

private:
    std::vector<StatementRecord> records_;
    std::ostream* trace_ = nullptr;
};

}  // namespace hist::host
