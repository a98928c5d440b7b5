// The host in-process. The protocol: value encodings both ways, by-reference
// arguments, events and statements of a call, property writes. The options: what they put
// in force (how the command line reads them is the command-line test's).
#include "host/session.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "frame/services/config.hpp"
#include "host/options.hpp"
#include "host/registration.hpp"
#include "platform/clock.hpp"
#include "platform/collection.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "support/scratch.hpp"

namespace hist {
namespace {

using host::Json;

// A class whose members write their arguments, beep, raise events and send
// statements, as the record classes do.
class HostProbe : public Object {
public:
    std::string_view typeName() const override { return "HostProbe"; }
    static inline host::StatementLog* log = nullptr;

    void Requery(std::string& sSelecSql, DateValue& dtFecha) {
        if (sSelecSql.empty()) sSelecSql = "Todos";
        dtFecha.serial += 1;
    }
    // Walks a list box as the filter builder does, leaving it on its last row.
    std::string Walk(ObjectPtr& ctl) {
        auto c = std::dynamic_pointer_cast<Control>(ctl);
        std::string out;
        for (int32_t i = 0; i < c->get("ListCount").asLong(); ++i) {
            c->set("ListIndex", Variant(i));
            out += c->get("Text").asString();
        }
        return out;
    }
    void MoveNext() {
        Events::raise(this, event::MoveComplete);
        Events::beep();
        Events::raise(this, event::MoveComplete);
    }
    void Update(ObjectPtr& cn) {
        if (log) log->record({"UpdateBatch", 4, cn, "UPDATE T SET a = 1", "UPDATE T SET a = 1"});
        raise(-2147217864, "historicos.recordset", "Row cannot be located for updating");
    }
    Variant Echo(const Variant& v) { return v; }

    Variant value = Variant(int32_t{0});
};

class SessionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        host::registerAllClasses();
        Registry::global()
            .define<HostProbe>("HostProbe")
            .method("Requery", {optRef("sSelecSql", PT::String), inout("dtFecha", PT::Date)}, &HostProbe::Requery)
            .method("Walk", {inout("ctl", PT::Object)}, &HostProbe::Walk)
            .method("MoveNext", {}, &HostProbe::MoveNext)
            .method("Update", {inout("cn", PT::Object)}, &HostProbe::Update)
            .method("Echo", {in("v")}, &HostProbe::Echo)
            .property(
                "Value", [](HostProbe& p) { return p.value; }, [](HostProbe& p, const Variant& v) { p.value = v; });
    }
    void SetUp() override {
        HostProbe::log = &session.statements();
        ask(R"({"id":0,"new":"HostProbe","as":"p"})");
    }
    void TearDown() override { HostProbe::log = nullptr; }

    Json ask(const std::string& line) {
        auto answer = session.handle(line);
        EXPECT_TRUE(answer.has_value()) << line;
        return answer ? Json::parse(*answer) : Json();
    }
    // The answer's result for Echo of a JSON value.
    Json echo(const std::string& value) {
        Json a = ask(R"({"id":1,"call":"p.Echo","args":[)" + value + "]}");
        EXPECT_EQ(a["ok"], true) << value << " " << a.dump();
        return a["result"];
    }

    host::Session session;
    RegionalScope es{Regional::esES()};
};

