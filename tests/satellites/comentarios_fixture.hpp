#pragma once
// A fresh archive per test, the clock fixed, and a log of what the data service
// tells its statement observers. Setup and inspection go to the archive on a
// connection of the fixture's own, outside the data service, so they never show
// in the log.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/services/config.hpp"
#include "frame/services/data_service.hpp"
#include "platform/clock.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "sql/translator.hpp"

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

class ArchiveFixture : public ::testing::Test {
protected:
    void SetUp() override {
        static std::atomic<int> counter{0};
        dir_ = std::filesystem::temp_directory_path() /
               ("hist-comments-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        services::Config c = services::Config::defaults();
        c.archive = (dir_ / "archivo.db").string();
        c.settingsDir = (dir_ / "config").string();
        c.workDir = (dir_ / "trabajo").string();
        services::Configuration::install(c);
        Clock::set(rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0));
        Events::resetCounts();
        observer_ = services::StatementObservers::subscribe(
            [this](const services::StatementEvent& e) { log.add(e.op, e.composed); });

        setup_ = std::make_shared<ado::Connection>();
        setup_->Open(c.dataSource(4));
    }

    void TearDown() override {
        observer_.reset();
        setup_.reset();
        services::Configuration::reset();
        Clock::set(std::nullopt);
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }

    // Runs a writing statement of the desktop dialect.
    void exec(const std::string& jet) { setup_->Execute(sql::translate(jet, sql::StatementKind::Write)); }

    // The rows of a selection, cells joined by '|' and rows by '\n'.
    std::string query(const std::string& jet) {
        auto holder = std::make_shared<ado::Recordset>();
        ado::Recordset& rs = *holder;
        rs.Open(sql::translate(jet, sql::StatementKind::Read), setup_);
        std::string out;
        while (!rs.Eof()) {
            if (!out.empty()) out += '\n';
            for (long i = 0; i < rs.Fields()->Count(); ++i) {
                if (i) out += '|';
                const Variant v = rs.Fields()->Item(Variant(static_cast<int32_t>(i)))->Value();
                out += v.type() == VarType::Date ? rt::isoText(v.asDate().serial) : rt::CStr(v);
            }
            rs.MoveNext();
        }
        return out;
    }

    ObservedStatements log;

private:
    std::filesystem::path dir_;
    std::shared_ptr<ado::Connection> setup_;
    services::StatementObservers::Subscription observer_;
};

}  // namespace hist::test
