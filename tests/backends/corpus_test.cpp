// Every statement form the record classes compose, run through the translator and
// the engine on an archive seeded with a row in every table, checking what the
// engine leaves in the tables (every value in its stored form, rows added where
// an insert adds them) or the failure the statement must give.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <cctype>

#include "archive_fixture.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"
#include "sql/translator.hpp"

namespace hist {
namespace {

using backend::Cell;
using backend::StatementKind;
using testing::run;

struct CorpusRow {
    std::string id, context, kind, statement, constructs;
};

std::vector<CorpusRow> loadCorpus() {
    std::ifstream in(std::string(HISTORICOS_SOURCE_DIR) + "/tests/sql/data/statements.tsv");
    std::vector<CorpusRow> rows;
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
        std::vector<std::string> f;
        std::stringstream ss(line);
        std::string x;
        while (std::getline(ss, x, '\t')) f.push_back(x);
        if (f.size() < 5) continue;
        rows.push_back({f[0], f[1], f[2], f[3], f[4]});
    }
    return rows;
}

// Sample values for the placeholders, as the classes would compose them under es-ES:
// FechaSql writes #YYYY-MM-DD HH:MM:SS#, a double prints with a decimal comma, a
// date or time as the regional short form.
std::string substitute(const std::string& text, const std::string& localeDouble) {
    std::string out;
    size_t last = 0;
    for (size_t open = text.find('<'); open != std::string::npos; open = text.find('<', last)) {
        size_t close = text.find('>', open);
        // A placeholder starts with a letter; "<>" and "<=" are operators.
        if (close == std::string::npos || open + 1 >= text.size() || !std::isalpha(static_cast<unsigned char>(text[open + 1])) ||
            text.find('<', open + 1) < close) {
            out += text.substr(last, open + 1 - last);
            last = open + 1;
            continue;
        }
        out += text.substr(last, open - last);
        last = close + 1;
        std::string name = text.substr(open + 1, close - open - 1);
        std::string prefix, arg = name;
        if (auto colon = name.find(':'); colon != std::string::npos) {
            prefix = name.substr(0, colon);
            arg = name.substr(colon + 1);
        }
        std::string v;
        if (prefix == "F" || prefix == "FL") v = "#2003-02-01 00:00:00#";
        else if (prefix == "N") v = "12.500000";
        else if (prefix == "D") v = localeDouble;
        else if (prefix == "T")
            v = (arg.find("Hora") != std::string::npos || arg.find("Tiempo") != std::string::npos) ? "10:30:00"
                                                                                                    : "01/02/2003";
        else if (prefix == "B") v = "-1";
        else if (prefix == "A") v = "1";
        else if (prefix == "S") v = arg.find("Fin") != std::string::npos ? "37660" : "37653";
        else if (name == "time now") v = "10:30:00";
        else if (name == "vNewId") v = "13";
        else if (name == "state") v = "2";
        else if (name == "dDesde") v = "1";
        else if (name == "dHasta") v = "99";
        else if (name == "serie" || name == "sSerie" || name == "sLetra") v = "A";
        else if (name.starts_with("sCod")) v = "12";  // codes that number columns hold too
        else if (name[0] == 's') v = "ACME";
        else v = "12";
        out += v;
    }
    out += text.substr(last);
    return out;
}

std::string seedValue(const sql::Column& c) {
    switch (c.jet) {
        case sql::JetType::Long:
        case sql::JetType::Integer: return "12";
        case sql::JetType::Double: return "12.5";
        case sql::JetType::Date: return "'2003-02-01 00:00:00'";
        case sql::JetType::YesNo: return "0";
        default: return c.definedSize == 1 ? "'A'" : "'ACME'";
    }
}

bool isIsoDate(std::string_view s) {
    static const char shape[] = "9999-99-99 99:99:99";
    if (s.size() != sizeof shape - 1) return false;
    for (size_t i = 0; i < s.size(); ++i)
        if (shape[i] == '9' ? !std::isdigit(static_cast<unsigned char>(s[i])) : s[i] != shape[i]) return false;
    return true;
}

// Every value of the table is in the stored form of its column type. Returns a
// description of the first value that is not, or an empty text.
std::string storedFormFault(backend::Session& s, const sql::Table& t) {
    std::string sql = "SELECT ";
    for (size_t i = 0; i < t.columns.size(); ++i) sql += (i ? ", " : "") + t.columns[i].name;
    sql += " FROM " + t.name;
    struct Check : backend::RowSink {
        const sql::Table* t;
        std::string fault;
        size_t rows = 0;
        void columns(const std::vector<backend::ColumnMeta>&) override {}
        void row(std::span<const Cell> cells) override {
            ++rows;
            for (size_t i = 0; i < t->columns.size() && fault.empty(); ++i) {
                const auto& c = t->columns[i];
                const Cell& v = cells[i];
                if (v.kind == Cell::Kind::Null) continue;
                bool ok = true;
                switch (c.jet) {
                    case sql::JetType::Long:
                    case sql::JetType::Integer: ok = v.kind == Cell::Kind::Int; break;
                    case sql::JetType::Double: ok = v.kind == Cell::Kind::Int || v.kind == Cell::Kind::Real; break;
                    case sql::JetType::Date: ok = v.kind == Cell::Kind::Text && isIsoDate(v.text); break;
                    case sql::JetType::YesNo: ok = v.kind == Cell::Kind::Int && (v.i == -1 || v.i == 0); break;
                    default: ok = v.kind == Cell::Kind::Text; break;
                }
                if (!ok)
                    fault = t->name + "." + c.name + " holds " +
                            (v.kind == Cell::Kind::Text ? "'" + std::string(v.text) + "'"
                                                        : v.kind == Cell::Kind::Int ? std::to_string(v.i)
                                                                                    : std::to_string(v.d));
            }
        }
    } check;
    check.t = &t;
    s.query(sql, check);
    return check.fault;
}

long long rowCount(backend::Session& s, const std::string& table) {
    auto r = run(s, "SELECT COUNT(*) FROM " + table);
    return std::stoll(r.rows.at(0).at(0));
}

bool tagged(const CorpusRow& r, const std::string& tag) {
    return (";" + r.constructs + ";").find(";" + tag + ";") != std::string::npos;
}

// Outcomes the statements must give. Everything else must run and leave every
// value in its stored form.
const std::map<std::string, std::pair<long, std::string>> kExpectedFailures = {
    // The stray apostrophe of ClsOrdenesReclamaciones.NuevoCodigo.
    {"S062", {err::SqlSyntax, "Syntax error in string in query expression"}},
    // Conditions without WHERE.
    {"S296", {err::SqlSyntax, "Syntax error"}},
    {"S318", {err::SqlSyntax, "Syntax error"}},
};
// The design settles these differently from the dialect survey, which saw them
// refused: HHOrdenes_Cabecera exists beside the other second-level tables, so the
// snapshot's GetDatos with bHistor runs (and finds nothing in the empty table).
const std::set<std::string> kSecondLevelOrders = {"S111", "S112", "S113"};

class Corpus : public ::testing::TestWithParam<testing::Engine> {
protected:
    void SetUp() override {
        try {
            archive_ = std::make_unique<testing::EngineArchive>(GetParam());
        } catch (const std::runtime_error& e) {
            GTEST_FAIL() << e.what();
        }
        session_ = backend::openSession(archive_->source());
        for (const auto& t : sql::catalog().tables()) {
            if (t.name == "HHOrdenes_Cabecera") continue;  // the empty second-level table
            std::string cols, vals;
            for (const auto& c : t.columns) {
                cols += (cols.empty() ? "" : ", ") + c.name;
                vals += (vals.empty() ? "" : ", ") + seedValue(c);
            }
            session_->execute("INSERT INTO " + t.name + " (" + cols + ") VALUES (" + vals + ")");
        }
    }

