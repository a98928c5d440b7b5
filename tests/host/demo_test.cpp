// The main job, in-process: on a missing archive it creates the sample, shows its
// contents and reads comments through the comment classes; on a second run it uses
// the archive as it stands. Every command finds the same default archive, and the main
// job fills one that holds no rows.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "frame/services/config.hpp"
#include "cli_run.hpp"
#include "host/demo.hpp"
#include "support/scratch.hpp"

namespace hist {
namespace {

namespace fs = std::filesystem;

host::DemoOptions demoOn(const std::string& db, std::size_t orders = 2000) {
    host::DemoOptions o;
    o.db = db;
    o.orders = orders;
    return o;
}

using TempDir = test::DataHome;

// The number of the order the road took, from its third step.
std::string orderTaken(const std::string& text) {
    const auto at = text.find("\n3. Order ");
    if (at == std::string::npos) return "";
    return text.substr(at + 10, text.find(' ', at + 10) - at - 10);
}

TEST(Demo, CreatesTheSampleThenWalksTheRoadOfOneOrder) {
    TempDir dir;
    const std::string db = (dir.path / "sub" / "archivo.db").string();
    std::ostringstream out, err;
    ASSERT_EQ(host::demoCommand(demoOn(db, 300), true, out, err), 0) << err.str();
    const std::string text = out.str();
    EXPECT_TRUE(fs::exists(db));
    EXPECT_NE(text.find("Creating the sample archive " + db), std::string::npos) << text;
    // Every step of the road is told, in order, and the rows it wrote are counted.
    std::size_t at = 0;
    for (const char* step : {"\n1. ClsOrdenes.IniciaRs \"pendientes\": ", "\n2. CreateFilter on a combo box over Facturado",
                             "\n3. Order ", "\n4. In one transaction: invoice A/", "\n5. ActualizarTotal recomputed",
                             "\n6. ToHtmlGrid printed the ", "\nRows new or changed, per table:  HOrdenes 1  HOrdenes_Lineas "}) {
        const auto found = text.find(step, at);
        ASSERT_NE(found, std::string::npos) << step << "\n" << text;
        at = found;
    }
    EXPECT_NE(text.find("HFacturas 1  Recibos 1\n"), std::string::npos) << text;
    // --trace showed the statements as composed and as sent.
    EXPECT_NE(err.str().find("UPDATE  HOrdenes SET Cerrada = 'Cerrada', Facturado = 4 , Doc_F = "), std::string::npos)
        << err.str();

    // A second run reuses the archive and takes the next pending order.
    std::ostringstream out2, err2;
    ASSERT_EQ(host::demoCommand(demoOn(db), false, out2, err2), 0) << err2.str();
    EXPECT_EQ(out2.str().find("sample ("), std::string::npos);
    EXPECT_TRUE(err2.str().empty()) << err2.str();
    EXPECT_FALSE(orderTaken(text).empty());
    EXPECT_NE(orderTaken(out2.str()), orderTaken(text)) << out2.str();
}

// The listing the main job writes, opened in a real browser: the page parses into a
// table with a header row and one row per record.
std::string runCapture(const std::string& command) {
    std::string out;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buf[65536];
        std::size_t n;
        while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
        pclose(p);
    }
    return out;
}

std::size_t occurrences(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
    return n;
}

TEST(Demo, ListingRendersInAHeadlessBrowser) {
    const char* browser = "/usr/bin/chromium";
    if (!fs::exists(browser)) GTEST_SKIP() << "no " << browser << " (scripts/install-deps installs it)";
    TempDir dir;
    std::ostringstream out, err;
    ASSERT_EQ(host::demoCommand(demoOn((dir.path / "archivo.db").string(), 300), false, out, err), 0)
        << err.str();

    const std::string text = out.str();
    auto at = text.find("6. ToHtmlGrid printed the ");
    ASSERT_NE(at, std::string::npos) << text;
    const long rows = std::stol(text.substr(at + 26));
    ASSERT_GT(rows, 0);
    std::string page = text.substr(text.find("\n   ", at) + 4);
    page = page.substr(0, page.find('\n'));

    const std::string dom = runCapture(
        std::string(browser) +
        " --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking"
        " --disable-component-update --disable-sync --user-data-dir=" + (dir.path / "browser").string() +
        " --dump-dom 'file://" + page + "' 2>/dev/null");
    ASSERT_NE(dom.find("<table"), std::string::npos) << dom.substr(0, 500);
    // A header row and one row per invoice; captions upper-cased, accents decoded.
    EXPECT_GE(occurrences(dom, "<tr>"), static_cast<std::size_t>(rows) + 1);
    EXPECT_NE(dom.find(">FACTURA</font></th>"), std::string::npos) << dom.substr(0, 1500);
    EXPECT_NE(dom.find(">ALMACÉN</font></th>"), std::string::npos) << dom.substr(0, 1500);
    EXPECT_NE(dom.find(std::to_string(rows) + " registros. - "), std::string::npos);
}

// init without --db, the host and demo all use the configuration's archive; an
// archive left without rows (as init or a first host run leaves it) is filled by demo.
TEST(Demo, EveryCommandUsesTheOneDefaultArchiveAndDemoFillsAnEmptyOne) {
    TempDir dir;
    const fs::path archive = dir.path / "historicos" / "archivo.db";
    const test::CliRun init = test::runCommandLine({"init"});
    ASSERT_EQ(init.code, 0) << init.err;
    EXPECT_NE(init.out.find("Created " + archive.string()), std::string::npos) << init.out;
    ASSERT_TRUE(fs::exists(archive));

    const test::CliRun demo = test::runCommandLine({"demo", "--orders", "120"});
    ASSERT_EQ(demo.code, 0) << demo.err;
    EXPECT_NE(demo.out.find("Filling the empty archive " + archive.string()), std::string::npos) << demo.out;
    EXPECT_NE(demo.out.find("Newest invoices:\n  "), std::string::npos);
    EXPECT_EQ(demo.out.find("Newest invoices:\n  (none)"), std::string::npos) << demo.out;

    // The host, on its own default, reads what demo wrote.
    const test::CliRun host =
        test::runCommandLine({"host", "--work-dir", dir.path.string(), "--app-path", (dir.path / "app").string()},
                             R"({"id":1,"query":"SELECT Count(*) AS n FROM HOrdenes"})" "\n");
    EXPECT_EQ(host.code, 0) << host.err;
    EXPECT_NE(host.out.find("[[120]]"), std::string::npos) << host.out;
}

}  // namespace
}  // namespace hist