TEST_F(SessionTest, ValuesTravelBothWays) {
    struct Case {
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {"null", "null"},
        {R"({"empty":true})", R"({"empty":true})"},
        {R"({"nothing":true})", R"({"nothing":true})"},
        {"true", "true"},
        {"5", "5"},
        {R"({"int16":5})", "5"},
        {"2.5", "2.5"},
        {R"({"double":5})", "5.0"},
        {"900.0", "900.0"},
        {"1e300", "1e+300"},
        {R"("año")", R"("año")"},
        {R"({"date":"2026-11-22"})", R"({"date":"2026-11-22T00:00:00"})"},
        {R"({"date":"2026-11-22T10:30:00"})", R"({"date":"2026-11-22T10:30:00"})"},
        {R"({"date":"T10:30:00"})", R"({"date":"1899-12-30T10:30:00"})"},
        {R"({"columns":[{"Caption":"Orden","Visible":true,"Alignment":1,"DataField":"Orden"}]})",
         R"({"columns":[{"Caption":"Orden","Visible":true,"Alignment":1,"DataField":"Orden"}]})"},
        {R"({"control":{"kind":"TextBox","DataField":"Nombre","Text":"Ana"}})",
         R"({"control":{"kind":"TextBox","DataField":"Nombre","Text":"Ana"}})"},
    };
    for (const auto& c : cases) EXPECT_EQ(echo(c.in).dump(), Json::parse(c.out).dump()) << c.in;

    // Whole numbers out of their kind's range overflow on the way in.
    for (const char* v : {R"({"int16":40000})", "3000000000", "-2147483649"}) {
        Json a = ask(std::string(R"({"id":2,"call":"p.Echo","args":[)") + v + "]}");
        EXPECT_EQ(a["error"]["number"], 6) << v;
    }
}

TEST_F(SessionTest, ByReferenceArgumentsComeBackAfterTheCall) {
    Json a = ask(R"({"id":1,"call":"p.Requery","args":["",{"date":"2026-11-22"}]})");
    ASSERT_EQ(a["ok"], true) << a.dump();
    EXPECT_FALSE(a.contains("result")) << "a member that returns nothing has no result";
    EXPECT_EQ(a["args"].dump(), R"(["Todos",{"date":"2026-11-23T00:00:00"}])");

    // A missing argument in the middle stays missing; a trailing omitted one is absent.
    Json m = ask(R"({"id":2,"call":"p.Requery","args":[{"missing":true},{"date":"2026-11-22"}]})");
    EXPECT_EQ(m["args"].dump(), R"([{"missing":true},{"date":"2026-11-23T00:00:00"}])");

    // A list box comes back with all its properties as the member left them.
    Json w = ask(
        R"({"id":3,"call":"p.Walk","args":[{"control":{"kind":"ListBox","DataField":"Nombre","List":["A","B","C"]}}]})");
    ASSERT_EQ(w["ok"], true) << w.dump();
    EXPECT_EQ(w["result"], "ABC");
    const Json& ctl = w["args"][0]["control"];
    EXPECT_EQ(ctl["kind"], "ListBox");
    EXPECT_EQ(ctl["ListIndex"], 2);
    EXPECT_EQ(ctl["Text"], "C");
    EXPECT_EQ(ctl["ListCount"], 3);
    EXPECT_EQ(ctl["List"], Json::parse(R"(["A","B","C"])"));
}

TEST_F(SessionTest, EventsAndStatementsBelongToTheirCall) {
    Json a = ask(R"({"id":1,"call":"p.MoveNext"})");
    EXPECT_EQ(a["events"].dump(), R"({"MoveComplete":2,"beep":1})");
    EXPECT_EQ(a["sql"], Json::array());

    ask(R"({"id":2,"new":"Collection","as":"cn"})");
    Json u = ask(R"({"id":3,"call":"p.Update","args":[{"ref":"cn"}]})");
    EXPECT_EQ(u["ok"], false);
    EXPECT_EQ(u["error"]["number"], -2147217864);
    EXPECT_EQ(u["error"]["source"], "historicos.recordset");
    EXPECT_EQ(u["events"], Json::object()) << "counts start again with each call";
    ASSERT_EQ(u["sql"].size(), 1u) << "statements sent before the failure are reported";
    EXPECT_EQ(u["sql"][0].dump(),
              R"({"op":"UpdateBatch","base":4,"conn":"cn","text":"UPDATE T SET a = 1","sent":"UPDATE T SET a = 1"})");

    Json next = ask(R"({"id":4,"call":"p.Echo","args":[1]})");
    EXPECT_EQ(next["sql"], Json::array());
}

