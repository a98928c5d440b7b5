#include "host/session.hpp"

#include "frame/record.hpp"

#include <exception>
#include <istream>
#include <ostream>

#include "ado/recordset.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"

namespace hist::host {

namespace {

std::string dump(const Json& j) { return j.dump(-1, ' ', false, Json::error_handler_t::replace); }

const std::string& textField(const Json& req, const char* key) {
    const auto& v = req.at(key);
    if (!v.is_string()) malformed(std::string("\"") + key + "\" takes a text");
    return v.get_ref<const std::string&>();
}

// Copying, writing and freeing a JSON value all recurse over its levels (the reader
// itself copies a value when the object holding it grows), so a request is refused
// while it is read once it nests deeper than this.
constexpr int kMaxRequestDepth = 256;
struct TooDeep {};

bool stopTooDeep(int depth, Json::parse_event_t event, Json&) {
    if ((event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start) &&
        depth >= kMaxRequestDepth)
        throw TooDeep{};
    return true;
}

Json eventsJson() {
    Json ev = Json::object();
    for (const auto& [name, n] : Events::counts())
        if (n != 0) ev[name] = n;
    return ev;
}
}  // namespace

Json errorJson(long number, const std::string& source, const std::string& description) {
    Json e = Json::object();
    e["number"] = number;
    e["source"] = source;
    e["description"] = description;
    return e;
}

Session::Session()
    : statements_(services::StatementObservers::subscribe([this](const services::StatementEvent& e) {
          log_.record({e.op, e.iBase, e.connection, e.composed, e.sent});
      })) {}
Session::~Session() = default;

std::optional<std::string> Session::handle(std::string_view line) {
    if (line.find_first_not_of(" \t\r\n") == std::string_view::npos) return std::nullopt;
    Json answer = Json::object();
    answer["id"] = nullptr;
    answer["ok"] = false;
    Json req;
    try {
        req = Json::parse(line, stopTooDeep);
    } catch (const TooDeep&) {
        answer["error"] = errorJson(err::InvalidCall, err::SrcHost,
                                    "Malformed request: it nests deeper than " + std::to_string(kMaxRequestDepth) +
                                        " levels of lists and objects");
        return dump(answer);
    } catch (const Json::parse_error& e) {
        answer["error"] = errorJson(err::InvalidCall, err::SrcHost,
                                    std::string("Malformed request: not valid JSON (") + e.what() + ")");
        return dump(answer);
    } catch (const Json::exception&) {
        // The reader's only other refusal: a number beyond the range of a double (1e309).
        answer["error"] = errorJson(err::InvalidCall, err::SrcHost,
                                    "Malformed request: not valid JSON (a number is too large to be read)");
        return dump(answer);
    }
    if (!req.is_object()) {
        answer["error"] = errorJson(err::InvalidCall, err::SrcHost, "Malformed request: a request is a JSON object");
        return dump(answer);
    }
    if (auto id = req.find("id"); id != req.end()) answer["id"] = *id;
    try {
        dispatch(req, answer);
        answer["ok"] = true;
    } catch (const Error& e) {
        answer["error"] = errorJson(e.number(), e.source(), e.description());
    } catch (const std::exception& e) {
        answer["error"] = errorJson(err::InternalError, err::SrcHost, std::string("Internal error: ") + e.what());
    }
    return dump(answer);
}

void Session::run(std::istream& in, std::ostream& out) {
    std::string line;
    while (std::getline(in, line)) {
        if (auto answer = handle(line)) out << *answer << '\n' << std::flush;
    }
}

Json Session::dispatch(const Json& req, Json& answer) {
    static constexpr const char* ops[] = {"new", "call", "release", "members", "templates", "exec", "query"};
    const char* op = nullptr;
    for (const char* o : ops)
        if (req.contains(o)) {
            if (op) malformed(std::string("one request names one operation; found \"") + op + "\" and \"" + o + "\"");
            op = o;
        }
    if (!op) malformed("no operation (new, call, release, members, templates, exec or query)");
    const std::string_view which = op;
    if (which == "new") doNew(req, answer);
    else if (which == "call") doCall(req, answer);
    else if (which == "release") doRelease(req, answer);
    else if (which == "members") doMembers(req, answer);
    else if (which == "templates") doTemplates(req, answer);
    else if (which == "exec") doExec(req, answer);
    else doQuery(req, answer);
    return answer;
}

void Session::doNew(const Json& req, Json& answer) {
    const std::string& cls = textField(req, "new");
    ObjectPtr obj = Registry::global().create(cls);
    if (req.contains("as")) {
        names_.bind(textField(req, "as"), obj);
    } else {
        answer["result"] = Json{{"ref", names_.nameOf(obj)}};
    }
}

void Session::doCall(const Json& req, Json& answer) {
    const std::string& target = textField(req, "call");
    const auto dot = target.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == target.size() ||
        target.find('.', dot + 1) != std::string::npos)
        malformed("\"call\" names one object and one member, as \"o.Member\"");
    const std::string name = target.substr(0, dot);
    const std::string member = target.substr(dot + 1);
    ObjectPtr obj = names_.find(name);
    if (!obj) raise(err::ObjectRequired, err::SrcHost, "Object required: no object is named \"" + name + "\"");

