#include "host/statement_log.hpp"

#include <ostream>

namespace hist::host {

void StatementLog::record(StatementRecord r) {
    if (trace_) *trace_ << r.op << " [" << r.base << "] " << r.sent << std::endl;
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
