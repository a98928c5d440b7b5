// The constructs the engine would read differently from the desktop engine, run
// end to end (translator, then engine) and checked by the values they leave.
#include <gtest/gtest.h>

#include "archive_fixture.hpp"
#include "platform/error.hpp"
#include "sql/translator.hpp"

namespace hist {
namespace {

using backend::StatementKind;
using testing::Rows;

class Dialect : public testing::ArchiveTest {
protected:
    long long write(const std::string& jet) {
        return s->execute(sql::translate(jet, StatementKind::Write, Regional::esES()));
    }
    Rows read(const std::string& jet) { return rows(sql::translate(jet, StatementKind::Read, Regional::esES())); }
};

TEST_F(Dialect, EuroConversionDividesByTheRateAndRoundsAsCurrency) {
    const std::pair<const char*, const char*> cases[] = {{"166386", "1000"},     {"445.08255", "2.68"},
                                                        {"20.79825", "0.13"},   {"-20.79825", "-0.13"},
                                                        {"1", "0.01"},          {"NULL", "NULL"}};
    Rows expected;
    for (const auto& [base, euros] : cases) {
        const std::string n = std::to_string(expected.size() + 1);
        write("INSERT INTO HOrdenes (Numero, Base, Total) VALUES (" + n + ", " + base + ", " + base + ")");
        expected.push_back({euros, euros, n});
    }
    write("UPDATE  HOrdenes SET Base = Format([Base]/'166,386','Currency'), Total = "
          "Format([Total]/'166,386','Currency');");
    EXPECT_EQ(read("SELECT Base, Total FROM HOrdenes ORDER BY Numero"), expected);
}

}  // namespace
}  // namespace hist