TEST_F(SessionTest, PropertiesAreWrittenWithSet) {
    Json s = ask(R"({"id":1,"call":"p.Value","set":{"date":"2026-01-02"}})");
    ASSERT_EQ(s["ok"], true) << s.dump();
    EXPECT_FALSE(s.contains("result"));
    EXPECT_FALSE(s.contains("args"));
    EXPECT_TRUE(s.contains("sql"));
    EXPECT_TRUE(s.contains("events"));
    EXPECT_EQ(ask(R"({"id":2,"call":"p.Value"})")["result"].dump(), R"({"date":"2026-01-02T00:00:00"})");
    Json ro = ask(R"({"id":3,"call":"p.Echo","set":1})");
    EXPECT_EQ(ro["error"]["number"], 450);
}

TEST_F(SessionTest, NewWithoutANameReturnsARefAndACollectionHoldingItselfIsAnswered) {
    Json a = ask(R"({"id":1,"new":"Collection"})");
    ASSERT_EQ(a["ok"], true);
    const std::string name = a["result"]["ref"];
    EXPECT_EQ(ask(R"({"id":2,"call":")" + name + R"(.Count"})")["result"], 0);
    EXPECT_EQ(ask(R"({"id":3,"release":"nobody"})")["ok"], false);
    EXPECT_EQ(ask(R"({"id":4,"members":"NoSuchClass"})")["ok"], false);

    ask(R"({"id":5,"new":"Collection","as":"c"})");
    ask(R"({"id":6,"call":"c.Add","args":[{"ref":"c"}]})");
    Json self = ask(R"({"id":7,"call":"c.Item","args":[1]})");
    ASSERT_EQ(self["ok"], true);
    EXPECT_EQ(self["result"]["ref"], "c");
    // Break the cycle so the collection can go.
    EXPECT_EQ(ask(R"({"id":8,"call":"c.Remove","args":[1]})")["ok"], true);
}

// Lines a hostile client may send: numbers beyond a double, values and requests
// nested without end. Each gets error 5 and the session serves the next line.
TEST(ObjectNamesTest, AnObjectKeepsItsOldestNameAsNamesAreReleased) {
    host::ObjectNames names;
    auto obj = std::make_shared<Collection>();
    names.bind("a", obj);
    names.bind("b", obj);
    names.bind("c", obj);
    EXPECT_EQ(names.nameOf(obj), "a");
    EXPECT_TRUE(names.release("a"));
    EXPECT_EQ(names.nameOf(obj), "b");
    names.release("c");
    names.release("b");
    EXPECT_FALSE(names.release("b"));
    const std::string generated = names.nameOf(obj);
    EXPECT_EQ(generated.front(), 'r');
    EXPECT_EQ(names.find(generated), obj);
}

TEST_F(SessionTest, ARecordClassListsItsStatementTemplates) {
    const Json a = ask(R"({"id":1,"templates":"ClsOrdenesComentarios"})");
    ASSERT_EQ(a["ok"], true) << a.dump();
    EXPECT_EQ(a["templates"][1]["name"], "IniciaRs[seleccion]");
    EXPECT_EQ(a["templates"][1]["text"],
              "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios "
              "Where (Codigo = {id} AND Fecha = {FL:dtFecha} )");
    EXPECT_EQ(ask(R"({"id":2,"templates":"HostProbe"})")["error"]["number"], 5);
    EXPECT_EQ(ask(R"({"id":3,"templates":"ClsNadie"})")["error"]["number"], 429);
}