    // Translates and runs one statement inside a transaction that is rolled back.
    // Returns the rows touched (writes) or read (selections).
    long long runOne(const CorpusRow& r, const std::string& text, std::string& fault) {
        backend::Session& s = *session_;
        const bool read = r.kind == "select";
        std::string target;
        if (!read) {
            // The written table: the word after INSERT INTO, UPDATE or DELETE FROM.
            std::stringstream words(text);
            std::string w, prev;
            while (words >> w) {
                if (sql::sameName(prev, "INTO") || sql::sameName(prev, "UPDATE") || sql::sameName(prev, "FROM")) {
                    target = w;
                    break;
                }
                prev = w;
            }
        }
        s.begin();
        struct Rollback {
            backend::Session& s;
            ~Rollback() {
                while (s.depth() > 0) s.rollback();
            }
        } guard{s};
        long long before = 0;
        if (r.kind == "insert") {
            // The seed row would collide with the new row's unique number.
            s.execute("DELETE FROM " + target);
            before = 0;
        }
        std::string sent =
            sql::translate(text, read ? StatementKind::Read : StatementKind::Write, s.dialect(), Regional::esES());
        long long n;
        if (read) {
            auto rows = run(s, sent);
            n = static_cast<long long>(rows.rows.size());
            for (const auto& c : rows.cols)
                if (c.name.empty() || c.type == backend::FieldType::Empty) fault = "column without name or type";
        } else {
            n = s.execute(sent);
        }
        if (!target.empty()) {
            const sql::Table* t = sql::catalog().table(target);
            if (!t) fault = "unknown target " + target;
            else if (std::string f = storedFormFault(s, *t); !f.empty()) fault = f;
            if (t && r.kind == "insert" && rowCount(s, t->name) != before + 1) fault = "insert did not add one row";
        }
        return n;
    }

