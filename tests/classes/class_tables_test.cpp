// Every record class's statement table (data/<Class>.test), each read by the one
// runner, and every statement form each registered record class declares compared
// with the reference corpus of statements.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

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

class ClassTables : public test::ArchiveFixture, public ::testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        test::ArchiveFixture::SetUp();
        host::registerAllClasses(Registry::global());
    }
};

TEST_P(ClassTables, StatementsAndResultsAreTheDescribedOnes) {
    test::runClassTable(
        kData / (GetParam() + ".test"), [this](const std::string& s) { exec(s); },
        [this](const std::string& s) {
            std::string rows = query(s);
            std::replace(rows.begin(), rows.end(), '\n', ';');
            return rows;
        });
}

INSTANTIATE_TEST_SUITE_P(Classes, ClassTables, ::testing::ValuesIn(tables()),
                         [](const ::testing::TestParamInfo<std::string>& p) { return p.param; });

// The reference corpus writes a value as <x> where a template writes {x}.
std::map<std::string, std::string> corpus() {
    std::ifstream in(std::filesystem::path(HISTORICOS_SOURCE_DIR) / "tests/sql/data/statements.tsv");
    std::map<std::string, std::string> out;
    std::string line;
    const std::regex hole("<([A-Za-z][A-Za-z0-9_]*(:[A-Za-z_][A-Za-z0-9_]*)?)>");
    while (std::getline(in, line)) {
        std::vector<std::string> cols;
        std::stringstream ss(line);
        for (std::string c; std::getline(ss, c, '\t');) cols.push_back(c);
        if (cols.size() >= 4) out[cols[1]] = std::regex_replace(cols[3], hole, "{$1}");
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
