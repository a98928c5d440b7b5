// The comment classes' statement tables (data/*.test), each read by the one runner,
// and every statement form a class declares compared with the reference corpus of
// statements.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include "platform/dispatch.hpp"
#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "support/class_table.hpp"

namespace hist::satellites {
namespace {

const std::filesystem::path kData = std::filesystem::path(HISTORICOS_SOURCE_DIR) / "tests/satellites/data";

class ClassTables : public test::ArchiveFixture, public ::testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        test::ArchiveFixture::SetUp();
        registerCommentClasses(Registry::global());
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

INSTANTIATE_TEST_SUITE_P(Comments, ClassTables,
                         ::testing::Values("ClsOrdenesComentarios", "ClsPedidosCliComent", "ClsAlbaranesComentarios",
                                           "ClsFacturasComentarios"));

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

TEST(ClassTemplates, EveryStatementFormIsTheCorpusText) {
    const auto texts = corpus();
    ClsOrdenesComentarios o;
    ClsPedidosCliComent p;
    ClsAlbaranesComentarios a;
    ClsFacturasComentarios f;
    for (const frame::RecordClass* cls : std::initializer_list<const frame::RecordClass*>{&o, &p, &a, &f}) {
        const auto forms = cls->variants().templates();
        EXPECT_GE(forms.size(), 6u);
        for (const auto& [name, text] : forms) {
            const std::string context = std::string(cls->typeName()) + "." + name;
            SCOPED_TRACE(context);
            const auto it = texts.find(context);
            ASSERT_NE(it, texts.end());
            EXPECT_EQ(text, it->second);
        }
    }
}

}  // namespace
}  // namespace hist::satellites
