#include "host/admin.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "ado/recordset.hpp"
#include "frame/record.hpp"
#include "frame/services/config.hpp"
#include "frame/services/helpers.hpp"
#include "host/class_calls.hpp"
#include "host/grid_columns.hpp"
#include "host/registration.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/progress.hpp"
#include "platform/runtime.hpp"
#include "platform/text.hpp"
#include "tools/tool_members.hpp"

namespace hist::host {

namespace {

// ------------------------------------------------------------------ classes

const char* typeText(ParamType t) {
    switch (t) {
        case PT::String: return "String";
        case PT::Boolean: return "Boolean";
        case PT::Integer: return "Integer";
        case PT::Long: return "Long";
        case PT::Double: return "Double";
        case PT::Date: return "Date";
        case PT::Object: return "Object";
        case PT::Variant: break;
    }
    return "";
}

// A member as a form's developer writes its call: optional arguments in brackets,
// by-reference ones marked, types after "As".
std::string signature(const Member& m) {
    std::string s = m.name;
    if (m.kind == MemberKind::Property) return s + (m.let ? " (property)" : " (read-only property)");
    s += "(";
    for (std::size_t i = 0; i < m.params.size(); ++i) {
        const Param& p = m.params[i];
        std::string one = std::string(p.byRef ? "ByRef " : "") + p.name;
        if (const char* t = typeText(p.type); *t) one += std::string(" As ") + t;
        s += (i ? ", " : "") + (p.optional ? "[" + one + "]" : one);
    }
    return s + ")";
}

struct ClassFacts {
    std::string table;
    std::vector<std::string> keywords;  // beyond "todos"
    bool record = false;
};

ClassFacts factsOf(const ClassInfo& info) {
    ClassFacts f;
    if (!info.creatable()) return f;
    const ObjectPtr obj = info.create();
    if (const auto* cls = dynamic_cast<const frame::RecordClass*>(obj.get())) {
        f.record = true;
        f.table = std::string(cls->variants().table);
        for (const auto& sel : cls->variants().selections) f.keywords.emplace_back(sel.keyword);
    }
    return f;
}

std::string joined(const std::vector<std::string>& items) {
    std::string s;
    for (const auto& i : items) s += (s.empty() ? "" : ", ") + ("\"" + i + "\"");
    return s;
}

std::string members(const ClassInfo& info) {
    const std::size_t n = info.listedNames().size();
    return std::to_string(n) + (n == 1 ? " member" : " members");
}

// ------------------------------------------------------------------ list

// The class's IniciaRs called by its own argument names, whatever their order and
// number: the connection unset, the keyword, the id and the date where it takes them.
void openSelection(const ObjectPtr& obj, const ListOptions& o) {
    std::map<std::string, Variant> named{{"sSelecSql", Variant(o.keyword)}};
    if (o.id) named["id"] = Variant(*o.id);
    if (o.date) named["dtFecha"] = Variant(DateValue{rt::CDate(Variant(*o.date))});
    invoke(obj, "IniciaRs", std::move(named));
}

// A cell as a person reads it: the runtime's text of the value, Null as nothing.
std::string cellText(const Variant& v) { return v.isNull() ? std::string() : rt::CStr(v); }

std::vector<std::string> fieldNames(ado::Recordset& rs) {
    std::vector<std::string> names;
    auto fields = rs.Fields();
    for (long i = 0; i < fields->Count(); ++i) names.push_back(fields->Item(Variant(static_cast<int32_t>(i)))->Name());
    return names;
}

template <class Row>
void eachRow(ado::Recordset& rs, ProgressLine& progress, Row row) {
    if (rs.Bof() && rs.Eof()) return;
    rs.MoveFirst();
    const auto names = fieldNames(rs);
    const auto total = static_cast<std::size_t>(std::max<long long>(rs.RecordCount(), 0));
    std::vector<Variant> values(names.size());
    std::size_t done = 0;
    for (; !rs.Eof(); rs.MoveNext()) {
        for (std::size_t i = 0; i < names.size(); ++i) values[i] = rs.value(names[i]);
        row(values);
        progress.update(++done, total);
    }
}

// Display width of UTF-8 text: one column per code point.
std::size_t widthOf(const std::string& s) {
    return static_cast<std::size_t>(std::count_if(s.begin(), s.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

void writeTable(ado::Recordset& rs, std::ostream& out, ProgressLine& progress) {
    const auto names = fieldNames(rs);
    std::vector<std::vector<std::string>> rows;
    std::vector<std::size_t> width(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) width[i] = widthOf(names[i]);
    eachRow(rs, progress, [&](const std::vector<Variant>& values) {
        auto& r = rows.emplace_back();
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::string t = cellText(values[i]);
            std::replace_if(t.begin(), t.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
            width[i] = std::max(width[i], widthOf(t));
            r.push_back(std::move(t));
        }
    });
    auto line = [&](const std::vector<std::string>& cells) {
        std::string s;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            s += cells[i];
            if (i + 1 < cells.size()) s += std::string(width[i] - widthOf(cells[i]) + 2, ' ');
        }
        out << s << "\n";
    };
    line(names);
    std::vector<std::string> rule;
    for (std::size_t w : width) rule.emplace_back(w, '-');
    line(rule);
    for (const auto& r : rows) line(r);
    out << "(" << rows.size() << " row" << (rows.size() == 1 ? "" : "s") << ")\n";
}

// RFC 4180: CRLF between records, a field quoted when it holds a comma, a quote or a
// line break, quotes doubled inside.
std::string csvField(const std::string& s) {
    if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
    std::string q = "\"";
    for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
}

void writeCsv(ado::Recordset& rs, std::ostream& out, ProgressLine& progress) {
    auto record = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) out << (i ? "," : "") << csvField(cells[i]);
        out << "\r\n";
    };
    record(fieldNames(rs));
    eachRow(rs, progress, [&](const std::vector<Variant>& values) {
        std::vector<std::string> cells;
        for (const auto& v : values) cells.push_back(cellText(v));
        record(cells);
    });
}

// JSON lines: one object per row, numbers as numbers, dates in ISO form, Null as null.
nlohmann::json jsonValue(const Variant& v) {
    switch (v.type()) {
        case VarType::Null:
        case VarType::Empty: return nullptr;
        case VarType::Boolean: return v.asBool();
        case VarType::Integer: return v.asInteger();
        case VarType::Long: return v.asLong();
        case VarType::Double: return v.asDouble();
        case VarType::Date: return rt::isoText(v.asDate().serial);
        default: return rt::CStr(v);
    }
}

void writeJson(ado::Recordset& rs, std::ostream& out, ProgressLine& progress) {
    const auto names = fieldNames(rs);
    eachRow(rs, progress, [&](const std::vector<Variant>& values) {
        nlohmann::ordered_json row = nlohmann::ordered_json::object();
        for (std::size_t i = 0; i < names.size(); ++i) row[names[i]] = jsonValue(values[i]);
        out << row.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
    });
}

// The class's own listing file, as its member wrote it, copied byte for byte.
void copyListing(const std::string& path, std::ostream& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) raise(53, "historicos.list", "File not found: " + path);
    out << in.rdbuf();
}

void writeListing(frame::RecordClass& cls, const ListOptions& o, std::ostream& out) {
    const ClassInfo* info = Registry::global().classOf(cls);
    // The selection as this command filtered and sorted it, not a clone in the user's
    // saved order with the saved filter.
    std::string key = o.keyword;
    bool doClone = false;
    bool filtered = false;
    std::string member = o.format == "html" ? "ToHtmlGrid" : "ToTxt";
    if (!info || !info->find(member)) raise(438, "historicos.list", o.className + " has no " + member);
    if (o.format == "html") {
        Variant grid(std::static_pointer_cast<Object>(columnsOfFields(*cls.primaryRecordset())));
        tools::toHtmlGrid(cls, grid, doClone, key, filtered);
    } else {
        tools::toTxt(cls, doClone, key, filtered);
    }
    const std::string table = std::string(cls.variants().table);
    copyListing(services::ClsRutasUsuario::shared()->GetRutaFichero(table + (o.format == "html" ? ".htm" : ".txt")),
                out);
}

}  // namespace

