#pragma once
// A fresh archive and settings folder per test, a fixed user and clock, the
// default application object, and the filter tools installed. Rows are written on a
// connection of the fixture's own. Test classes are record classes made from a
// variant table of the test's own, over whatever selection the test needs.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "ado/connection.hpp"
#include "frame/record.hpp"
#include "frame/record_tools.hpp"
#include "frame/saved_order.hpp"
#include "frame/services/config.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "sql/translator.hpp"
#include "tools/filter_tools.hpp"

namespace hist::test {

// A variant table for a test class: the given selection and tool forms, the
// common forms everywhere else.
constexpr frame::ClassVariants toolVariants(std::string_view className, std::string_view table,
                                            std::string_view selectSql, frame::FilterForm filter,
                                            frame::DefinedSizeForm definedSize, frame::KeyForm key,
                                            std::string_view permissionGroup = "Pruebas") {
    return frame::ClassVariants{
        .className = className,
        .table = table,
        .selectSql = selectSql,
        .selectionKey = "Codigo",
        .open = frame::OpenForm::B,
        .nuevoCodigoColumn = "Id",
        .deleteAllKey = "Codigo",
        .convertirSerieKey = "Codigo",
        .updateIdParent = "Codigo",
        .permissionGroup = permissionGroup,
        .filter = filter,
        .definedSize = definedSize,
        .key = key,
    };
}

class ToolsFixture : public ::testing::Test {
protected:
    void SetUp() override {
        static std::atomic<int> counter{0};
        dir_ = std::filesystem::temp_directory_path() /
               ("hist-tools-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        services::Config c = services::Config::defaults();
        c.archive = (dir_ / "archivo.db").string();
        c.settingsDir = (dir_ / "config").string();
        c.workDir = (dir_ / "trabajo").string();
        services::Configuration::install(c);
        Clock::set(rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0));
        CurrentUser::set("ana");
        setApplication(nullptr);
        savedTools_ = frame::recordTools();
        tools::installFilterTools();
        setup_ = std::make_shared<ado::Connection>();
        setup_->Open(c.dataSource(4));
    }

    void TearDown() override {
        // Other tests of the program find the hook table as it was.
        frame::recordTools() = savedTools_;
        frame::setSavedOrderStep({});
        setup_.reset();
        services::Configuration::reset();
        Clock::set(std::nullopt);
        CurrentUser::set(std::nullopt);
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }

    // Runs a writing statement of the desktop dialect.
    void exec(const std::string& jet) { setup_->Execute(sql::translate(jet, sql::StatementKind::Write)); }

    // Opens every row of the class's selection.
    static void openAll(frame::RecordClass& cls) {
        frame::ConnPtr cn;
        std::string key = "todos";
        Variant id;
        DateValue fecha{0};
        cls.IniciaRs(cn, key, id, fecha);
    }

    const std::filesystem::path& dir() const { return dir_; }

private:
    std::filesystem::path dir_;
    std::shared_ptr<ado::Connection> setup_;
    frame::RecordTools savedTools_;
};

// A stand-in control bound to a field, with the given properties.
inline std::shared_ptr<StandInControl> control(ControlKind kind, std::string_view dataField,
                                               std::initializer_list<std::pair<std::string_view, Variant>> props = {}) {
    auto c = std::make_shared<StandInControl>(kind);
    c->define("DataField", Variant(dataField));
    for (const auto& [name, value] : props) c->define(name, value);
    return c;
}

// The error number a call raises, or 0 when it raises none.
template <class F>
long errorOf(F&& f) {
    try {
        f();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

}  // namespace hist::test
