#include "host/statement_log.hpp"

#include <ostream>

namespace hist::host {

void writeTrace(std::ostream& out, const std::string& op, int base, const std::string& composed,
                const std::string& sent) {
    out << "[" << op << " " << base << "] " << composed << "\n";
    if (sent.empty()) out << "    refused\n";
    else if (sent != composed) out << "    sent: " << sent << "\n";
    out.flush();
}

void StatementLog::record(StatementRecord r) {
    if (trace_) writeTrace(*trace_, r.op, r.base, r.text, r.sent);
    records_.push_back(std::move(r));
}

Json StatementLog::toJson(ObjectNames& names) const {
    Json list = Json::array();
    for (const auto& r : records_) {
        Json e = Json::object();
        e["op"] = r.op;
        e["base"] = r.base;
        e["conn"] = r.conn ? Json(names.nameOf(r.conn)) : Json(nullptr);
        e["text"] = r.text;
        e["sent"] = r.sent;
        list.push_back(std::move(e));
    }
    return list;
}

}  // namespace hist::host