int classesCommand(const ClassesOptions& o, std::ostream& out, std::ostream& err) {
    try {
        registerAllClasses();
        Registry& r = Registry::global();
        if (o.className) {
            const ClassInfo* info = r.find(*o.className);
            if (!info) raise(429, "historicos.classes", "No class is named \"" + *o.className + "\"");
            const ClassFacts f = factsOf(*info);
            out << info->name() << "\n";
            if (f.record) {
                out << "  table     " << f.table << "\n";
                out << "  keywords  " << joined(f.keywords) << (f.keywords.empty() ? "" : ", ")
                    << "any other: \"todos\"\n";
            }
            out << "  members\n";
            for (const Member& m : info->members())
                if (m.listed) out << "    " << signature(m) << "\n";
            return 0;
        }
        std::vector<std::string> names = r.classNames();
        std::sort(names.begin(), names.end());
        out << "Record classes\n";
        for (const auto& n : names) {
            const ClassInfo* info = r.find(n);
            const ClassFacts f = factsOf(*info);
            if (!f.record) continue;
            out << "  " << n << "  " << f.table << "  " << members(*info)
                << (f.keywords.empty() ? "" : "  keywords " + joined(f.keywords)) << "\n";
        }
        out << "Other classes\n";
        for (const auto& n : names) {
            const ClassInfo* info = r.find(n);
            if (!factsOf(*info).record) out << "  " << n << "  " << members(*info) << "\n";
        }
        return 0;
    } catch (const Error& e) {
        err << "historicos classes: " << e.description() << " (error " << e.number() << ")\n";
        return 1;
    }
}