    std::unique_ptr<testing::EngineArchive> archive_;
    std::unique_ptr<backend::Session> session_;
};

INSTANTIATE_TEST_SUITE_P(Engines, Corpus, ::testing::Values(testing::Engine::Sqlite, testing::Engine::Postgres),
                         testing::engineParamName);

TEST_P(Corpus, EveryStatementRunsOrFailsAsSettled) {
    auto rows = loadCorpus();
    ASSERT_EQ(rows.size(), 356u);
    int statements = 0, failuresSeen = 0, bareCommaRefusals = 0;
    for (const auto& r : rows) {
        if (r.kind != "select" && r.kind != "insert" && r.kind != "update" && r.kind != "delete") continue;
        ++statements;
        SCOPED_TRACE(r.id + " " + r.context);
        const std::string text = substitute(r.statement, "12,5");
        std::string fault;
        auto expected = kExpectedFailures.find(r.id);
        try {
            long long n = runOne(r, text, fault);
            EXPECT_EQ(expected, kExpectedFailures.end()) << "ran, but must fail: " << text;
            EXPECT_TRUE(fault.empty()) << fault << "\n" << text;
            if (kSecondLevelOrders.count(r.id)) {
                EXPECT_EQ(n, 0);
            }
            if (r.context.find("[todos]") != std::string::npos && r.kind == "select") {
                EXPECT_GE(n, 1) << "a whole-table selection finds the seed row";
            }
            if (tagged(r, "NUM_BARE_LOCALE") && r.kind == "insert") ADD_FAILURE() << "a bare 12,5 must add a value";
        } catch (const Error& e) {
            if (tagged(r, "NUM_BARE_LOCALE") && r.kind == "insert") {
                // A double with decimals breaks the value list; a whole double does not.
                EXPECT_EQ(e.description(), "Number of query values and destination fields are not the same.");
                ++bareCommaRefusals;
                std::string f2;
                EXPECT_NO_THROW(runOne(r, substitute(r.statement, "12"), f2)) << substitute(r.statement, "12");
                EXPECT_TRUE(f2.empty()) << f2;
                continue;
            }
            if (expected == kExpectedFailures.end()) {
                ADD_FAILURE() << e.number() << " " << e.description() << "\n" << text;
                continue;
            }
            ++failuresSeen;
            EXPECT_EQ(e.number(), expected->second.first) << e.description();
            EXPECT_TRUE(e.description().starts_with(expected->second.second)) << e.description();
        }
    }
    EXPECT_EQ(statements, 340);
    EXPECT_EQ(failuresSeen, static_cast<int>(kExpectedFailures.size()));
    EXPECT_GT(bareCommaRefusals, 0);
}

}  // namespace
}  // namespace hist
