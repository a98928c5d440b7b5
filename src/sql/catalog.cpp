#include "sql/catalog.hpp"

#include <algorithm>
#include <map>

#include "platform/error.hpp"

namespace hist::sql {

namespace {

std::vector<std::string_view> splitTabs(std::string_view line) {
    std::vector<std::string_view> out;
    size_t start = 0;
    for (;;) {
        size_t tab = line.find('\t', start);
        if (tab == std::string_view::npos) {
            out.push_back(line.substr(start));
            return out;
        }
        out.push_back(line.substr(start, tab - start));
        start = tab + 1;
    }
}

[[noreturn]] void malformed(std::string_view line) {
    throw Error(err::InvalidCall, err::SrcSql, "Malformed catalog row: " + std::string(line));
}

JetType jetTypeOf(std::string_view s, std::string_view line) {
    if (s == "Long") return JetType::Long;
    if (s == "Integer") return JetType::Integer;
    if (s == "Double") return JetType::Double;
    if (s == "Date") return JetType::Date;
    if (s == "YesNo") return JetType::YesNo;
    if (s == "Memo") return JetType::Memo;
    if (s.starts_with("Text(")) return JetType::Text;
    malformed(line);
}

int toInt(std::string_view s, std::string_view line) {
    if (s.empty()) malformed(line);
    long v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') malformed(line);
        v = v * 10 + (c - '0');
    }
    return static_cast<int>(v);
}

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool sameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

size_t NameHash::operator()(std::string_view s) const noexcept {
    size_t h = 1469598103934665603ull;
    for (char c : s) h = (h ^ static_cast<unsigned char>(lower(c))) * 1099511628211ull;
    return h;
}

bool NameEq::operator()(std::string_view a, std::string_view b) const noexcept { return sameName(a, b); }

std::string Column::declaredType() const {
    switch (jet) {
        case JetType::Long: return "INTEGER";
        case JetType::Integer: return "SMALLINT";
        case JetType::Double: return "REAL";
        case JetType::Date: return "DATETIME";
        case JetType::YesNo: return "YESNO";
        case JetType::Text: return "VARCHAR(" + std::to_string(definedSize) + ") COLLATE " + kTextCollation;
        case JetType::Memo: return std::string("TEXT COLLATE ") + kTextCollation;
    }
    return "TEXT";
}

std::string Column::serverType() const {
    switch (jet) {
        case JetType::Long: return "integer";
        case JetType::Integer: return "smallint";
        case JetType::Double: return "double precision";
        case JetType::Date: return "timestamp(0)";
        case JetType::YesNo: return "smallint CHECK (" + name + " IN (-1, 0))";
        case JetType::Text:
        case JetType::Memo: return "citext";  // the length is not enforced, as on the embedded engine
    }
    return "citext";
}

const Column* Table::column(std::string_view n) const {
    auto it = index.find(n);
    return it == index.end() ? nullptr : &columns[it->second];
}

const Table* Catalog::table(std::string_view n) const {
    auto it = index_.find(n);
    return it == index_.end() ? nullptr : &tables_[it->second];
}

Catalog Catalog::parse(std::string_view tsv) {
    Catalog cat;
    bool header = true;
    size_t pos = 0;
    while (pos < tsv.size()) {
        size_t nl = tsv.find('\n', pos);
        std::string_view line = tsv.substr(pos, nl == std::string_view::npos ? std::string_view::npos : nl - pos);
        pos = nl == std::string_view::npos ? tsv.size() : nl + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty()) continue;
        if (header) {
            header = false;
            continue;
        }
        auto f = splitTabs(line);
        if (f.size() < 9) malformed(line);
        Column c;
        c.table = std::string(f[0]);
        c.name = std::string(f[1]);
        c.jet = jetTypeOf(f[2], line);
        c.adoType = toInt(f[3], line);
        c.precision = toInt(f[4], line);
        c.definedSize = toInt(f[5], line);
        if (f[6] != "yes" && f[6] != "no") malformed(line);
        c.nullable = f[6] == "yes";
        c.defaultValue = std::string(f[7]);
        c.key = std::string(f[8]);
        Table* t = nullptr;
        if (auto it = cat.index_.find(c.table); it != cat.index_.end()) {
            t = &cat.tables_[it->second];
        } else {
            cat.index_.emplace(c.table, cat.tables_.size());
            cat.tables_.push_back(Table{c.table, {}, {}});
            t = &cat.tables_.back();
        }
        if (t->column(c.name)) malformed(line);
        c.ordinal = static_cast<int>(t->columns.size());
        t->index.emplace(c.name, t->columns.size());
        t->columns.push_back(std::move(c));
    }
    return cat;
}

std::string Catalog::ddl(Dialect dialect) const {
    std::string out;
    for (const Table& t : tables_) out += tableDdl(t, dialect);
    return out;
}

std::string Catalog::tableDdl(const Table& t, Dialect dialect) const {
    const bool server = dialect == Dialect::Server;
    std::string out = "CREATE TABLE " + t.name + " (";
    std::vector<std::string> unique;
    std::map<std::string, std::string> index;  // IX1, IX2, ... in order
    bool first = true;
    for (const Column& c : t.columns) {
        out += first ? "\n  " : ",\n  ";
        first = false;
        out += c.name + " " + (server ? c.serverType() : c.declaredType());
        if (!c.nullable) out += " NOT NULL";
        if (!c.defaultValue.empty()) out += " DEFAULT " + c.defaultValue;
        if (c.key.starts_with("PK")) unique.push_back(c.name);
        if (c.key.starts_with("IX")) index[c.key] = c.name;
    }
    // Last, so a value list without column names fills the catalog's columns.
    if (server) out += std::string(",\n  ") + kServerRowId + " bigint GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY";
    if (!unique.empty()) {
        out += ",\n  UNIQUE (";
        for (size_t i = 0; i < unique.size(); ++i) out += (i ? ", " : "") + unique[i];
        out += ")";
    }
    out += "\n);\n";
    if (!index.empty()) {
        out += "CREATE INDEX IX_" + t.name + " ON " + t.name + " (";
        bool f = true;
        for (auto& [k, col] : index) {
            out += (f ? "" : ", ") + col;
            f = false;
        }
        out += ");\n";
    }
    return out;
}

const Catalog& catalog() {
    static const Catalog cat = Catalog::parse(catalogTsv());
    return cat;
}

}  // namespace hist::sql