    Args args;
    if (auto a = req.find("args"); a != req.end()) {
        if (!a->is_array()) malformed("\"args\" is a list of values");
        for (const auto& v : *a) args.push_back(decodeValue(v, names_));
    }
    const bool isSet = req.contains("set");
    Variant value;
    if (isSet) value = decodeValue(req.at("set"), names_);

    log_.begin();
    Events::resetCounts();
    const Member* m = findMember(*obj, member);
    Variant result;
    std::exception_ptr failure;
    try {
        if (isSet) let(obj, member, args, value);
        else result = call(obj, member, args);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!isSet && !failure && m && (m->returnsValue || args.size() > m->params.size()))
        answer["result"] = encodeValue(result, names_);
    if (!isSet) {
        Json out = Json::array();
        for (const auto& v : args) out.push_back(encodeValue(v, names_));
        answer["args"] = out;
    }
    answer["sql"] = log_.toJson(names_);
    answer["events"] = eventsJson();
    if (failure) std::rethrow_exception(failure);
}

void Session::doRelease(const Json& req, Json&) {
    const std::string& name = textField(req, "release");
    if (!names_.release(name))
        raise(err::ObjectRequired, err::SrcHost, "Object required: no object is named \"" + name + "\"");
}

void Session::doMembers(const Json& req, Json& answer) {
    const std::string& cls = textField(req, "members");
    const ClassInfo* ci = Registry::global().find(cls);
    if (!ci) raise(err::CannotCreateObject, err::SrcHost, "Unknown class \"" + cls + "\"");
    answer["members"] = ci->listedNames();
}

void Session::doTemplates(const Json& req, Json& answer) {
    const std::string& cls = textField(req, "templates");
    const ClassInfo* ci = Registry::global().find(cls);
    if (!ci) raise(err::CannotCreateObject, err::SrcHost, "Unknown class \"" + cls + "\"");
    const auto record = std::dynamic_pointer_cast<frame::RecordClass>(ci->create());
    if (!record) raise(err::InvalidCall, err::SrcHost, cls + " is not a record class: it has no statement templates");
    Json list = Json::array();
    for (const auto& [name, text] : record->variants().templates()) list.push_back({{"name", name}, {"text", text}});
    answer["templates"] = std::move(list);
}

namespace {
int16_t baseOf(const Json& req) {
    auto b = req.find("base");
    if (b == req.end()) return 4;
    if (!b->is_number_integer() || b->get<int64_t>() < -32768 || b->get<int64_t>() > 32767)
        malformed("\"base\" takes a whole number (the iBase)");
    return static_cast<int16_t>(b->get<int64_t>());
}
}  // namespace

// A statement run through the data service on a connection of its own.
void Session::doExec(const Json& req, Json& answer) {
    const std::string& text = textField(req, "exec");
    const int16_t base = baseOf(req);
    log_.begin();
    std::exception_ptr failure;
    try {
        services::ConnPtr cn;
        services::ClsServicioDatos().execute(base, text, cn);
    } catch (...) {
        failure = std::current_exception();
    }
    answer["sql"] = log_.toJson(names_);
    if (failure) std::rethrow_exception(failure);
}

// A selection opened through the data service; every row, every field.
void Session::doQuery(const Json& req, Json& answer) {
    Variant text(textField(req, "query"));
    const int16_t base = baseOf(req);
    log_.begin();
    services::RsPtr rs;
    services::ConnPtr cn;
    Json columns = Json::array(), rows = Json::array();
    std::exception_ptr failure;
    try {
        services::ClsServicioDatos().AbrirRs(base, text, rs, cn);
        auto fields = rs->Fields();
        const long n = fields->Count();
        std::vector<std::shared_ptr<ado::Field>> f;
        for (long i = 0; i < n; ++i) {
            f.push_back(fields->Item(Variant(static_cast<int32_t>(i))));
            columns.push_back(f.back()->Name());
        }
        if (!(rs->Bof() && rs->Eof())) {
            for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
                Json row = Json::array();
                for (const auto& field : f) row.push_back(encodeValue(field->Value(), names_));
                rows.push_back(std::move(row));
            }
        }
    } catch (...) {
        failure = std::current_exception();
    }
    answer["sql"] = log_.toJson(names_);
    if (failure) std::rethrow_exception(failure);
    answer["columns"] = columns;
    answer["rows"] = rows;
}

}  // namespace hist::host
