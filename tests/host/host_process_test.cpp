// The host driven as a separate process over a pipe, as a script host drives it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/host_process.hpp"

namespace hist {
namespace {

using nlohmann::json;
using testing::HostProcess;

json askJson(HostProcess& h, const std::string& line) {
    const std::string answer = h.ask(line);
    EXPECT_FALSE(answer.empty()) << "no answer to " << line;
    return answer.empty() ? json() : json::parse(answer);
}

TEST(HostProcessTest, RuntimeMembersFollowTheLocale) {
    struct Call {
        const char* request;      // call and args
        const char* resultText;   // the result exactly as the answer writes it
    };
    struct Locale {
        const char* name;
        std::vector<Call> calls;
    };
    const Locale locales[] = {
        {"es-ES",
         {{R"("call":"rt.CDbl","args":["1.234,5"])", "1234.5"},
          {R"("call":"rt.CInt","args":["2,5"])", "2"},
          {R"("call":"rt.CLng","args":[{"double":3.5}])", "4"},
          {R"("call":"rt.CStr","args":[0.5])", R"("0,5")"},
          {R"("call":"rt.Val","args":["12,5"])", "12.0"},
          {R"("call":"rt.IsNumeric","args":["1,5"])", "true"},
          {R"("call":"rt.CBool","args":["0"])", "false"},
          {R"("call":"rt.Format","args":[1234.5,"Standard"])", R"("1.234,50")"},
          {R"("call":"rt.CDate","args":["22/11/2026 10:30:00"])", R"({"date":"2026-11-22T10:30:00"})"},
          {R"("call":"rt.IsDate","args":["31/02/2026"])", "false"}}},
        {"en-US",
         {{R"("call":"rt.CDbl","args":["1,234.5"])", "1234.5"},
          {R"("call":"rt.CStr","args":[0.5])", R"("0.5")"},
          {R"("call":"rt.Format","args":[1234.5,"Standard"])", R"("1,234.50")"},
          {R"("call":"rt.CDate","args":["11/22/2026"])", R"({"date":"2026-11-22T00:00:00"})"}}},
    };
    for (const auto& loc : locales) {
        HostProcess h({"--locale", loc.name});
        EXPECT_EQ(h.ask(R"({"id":"n","new":"Runtime","as":"rt"})"), R"({"id":"n","ok":true})");
        int id = 1;
        for (const auto& c : loc.calls) {
            const std::string line = "{\"id\":" + std::to_string(id++) + "," + c.request + "}";
            const std::string answer = h.ask(line);
            EXPECT_NE(answer.find(std::string("\"ok\":true,\"result\":") + c.resultText + ",\"args\":"),
                      std::string::npos)
                << loc.name << ": " << line << " -> " << answer;
        }
        EXPECT_EQ(h.wait(), 0);
    }
}

TEST(HostProcessTest, FailuresCarryNumberSourceDescriptionAndArgs) {
    HostProcess h({});
    askJson(h, R"({"id":1,"new":"Runtime","as":"rt"})");
    struct Case {
        const char* line;
        long number;
    };
    const Case cases[] = {
        {R"({"id":2,"call":"rt.CInt","args":["abc"]})", 13},
        {R"({"id":3,"call":"rt.CInt","args":[40000]})", 6},
        {R"({"id":4,"call":"rt.CStr","args":[null]})", 94},
        {R"({"id":5,"call":"rt.CInt"})", 449},
        {R"({"id":6,"call":"rt.CInt","args":[1,2]})", 450},
        {R"({"id":7,"call":"rt.NoSuch"})", 438},
    };
    for (const auto& c : cases) {
        json a = askJson(h, c.line);
        EXPECT_EQ(a["ok"], false) << c.line;
        EXPECT_EQ(a["error"]["number"], c.number) << c.line;
        EXPECT_TRUE(a["error"]["source"].is_string());
        EXPECT_FALSE(a["error"]["description"].get<std::string>().empty());
        EXPECT_TRUE(a.contains("args")) << "args as they stood at the failure";
        EXPECT_EQ(a["sql"], json::array());
    }
    json wrong = askJson(h, R"({"id":8,"call":"rt.CInt","args":[1,2]})");
    EXPECT_EQ(wrong["error"]["description"], "Wrong number of arguments or invalid property assignment");
    EXPECT_EQ(wrong["args"], json::parse("[1,2]"));
}

TEST(HostProcessTest, ObjectsKeepTheirNamesForTheSession) {
    HostProcess h({});
    askJson(h, R"({"id":1,"new":"Collection","as":"c"})");
    askJson(h, R"({"id":2,"new":"Collection","as":"inner"})");
    // An object with a name comes back under it.
    askJson(h, R"({"id":3,"call":"c.Add","args":[{"ref":"inner"},"in"]})");
    json byKey = askJson(h, R"({"id":4,"call":"c.Item","args":["IN"]})");
    EXPECT_EQ(byKey["result"], json::parse(R"({"ref":"inner","collection":[]})"));

    // A collection passed by value gets a generated name, the same each time it comes back.
    json added = askJson(h, R"({"id":5,"call":"c.Add","args":[{"collection":[1,2.5,"x"]}]})");
    ASSERT_TRUE(added["args"][0].contains("ref"));
    const std::string gen = added["args"][0]["ref"];
    EXPECT_EQ(added["args"][0]["collection"], json::parse(R"([1,2.5,"x"])"));
    EXPECT_EQ(askJson(h, R"({"id":6,"call":"c.Item","args":[2]})")["result"]["ref"], gen);

    // The generated name can be called in turn.
    json count = askJson(h, R"({"id":8,"call":")" + gen + R"(.Count"})");
    EXPECT_EQ(count["result"], 3);

    // After release the name is gone; the object comes back under a new one.
    EXPECT_EQ(askJson(h, R"({"id":9,"release":")" + gen + R"("})")["ok"], true);
    json gone = askJson(h, R"({"id":10,"call":")" + gen + R"(.Count"})");
    EXPECT_EQ(gone["ok"], false);
    EXPECT_EQ(gone["error"]["number"], 424);
    json renamed = askJson(h, R"({"id":11,"call":"c.Item","args":[2]})");
    EXPECT_NE(renamed["result"]["ref"], gen);

    json members = askJson(h, R"({"id":12,"members":"Collection"})");
    EXPECT_EQ(members["members"], json::parse(R"(["Add","Count","Item","Remove"])"));
    EXPECT_EQ(h.wait(), 0);
}

TEST(HostProcessTest, MalformedLinesAreAnsweredAndTheHostGoesOn) {
    HostProcess h({});
    EXPECT_EQ(askJson(h, R"({"id":1,"new":"Collection","as":"c2"})")["ok"], true);
    struct Case {
        std::string line;
        json id;
    };
    std::string deep;
    for (int i = 0; i < 20000; ++i) deep += R"({"collection":[)";
    for (int i = 0; i < 20000; ++i) deep += "]}";
    const Case cases[] = {
        {"this is not json", nullptr},
        {R"({"id":1,"new":"Runtime")", nullptr},  // cut short
        {R"([1,2,3])", nullptr},
        {R"("call")", nullptr},
        {R"({"id":2})", 2},
        {R"({"id":3,"new":"NoSuchClass","as":"x"})", 3},
        {R"({"id":4,"call":"nobody.Count"})", 4},
        {R"({"id":5,"call":"nodot"})", 5},
        {R"({"id":6,"call":"a.b.c"})", 6},
        {R"({"id":"seven","new":"Collection","as":"c","call":"c.Count"})", "seven"},
        {R"({"id":9,"call":"c2.Add","args":[{"bogus":1}]})", 9},
        {R"({"id":10,"call":"c2.Add","args":[[1]]})", 10},
        {R"({"id":11,"call":"c2.Add","args":{"a":1}})", 11},
        {R"({"id":12,"exec":"UPDATE NoSuchTable SET Estado = 1 WHERE Id = 0","base":4})", 12},
        {R"({"id":13,"query":"SELECT * FROM HOrdenes WHERE","base":4})", 13},
        {R"({"id":14,"query":"SELECT * FROM HOrdenes","base":"cuatro"})", 14},
        {R"({"id":15,"call":"c2.Add","args":[1e309]})", nullptr},
        {R"({"id":16,"call":"c2.Add","args":[)" + deep + "]}", nullptr},
    };
    for (const auto& c : cases) {
        json a = askJson(h, c.line);
        const std::string shown = c.line.substr(0, 80);
        EXPECT_EQ(a["ok"], false) << shown;
        EXPECT_EQ(a["id"], c.id) << shown;
        EXPECT_TRUE(a["error"]["number"].is_number_integer()) << shown;
        EXPECT_FALSE(a["error"]["description"].get<std::string>().empty()) << shown;
    }
    // Blank lines get no answer; the next request is served.
    h.send("");
    EXPECT_EQ(h.ask(R"({"id":99,"call":"c2.Count"})"), R"({"id":99,"ok":true,"result":0,"args":[],"sql":[],"events":{}})");
    EXPECT_EQ(h.wait(), 0);
}

TEST(HostProcessTest, StatementsOfACallAreListed) {
    HostProcess h({"--now", "2026-11-22T10:30:00"});
    json ins = askJson(h, R"J({"id":1,"exec":"INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion, Fecha) VALUES (7, 5, 'hola', 'x', #2026-11-22#)","base":4})J");
    ASSERT_EQ(ins["ok"], true) << ins.dump();
    ASSERT_EQ(ins["sql"].size(), 1u);
    EXPECT_EQ(ins["sql"][0]["op"], "EjecutarSql");
    EXPECT_EQ(ins["sql"][0]["base"], 4);
    EXPECT_TRUE(ins["sql"][0]["conn"].is_string());
    EXPECT_NE(ins["sql"][0]["text"].get<std::string>().find("#2026-11-22#"), std::string::npos);
    EXPECT_EQ(ins["sql"][0]["sent"].get<std::string>().find('#'), std::string::npos)
        << "the engine receives the translated text";

    json q = askJson(h, R"({"id":2,"query":"SELECT Id, Comentarios, Fecha FROM HOrdenes_Comentarios WHERE Codigo = 5"})");
    ASSERT_EQ(q["ok"], true) << q.dump();
    EXPECT_EQ(q["columns"], json::parse(R"(["Id","Comentarios","Fecha"])"));
    EXPECT_EQ(q["rows"], json::parse(R"([[7,"hola",{"date":"2026-11-22T00:00:00"}]])"));
    EXPECT_EQ(q["sql"][0]["op"], "AbrirRs");
}

TEST(HostProcessTest, ByReferenceArgumentsOfARecordClass) {
    HostProcess h({});
    askJson(h, R"({"id":1,"new":"ClsOrdenesComentarios","as":"o"})");
    // IniciaRs writes "todos" into an empty keyword and its connection into an unset one.
    json open = askJson(h, R"({"id":2,"call":"o.IniciaRs","args":[{"nothing":true},""]})");
    ASSERT_EQ(open["ok"], true) << open.dump();
    EXPECT_FALSE(open.contains("result"));
    ASSERT_EQ(open["args"].size(), 2u);
    EXPECT_EQ(open["args"][1], "todos");
    ASSERT_TRUE(open["args"][0].contains("ref"));
    const std::string conn = open["args"][0]["ref"];
    ASSERT_EQ(open["sql"].size(), 1u);
    EXPECT_EQ(open["sql"][0]["conn"], conn) << "the statement ran on the connection handed back";

    EXPECT_EQ(askJson(h, R"({"id":3,"call":"o.GetConnection"})")["result"]["ref"], conn);  // keeps its name

    // The bound grid's way to the recordset; a name in another case leaves the data alone.
    json dm = askJson(h, R"({"id":5,"call":"o.Class_GetDataMember","args":["Primary",{"empty":true}]})");
    ASSERT_TRUE(dm["args"][1].contains("ref")) << dm.dump();
    const std::string rs = dm["args"][1]["ref"];
    json lower = askJson(h, R"({"id":7,"call":"o.Class_GetDataMember","args":["primary",{"empty":true}]})");
    EXPECT_EQ(lower["args"][1], json::parse(R"({"empty":true})"));

    // The recordset's fields by the collection's default member, read and written.
    askJson(h, R"J({"id":20,"exec":"INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion, Fecha) VALUES (1, 5, 'hola', 'x', #2026-11-22#)"})J");
    askJson(h, R"({"id":21,"call":"o.Requery"})");
    json field = askJson(h, R"({"id":22,"call":")" + rs + R"(.Fields","args":["comentarios"]})");
    ASSERT_TRUE(field["result"].contains("ref")) << field.dump();
    const std::string f = field["result"]["ref"];
    EXPECT_EQ(askJson(h, R"({"id":23,"call":")" + f + R"(.Value"})")["result"], "hola");
    json set = askJson(h, R"({"id":24,"call":")" + f + R"(.Value","set":"adios"})");
    EXPECT_EQ(set["ok"], true) << set.dump();
    EXPECT_FALSE(set.contains("args"));
    json update = askJson(h, R"({"id":25,"call":"o.Update"})");
    ASSERT_EQ(update["ok"], true) << update.dump();
    ASSERT_FALSE(update["sql"].empty());
    EXPECT_EQ(update["sql"][0]["op"], "UpdateBatch");
    EXPECT_EQ(update["sql"][0]["conn"], conn);
    json q = askJson(h, R"({"id":26,"query":"SELECT Comentarios FROM HOrdenes_Comentarios WHERE Id = 1"})");
    EXPECT_EQ(q["rows"], json::parse(R"([["adios"]])"));
    EXPECT_EQ(h.wait(), 0);
}

TEST(HostProcessTest, BadOptionsStopTheHostBeforeServing) {
    for (const char* bad : {"--locale=fr-FR", "--bogus"}) EXPECT_EQ(HostProcess({bad}).wait(), 2) << bad;
}

}  // namespace
}  // namespace hist
