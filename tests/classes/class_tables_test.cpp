// Every record class's statement table (data/<Class>.test), each read by the one
// runner, and every statement form each registered record class declares compared
// with the reference corpus of statements.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "frame/record.hpp"
#include "host/registration.hpp"
#include "platform/dispatch.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "support/class_table.hpp"

namespace hist::classes {
namespace {

const std::filesystem::path kData = std::filesystem::path(HISTORICOS_SOURCE_DIR) / "tests/classes/data";

// The tables present, by class name: a new class's table is picked up without a line here.
std::vector<std::string> tables() {
    std::vector<std::string> out;
    for (const auto& e : std::filesystem::directory_iterator(kData))
        if (e.path().extension() == ".test") out.push_back(e.path().stem().string());
    std::sort(out.begin(), out.end());
    return out;
}

using hist::testing::Engine;

// Each class's table on each engine.
class ClassTables : public test::ArchiveFixture,
                    public ::testing::WithParamInterface<std::tuple<std::string, Engine>> {
protected:
    void SetUp() override {
        engine_ = std::get<1>(GetParam());
        test::ArchiveFixture::SetUp();
        host::registerAllClasses(Registry::global());
    }
};

TEST_P(ClassTables, StatementsAndResultsAreTheDescribedOnes) {
    test::runClassTable(
        kData / (std::get<0>(GetParam()) + ".test"), [this](const std::string& s) { exec(s); },
        [this](const std::string& s) {
            std::string rows = query(s);
            std::replace(rows.begin(), rows.end(), '\n', ';');
            return rows;
        },
        std::get<1>(GetParam()) == Engine::Sqlite ? "rowid" : sql::kServerRowId);
}

INSTANTIATE_TEST_SUITE_P(Classes, ClassTables,
                         ::testing::Combine(::testing::ValuesIn(tables()),
                                            ::testing::Values(Engine::Sqlite, Engine::Postgres)),
                         [](const ::testing::TestParamInfo<std::tuple<std::string, Engine>>& p) {
                             return std::get<0>(p.param) + "_" + hist::testing::engineName(std::get<1>(p.param));
                         });

// The names one corpus context stands for: "C.IniciaRs[vista rapida|todos]" is
// "C.IniciaRs[vista rapida]" and "C.IniciaRs[todos]"; "C.IniciaRs[seleccion]/Other" is
// also "C.Other", a member that sends the same text.
std::vector<std::string> contextNames(const std::string& context) {
    const size_t dot = context.find('.');
    const std::string cls = context.substr(0, dot + 1);
    std::vector<std::string> parts(1);
    int depth = 0;
    for (char c : context.substr(dot + 1)) {
        depth += c == '[' ? 1 : c == ']' ? -1 : 0;
        if (c == '/' && depth == 0) parts.emplace_back();
        else parts.back() += c;
    }
    std::vector<std::string> out;
    for (const std::string& part : parts) {
        const size_t open = part.find('[');
        if (open == std::string::npos || part.back() != ']') {
            out.push_back(cls + part);
            continue;
        }
        std::stringstream keys(part.substr(open + 1, part.size() - open - 2));
        for (std::string key; std::getline(keys, key, '|');) out.push_back(cls + part.substr(0, open + 1) + key + "]");
    }
    return out;
}

// The reference corpus writes a value as <x> where a template writes {x}.
std::map<std::string, std::string> corpus() {
    std::ifstream in(std::filesystem::path(HISTORICOS_SOURCE_DIR) / "tests/sql/data/statements.tsv");
    std::map<std::string, std::string> out;
    std::string line;
    // A hole's name may hold blanks ("<time now>", "<D:second total>").
    const std::regex hole("<([A-Za-z][A-Za-z0-9_ ]*(:[A-Za-z_][A-Za-z0-9_ ]*)?)>");
    while (std::getline(in, line)) {
        std::vector<std::string> cols;
        std::stringstream ss(line);
        for (std::string c; std::getline(ss, c, '\t');) cols.push_back(c);
        if (cols.size() < 4) continue;
        for (const std::string& name : contextNames(cols[1])) out[name] = std::regex_replace(cols[3], hole, "{$1}");
    }
    return out;
}

TEST(ClassTemplates, EveryRecordClassHasATableAndEveryStatementFormIsTheCorpusText) {
    host::registerAllClasses(Registry::global());
    const auto texts = corpus();
    const auto withTables = tables();
    int recordClasses = 0;
    for (const std::string& name : Registry::global().classNames()) {
        if (!name.starts_with("Cls")) continue;  // the runtime's own objects are not all creatable
        const ObjectPtr obj = Registry::global().create(name);
        const auto* cls = dynamic_cast<const frame::RecordClass*>(obj.get());
        if (!cls) continue;
        ++recordClasses;
        SCOPED_TRACE(name);
        EXPECT_TRUE(std::binary_search(withTables.begin(), withTables.end(), name)) << "no statement table";
        const auto forms = cls->variants().templates();
        EXPECT_FALSE(forms.empty());
        for (const auto& [form, text] : forms) {
            const std::string context = name + "." + form;
            SCOPED_TRACE(context);
            const auto it = texts.find(context);
            ASSERT_NE(it, texts.end());
            EXPECT_EQ(text, it->second);
        }
    }
    EXPECT_GE(recordClasses, 4);
}

}  // namespace
}  // namespace hist::classes
