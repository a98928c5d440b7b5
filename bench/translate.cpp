// Translation time against execution time of the same statements, on an archive
// with a few thousand orders and lines. The target: translating costs under 10%
// of executing. Prints one line per statement and the overall ratio.
//
// Each statement is sent with 1,000 different values (its "{n}" places filled
// with 1..1000), as a class sends one form with each row's values. Two figures
// per statement: "first" is the full analysis a statement shape gets the first
// time a thread sees it (measured through a copy of the catalog, whose plans
// are never kept); "translate" is every later statement of that shape, the
// figure the target is about.
//
//   bench_translate [iterations]
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "backends/engine.hpp"
#include "sql/catalog.hpp"
#include "sql/translator.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using hist::backend::StatementKind;

struct Sample {
    const char* name;
    StatementKind kind;
    std::string text;
};

struct Discard : hist::backend::RowSink {
    size_t n = 0;
    void columns(const std::vector<hist::backend::ColumnMeta>&) override {}
    void row(std::span<const hist::backend::Cell> cells) override { n += cells.size(); }
};

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// The statement with each "{n}" replaced by n.
std::string withValue(const std::string& text, int n) {
    std::string out = text, v = std::to_string(n);
    for (size_t at = out.find("{n}"); at != std::string::npos; at = out.find("{n}", at + v.size()))
        out.replace(at, 3, v);
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    const int iterations = argc > 1 ? std::atoi(argv[1]) : 2000;
    std::string tmpl = (std::filesystem::temp_directory_path() / "histbench-XXXXXX").string();
    std::string dir = mkdtemp(tmpl.data());
    hist::backend::DataSource ds;
    ds.path = dir + "/archivo.db";
    auto s = hist::backend::createArchive(ds);

    // 2,000 orders with 5 lines each, 2,000 delivery notes.
    s->begin();
    for (int n = 1; n <= 2000; ++n) {
        std::string num = std::to_string(n);
        std::string day = std::to_string(37600 + n % 100);
        s->execute("INSERT INTO HOrdenes (Numero, Serie, Fecha, Codigo, Razon_Social, Base, Total, Cerrada) VALUES (" +
                   num + ", 'A', date(" + day + " + 2415018.5) || ' 00:00:00', 'C" + std::to_string(n % 50) +
                   "', 'Clínica " + num + "', 100.5, 121.6, 'Fabricación')");
        s->execute("INSERT INTO HAlbaranes (Numero, Serie, Fecha, Codigo, Facturado, Bloqueado) VALUES (" + num +
                   ", 'A', date(" + day + " + 2415018.5) || ' 00:00:00', 'C" + std::to_string(n % 50) + "', 0, 0)");
        for (int l = 1; l <= 5; ++l)
            s->execute("INSERT INTO HOrdenes_Lineas (Numero, ID, Fecha, Codigo, Descripcion, Cantidad, Precio, "
                       "Importe) VALUES (" +
                       num + ", " + std::to_string(l) + ", '2003-02-01 00:00:00', 'ART" + std::to_string(l) +
                       "', 'Corona', 1, 50.25, 50.25)");
    }
    s->commit();

    const std::vector<Sample> samples = {
        {"main selection by number", StatementKind::Read,
         "SELECT Numero AS Orden, Numero_control as Control, Serie, Fecha, Fecha_Entrega as Entrega, Hora_Entrega as "
         "Hora, Referencia as Paciente, Repeticion as Repetición, Incidencia, Codigo AS Cliente, Razon_Social AS "
         "Empresa , Colaborador as Doctor, Caja, Cerrada, Fecha_Cierre as Cierre, descripcion as Descripción, "
         "Imagenes as Imágenes, Tarifa, Almacen AS Almacén, Transportista, Divisa , Valor_Divisa AS Cambio, "
         "Total_Divisa, Forma_Pago AS Pago , Descuento, Descuento_PP, Base, Gastos AS Portes, Impuesto , "
         "Importe_Impuestos, Recargo, Importe_recargo, IRPF , Importe_IRPF, Total, Estado, Doc_E, Facturado , Doc_F, "
         "Impreso FROM HOrdenes WHERE Numero = {n}"},
        {"new number of a series", StatementKind::Read,
         "SELECT MAX(Numero) AS Nuevo_Codigo FROM HOrdenes WHERE Serie = 'A'"},
        {"lines of an order and date", StatementKind::Read,
         "SELECT Codigo, Descripcion, Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero AS Orden FROM "
         "HOrdenes_Lineas WHERE (Numero = {n} AND Fecha = #2003-02-01 00:00:00# )"},
        {"delivery notes by day numbers", StatementKind::Read,
         "SELECT Numero From HAlbaranes WHERE (((Numero) Between {n} And 1500) AND ((Fecha) Between 37653 And 37660) "
         "AND ((Codigo) Like 'C1*') AND ((Serie) Like 'A') AND ((Facturado)=0) AND ((Bloqueado)=0));"},
        {"order line insert", StatementKind::Write,
         "INSERT INTO HOrdenes_Lineas ( Codigo, Descripcion, Cantidad, Precio, DTO, IVA, Importe , Lote, ID, Numero, "
         "Seccion , Empleado, Puntos, Facturado, Doc_F, Fecha ) VALUES ('ART9', 'Puente', 1.000000 , 80.500000, "
         "0.000000, 21.000000, 80.500000, 'L{n}', 6, {n} , 'S1', 'E1', '12,{n}', 0, 0 , #2003-02-01 00:00:00# )"},
        {"order totals update", StatementKind::Write,
         "UPDATE HOrdenes Set Total_Divisa = '12,{n}', Base = '1.{n},5', Importe_Impuestos = '259,25', Importe_recargo "
         "= '0', Importe_IRPF = '0', Total = '1.493,75' WHERE (Numero = {n} )"},
        {"phase start", StatementKind::Write,
         "UPDATE HOrdenes_Fases SET HOrdenes_Fases.Fecha = '01/02/2003', HOrdenes_Fases.Finalizado = False WHERE "
         "(((HOrdenes_Fases.Id)={n}));"},
        {"euro conversion of all lines", StatementKind::Write,
         "UPDATE  HOrdenes_Lineas SET Precio = Format([Precio]/'166,386','Currency'), Importe = "
         "Format([Importe]/'166,386','Currency');"},
        {"lines delete", StatementKind::Write,
         "DELETE  FROM HOrdenes_Lineas  WHERE (Numero = {n} AND Fecha = #2003-02-01 00:00:00# )"},
    };

    const hist::sql::Catalog uncached = hist::sql::catalog();
    const hist::Regional& es = hist::Regional::esES();
    double totalTranslate = 0, totalExecute = 0;
    std::printf("%-32s %10s %12s %12s %8s\n", "statement", "first us", "translate us", "execute us", "ratio");
    for (const auto& smp : samples) {
        std::vector<std::string> texts;
        for (int n = 1; n <= 1000; ++n) texts.push_back(withValue(smp.text, n));
        std::vector<std::string> sent(texts.size());
        std::string out;
        auto t0 = Clock::now();
        for (int i = 0; i < iterations; ++i) out = hist::sql::translate(texts[i % texts.size()], smp.kind, es, uncached);
        double first = seconds(Clock::now() - t0) / iterations;
        t0 = Clock::now();
        for (int i = 0; i < iterations; ++i) out = hist::sql::translate(texts[i % texts.size()], smp.kind, es);
        double tr = seconds(Clock::now() - t0) / iterations;
        for (size_t k = 0; k < texts.size(); ++k) sent[k] = hist::sql::translate(texts[k], smp.kind, es);
        // Whole-table statements run fewer times; each write is rolled back.
        int execIterations = smp.text.find("WHERE") == std::string::npos &&
                                     smp.text.find("Where") == std::string::npos
                                 ? std::max(1, iterations / 100)
                                 : iterations;
        Discard sink;
        auto t1 = Clock::now();
        for (int i = 0; i < execIterations; ++i) {
            const std::string& text = sent[i % sent.size()];
            if (smp.kind == StatementKind::Read) {
                s->query(text, sink);
            } else {
                s->begin();
                s->execute(text);
                s->rollback();
            }
        }
        double ex = seconds(Clock::now() - t1) / execIterations;
        totalTranslate += tr;
        totalExecute += ex;
        std::printf("%-32s %10.2f %12.2f %12.2f %7.1f%%\n", smp.name, first * 1e6, tr * 1e6, ex * 1e6,
                    100.0 * tr / ex);
    }
    std::printf("%-32s %10s %12.2f %12.2f %7.1f%%\n", "all (sum of one of each)", "", totalTranslate * 1e6,
                totalExecute * 1e6, 100.0 * totalTranslate / totalExecute);
    s.reset();
    std::filesystem::remove_all(dir);
    return 0;
}
