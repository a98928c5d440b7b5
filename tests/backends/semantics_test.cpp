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

TEST_F(Dialect, DayNumbersCompareWithDatesAsTheirSerials) {
    const char* stamps[] = {"2003-02-01 00:00:00", "2003-02-08 00:00:00", "2003-02-08 10:00:00",
                            "2003-01-31 23:59:00"};
    int n = 0;
    for (const char* st : stamps)
        write("INSERT INTO HAlbaranes (Numero, Fecha, Codigo, Serie, Facturado, Bloqueado) VALUES (" +
              std::to_string(++n) + ", #" + st + "#, 'C1', 'a', 0, 0)");
    auto rows = read(
        "SELECT Numero From HAlbaranes WHERE (((Numero) Between 1 And 99) AND ((Fecha) Between 37653 And 37660) "
        "AND ((Codigo) Like 'c*') AND ((Serie) Like 'A') AND ((Facturado)=0) AND ((Bloqueado)=0)) ORDER BY Numero;");
    EXPECT_EQ(rows, (Rows{{"1", "1"}, {"2", "2"}}));  // the number and the hidden row identity
}

TEST_F(Dialect, PhaseStartAndEndWriteDatesAndFlags) {
    write("INSERT INTO HOrdenes_Fases ( Id, Codigo, Fecha, Hora, Fecha_Fin, Hora_Fin, Empleado, Descripcion, "
          "Cantidad, Fase, C_Fase, C_Empleado, Fecha_ent, Hora_ent, Tiempo, Fecha_Codigo, Finalizado ) Values ( "
          "5,12 , #2003-02-01 00:00:00#,'10:30:00', #2003-02-01 00:00:00#, '0:00:00', 'Ana', 'Colado', 2, 'E1', "
          "'F1', 'E1', #2003-02-01 00:00:00#, '9:05:00', '1:15:00', #2003-02-01 00:00:00#, '1' )");
    EXPECT_EQ(read("SELECT Hora, Hora_Fin, Hora_ent, Tiempo, Finalizado FROM HOrdenes_Fases WHERE ID = 5"),
              (Rows{{"1899-12-30 10:30:00", "1899-12-30 00:00:00", "1899-12-30 09:05:00", "1899-12-30 01:15:00",
                     "-1", "1"}}));
    write("UPDATE HOrdenes_Fases SET HOrdenes_Fases.Fecha = '15/03/2003', HOrdenes_Fases.Finalizado = False WHERE "
          "(((HOrdenes_Fases.Id)=5));");
    EXPECT_EQ(read("SELECT Fecha, Finalizado FROM HOrdenes_Fases WHERE ID = 5"),
              (Rows{{"2003-03-15 00:00:00", "0", "1"}}));
    write("UPDATE HOrdenes_Fases SET HOrdenes_Fases.Fecha_Fin = '16/03/2003', HOrdenes_Fases.Finalizado = True "
          "WHERE (((HOrdenes_Fases.Id)=5));");
    EXPECT_EQ(read("SELECT Fecha_Fin, Finalizado FROM HOrdenes_Fases WHERE Finalizado = True"),
              (Rows{{"2003-03-16 00:00:00", "-1", "1"}}));
}

TEST_F(Dialect, HistoryMoveCopiesColumnsByName) {
    write("INSERT INTO HHFacturas_Cabecera (Numero, Id, Nombre, Razon_Social, Cierre) VALUES (3, 1, 'Ana', "
          "'Clínica Sol', 9)");
    write("INSERT INTO HHFacturas_Cabecera (Numero, Id, Nombre, Cierre) VALUES (4, 1, 'Luis', 8)");
    EXPECT_EQ(write("INSERT INTO HFacturas_Cabecera SELECT HHFacturas_Cabecera.* FROM HHFacturas_Cabecera "
                    "WHERE(CIERRE = 9)"),
              1);
    EXPECT_EQ(read("SELECT Numero, Nombre, Razon_Social, Cierre FROM HFacturas_Cabecera"),
              (Rows{{"3", "Ana", "Clínica Sol", "9", "1"}}));
}

}  // namespace
}  // namespace hist