int listCommand(const ListOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env(o.archive, trace, err);
        env.requireArchive();
        const ClassInfo* info = Registry::global().find(o.className);
        if (!info) raise(429, "historicos.list", "No class is named \"" + o.className + "\"");
        const ObjectPtr obj = info->create();
        auto* cls = dynamic_cast<frame::RecordClass*>(obj.get());
        if (!cls) raise(438, "historicos.list", o.className + " is not a record class");
        openSelection(obj, o);
        ado::Recordset& rs = *cls->primaryRecordset();
        if (o.filter) invoke(obj, "AplyFilter", {{"Criteria", Variant(*o.filter)}});
        // The order is applied to this selection only: the class's SetOrder would
        // also save it as the user's order of the view.
        if (o.sort) rs.SetSort(*o.sort);

        std::ofstream file;
        if (o.out) {
            file.open(*o.out, std::ios::binary | std::ios::trunc);
            if (!file) raise(75, "historicos.list", "Path/File access error: " + *o.out);
        }
        std::ostream& dest = o.out ? static_cast<std::ostream&>(file) : out;
        // Rows written to a file or a pipe while a person watches the terminal.
        ProgressLine progress(err, "rows", ProgressLine::forStandardError(err) && (o.out || &out != &std::cout ||
                                                                                    !::isatty(1)));
        if (o.format == "table") writeTable(rs, dest, progress);
        else if (o.format == "csv") writeCsv(rs, dest, progress);
        else if (o.format == "json") writeJson(rs, dest, progress);
        else writeListing(*cls, o, dest);
        dest.flush();
        if (!dest) raise(61, "historicos.list", "Disk full: " + o.out.value_or("standard output"));
        return 0;
    } catch (const Error& e) {
        err << "historicos list: " << e.description() << " (error " << e.number() << ", " << e.source() << ")\n";
        return 1;
    }
}

int auditCommand(const AuditOptions& o, std::ostream& out, std::ostream& err) {
    try {
        std::string path;
        if (o.log) {
            path = *o.log;
        } else {
            const services::Config cfg = services::Config::load(o.archive.config);
            if (!cfg.auditLog)
                raise(err::PathFileAccess, "historicos.audit",
                      "No audit log is configured (set \"auditLog\" in the configuration, or name one with --log)");
            path = *cfg.auditLog;
        }
        std::ifstream in(path, std::ios::binary);
        if (!in) raise(53, "historicos.audit", "File not found: " + path);
        // Times are stored as ISO text, so "at or after" is a comparison of texts.
        const std::string since = o.since ? rt::isoText(rt::CDate(Variant(*o.since))) : std::string();
        int bad = 0;
        std::string line;
        for (long number = 1; std::getline(in, line); ++number) {
            if (line.empty()) continue;
            const auto e = nlohmann::json::parse(line, nullptr, false);
            if (e.is_discarded() || !e.is_object() || !e.contains("time") || !e["time"].is_string() ||
                !e.contains("text")) {
                err << "historicos audit: line " << number << " of " << path << " is not an audit entry\n";
                ++bad;
                continue;
            }
            const std::string cls = e.value("class", "");
            if (!since.empty() && e["time"].get<std::string>() < since) continue;
            if (o.className && text::fold(cls) != text::fold(*o.className)) continue;
            if (o.json) {
                out << line << "\n";
                continue;
            }
            const std::string member = e.value("member", "");
            out << e["time"].get<std::string>() << "  " << e.value("user", "") << "  "
                << (cls.empty() ? std::string("(no class)") : cls + "." + member) << "\n    "
                << e["text"].get<std::string>() << "\n";
            if (e.contains("values")) out << "    values " << e["values"].dump() << "\n";
        }
        return bad ? 1 : 0;
    } catch (const Error& e) {
        err << "historicos audit: " << e.description() << " (error " << e.number() << ")\n";
        return 1;
    }
}

}  // namespace hist::host
