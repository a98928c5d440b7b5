#pragma once
// The temporary archive of the tools' tests plus a log of what the data service
// tells its statement observers. Setup and inspection go to the archive on a
// connection of the fixture's own, outside the data service, so they never show
// in the log.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/services/data_service.hpp"
#include "satellites/comentarios.hpp"
#include "tools/tools_fixture.hpp"

namespace hist::test {

// The statements of one test, as "<op> <text as composed>".
class ObservedStatements {
public:
    void add(std::string op, std::string text) { entries_.push_back({std::move(op), std::move(text)}); }
    void clear() { entries_.clear(); }
    std::vector<std::string> all() const {
        std::vector<std::string> out;
        for (const auto& e : entries_) out.push_back(e.op + " " + e.text);
        return out;
    }
    std::vector<std::string> texts(const std::string& op) const {
        std::vector<std::string> out;
        for (const auto& e : entries_)
            if (e.op == op) out.push_back(e.text);
        return out;
    }

private:
    struct Entry {
        std::string op, text;
    };
    std::vector<Entry> entries_;
};

// One object of each comment class; they touch nothing until they are opened, so
// they can be made before the test's archive is.
struct CommentClasses {
    satellites::ClsOrdenesComentarios ordenes;
    satellites::ClsPedidosCliComent pedidos;
    satellites::ClsAlbaranesComentarios albaranes;
    satellites::ClsFacturasComentarios facturas;
};

class ArchiveFixture : public TempArchive, public CommentClasses {
protected:
    void SetUp() override {
        TempArchive::SetUp();
        Events::resetCounts();
        observer_ = services::StatementObservers::subscribe(
            [this](const services::StatementEvent& e) { log.add(e.op, e.composed); });
    }

    void TearDown() override {
        observer_.reset();
        TempArchive::TearDown();
    }

    // The rows of a selection, cells joined by '|' and rows by '\n', a Null as '-'.
    std::string query(const std::string& jet) {
        auto holder = std::make_shared<ado::Recordset>();
        ado::Recordset& rs = *holder;
        rs.Open(sql::translate(jet, sql::StatementKind::Read, setup_->session().dialect()), setup_);
        std::string out;
        while (!rs.Eof()) {
            if (!out.empty()) out += '\n';
            for (long i = 0; i < rs.Fields()->Count(); ++i) {
                if (i) out += '|';
                const Variant v = rs.Fields()->Item(Variant(static_cast<int32_t>(i)))->Value();
                out += v.isNull() ? "-" : v.type() == VarType::Date ? rt::isoText(v.asDate().serial) : rt::CStr(v);
            }
            rs.MoveNext();
        }
        return out;
    }

    ObservedStatements log;

private:
    services::StatementObservers::Subscription observer_;
};

}  // namespace hist::test