TEST_F(SessionTest, OutOfRangeAndNestedInputIsRefusedAndTheSessionGoesOn) {
    auto nested = [](const std::string& open, const std::string& inner, const std::string& close, int levels) {
        std::string s;
        for (int i = 0; i < levels; ++i) s += open;
        s += inner;
        for (int i = 0; i < levels; ++i) s += close;
        return s;
    };
    auto collections = [&](int levels) { return nested(R"({"collection":[)", "1", "]}", levels); };
    struct Case {
        std::string line;
        Json id;
        const char* says;
    };
    const Case cases[] = {
        {R"({"id":1,"call":"p.Echo","args":[1e309]})", nullptr, "too large"},
        {R"({"id":2,"call":"p.Echo","args":[-1e400]})", nullptr, "too large"},
        {R"({"id":3,"call":"p.Echo","args":[)" + collections(64) + "]}", 3, "nests deeper than 64"},
        {R"({"id":4,"call":"p.Echo","args":[{"control":{"Value":)" + collections(63) + "}}]}", 4,
         "nests deeper than 64"},
        {R"({"id":5,"call":"p.Value","set":)" + collections(64) + "}", 5, "nests deeper than 64"},
        {R"({"id":6,"call":"p.Echo","args":[)" + collections(20000) + "]}", nullptr, "nests deeper than 256"},
        {R"({"id":)" + nested("[", "", "]", 200000) + R"(,"members":"HostProbe"})", nullptr, "nests deeper"},
        {R"({"id":8,"call":"p.Echo","args":[{"a":1,"b":)" + nested("[", "", "]", 100) + "}]}", 8, "found 2: \"a\""},
    };
    for (const Case& c : cases) {
        Json a = ask(c.line);
        EXPECT_EQ(a["ok"], false) << c.line.substr(0, 80);
        EXPECT_EQ(a["id"], c.id) << c.line.substr(0, 80);
        EXPECT_EQ(a["error"]["number"], err::InvalidCall) << c.line.substr(0, 80);
        EXPECT_NE(a["error"]["description"].get<std::string>().find(c.says), std::string::npos)
            << a["error"]["description"];
        EXPECT_EQ(echo("7"), 7);  // the session goes on
    }
    // The deepest value allowed (63 collections around a number: 64 levels) still travels.
    Json deepest = echo(collections(63));
    EXPECT_TRUE(deepest.contains("collection")) << deepest.dump().substr(0, 200);
}

// ------------------------------------------------------------ the host's options


TEST(HostOptionsTest, ApplyingPutsThemInForce) {
    const hist::testing::Scratch scratch("historicos-options");
    const auto& home = scratch.path();
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
    unsetenv("HISTORICOS_CONFIG");

    host::HostOptions o;
    o.locale = "en-US";
    o.now = "2026-11-22T10:30:00";
    o.user = "ana";
    o.appPath = (home / "app").string();
    o.workDir = (home / "work").string();
    o.db = (home / "archivo.db").string();
    host::applyHostOptions(o);

    EXPECT_EQ(Regional::current().name, "en-US");
    EXPECT_EQ(Clock::now(), rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0));
    EXPECT_EQ(CurrentUser::name(), "ana");
    EXPECT_EQ(application().Path(), (home / "app").string());
    EXPECT_TRUE(std::filesystem::is_directory(home / "app"));
    EXPECT_TRUE(std::filesystem::is_directory(home / "work"));
    EXPECT_EQ(hostEnvironment().workDir, (home / "work").string());
    EXPECT_EQ(hostEnvironment().dbPath, (home / "archivo.db").string());
    EXPECT_EQ(services::Configuration::current()->archivePath(), (home / "archivo.db").string());
    EXPECT_TRUE(std::filesystem::exists(home / "archivo.db")) << "a missing archive is created";

    host::HostOptions badNow;
    badNow.now = "mañana";
    EXPECT_THROW(host::applyHostOptions(badNow), Error);

    Regional::setCurrent(Regional::esES());
    Clock::set(std::nullopt);
    CurrentUser::set(std::nullopt);
    setApplication(nullptr);
    services::Configuration::reset();
}

}  // namespace
}  // namespace hist
