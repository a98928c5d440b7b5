#pragma once
// TempArchive: a fresh archive and settings folder per test and a fixed clock; rows
// are written on a connection of the fixture's own. ToolsFixture adds a fixed user
// and the default application object. Test classes are record
// classes made from a variant table of the test's own, over whatever selection the
// test needs.
#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/connection.hpp"
#include "frame/record.hpp"
#include "frame/services/config.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "sql/translator.hpp"
#include "support/errors.hpp"
#include "support/engines.hpp"
#include "support/scratch.hpp"

namespace hist::test {

// One field of each type the tools tell apart: Codigo text(20), Cantidad double
// (precision 15), Numero 32-bit integer (precision 10), Facturado 16-bit integer,
// Fecha date (precision 255), P11 boolean, Comentarios long text. The tables are
// empty unless a test fills them.
constexpr const char* kAllTypes =
    "SELECT L.Codigo, L.Cantidad, L.Numero, L.Facturado, L.Fecha, O.P11, C.Comentarios "
    "FROM HOrdenes_Lineas AS L, HOrdenes_Odontograma AS O, HOrdenes_Comentarios AS C";

// A variant table for a test class: the given selection and tool forms, the
// common forms everywhere else.
inline frame::ClassVariants toolVariants(std::string_view className, std::string_view table,
                                            std::string_view selectSql,
                                            frame::FilterForm filter = frame::FilterForm::Base,
                                            frame::DefinedSizeForm definedSize = frame::DefinedSizeForm::Table,
                                            frame::KeyForm key = frame::KeyForm::Table,
                                            std::string_view permissionGroup = "Pruebas") {
    return frame::ClassVariants{
        .className = className,
        .table = table,
        .select = frame::Template(selectSql),
        .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {F:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
        .nuevoCodigo = "SELECT MAX(Id) AS Nuevo_Codigo FROM {table}",
        .deleteAll = "DELETE  FROM {table} WHERE (Codigo = {vId})",
        .convertirSerie = "UPDATE {table} SET Codigo = {vNewId} WHERE(Codigo = {vId})",
        .open = frame::OpenForm::B,
        .updateId = {.parent = "Codigo"},
        .permissionGroup = permissionGroup,
        .filter = filter,
        .definedSize = definedSize,
        .key = key,
    };
}

class TempArchive : public ::testing::Test {
protected:
    void SetUp() override {
        dir_.emplace("hist-tools");
        services::Config c = services::Config::defaults();
        try {
            c.archive = hist::testing::archiveAddress(engine_, (*dir_ / "archivo.db").string());
        } catch (const std::runtime_error& e) {
            GTEST_FAIL() << e.what();
        }
        c.settingsDir = (*dir_ / "config").string();
        c.workDir = (*dir_ / "trabajo").string();
        services::Configuration::install(c);
        Clock::set(rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0));
        backend::createArchive(c.dataSource(4));
        setup_ = std::make_shared<ado::Connection>();
        setup_->Open(c.dataSource(4));
    }

    void TearDown() override {
        setup_.reset();
        services::Configuration::reset();
        Clock::set(std::nullopt);
        dir_.reset();
    }

    // Runs a writing statement of the desktop dialect.
    void exec(const std::string& jet) {
        setup_->Execute(sql::translate(jet, sql::StatementKind::Write, setup_->session().dialect()));
    }

    // Opens the class's selection under a keyword, for a document and a date.
    static void open(frame::RecordClass& cls, std::string key = "todos", Variant id = {}, DateValue fecha = {}) {
        frame::ConnPtr cn;
        cls.IniciaRs(cn, key, id, fecha);
    }

    std::shared_ptr<ado::Connection> setup_;
    // The engine the archive is on; a test that runs on both sets it before SetUp.
    hist::testing::Engine engine_ = hist::testing::Engine::Sqlite;

    // The test's folder: the archive, the settings and the work folder are in it.
    const std::filesystem::path& folder() const { return dir_->path(); }

private:
    std::optional<hist::testing::Scratch> dir_;
};

class ToolsFixture : public TempArchive {
protected:
    void SetUp() override {
        TempArchive::SetUp();
        CurrentUser::set("ana");
        setApplication(nullptr);
    }

    void TearDown() override {
        CurrentUser::set(std::nullopt);
        TempArchive::TearDown();
    }
};

// A stand-in control bound to a field, with the given properties.
inline std::shared_ptr<StandInControl> control(ControlKind kind, std::string_view dataField,
                                               std::initializer_list<std::pair<std::string_view, Variant>> props = {}) {
    auto c = std::make_shared<StandInControl>(kind);
    c->define("DataField", Variant(dataField));
    for (const auto& [name, value] : props) c->define(name, value);
    return c;
}

using hist::testing::errorOf;

}  // namespace hist::test
