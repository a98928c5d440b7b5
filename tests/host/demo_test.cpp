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

TEST(Demo, CreatesTheSampleThenReadsCommentsThroughTheClasses) {
    TempDir dir;
    const std::string db = (dir.path / "sub" / "archivo.db").string();
    std::ostringstream out, err;
    ASSERT_EQ(host::demoCommand(demoOn(db, 300), true, out, err), 0) << err.str();
    const std::string text = out.str();
    EXPECT_TRUE(fs::exists(db));
    EXPECT_NE(text.find("Creating the sample archive " + db), std::string::npos) << text;
    // The summary counts rows and names the newest documents.
    EXPECT_NE(text.find("HOrdenes_Lineas"), std::string::npos) << text;
    // Each comment class opened its selection and listed at least one comment.
    for (const char* cls : {"ClsOrdenesComentarios", "ClsAlbaranesComentarios", "ClsFacturasComentarios"}) {
        auto at = text.find(std::string("comment(s) through ") + cls);
        ASSERT_NE(at, std::string::npos) << cls << "\n" << text;
        // The line after the heading is a comment row: "  <Id>. <text>".
        std::string after = text.substr(text.find('\n', at) + 1);
        std::size_t digits = after.find_first_not_of("0123456789", 2);
        EXPECT_TRUE(after.rfind("  ", 0) == 0 && digits > 2 && digits != std::string::npos &&
                    after.compare(digits, 2, ". ") == 0)
            << cls << "\n"
            << after;
    }
    // The work orders' comment table was printed through ToHtmlGrid where the output names it.
    auto at = text.find("written with ToHtmlGrid to\n  ");
    ASSERT_NE(at, std::string::npos) << text;
    std::string listing = text.substr(at + 29);
    listing = listing.substr(0, listing.find('\n'));
    EXPECT_EQ(fs::path(listing).filename(), "HOrdenes_Comentarios.htm");
    ASSERT_TRUE(fs::exists(listing)) << listing;
    EXPECT_GT(fs::file_size(listing), 1000u);
    // --trace showed the composed selections of the classes on the error stream.
    EXPECT_NE(err.str().find("FROM HOrdenes_Comentarios Where (Codigo = "), std::string::npos) << err.str();

    // A second run reuses the archive.
    std::ostringstream out2, err2;
    ASSERT_EQ(host::demoCommand(demoOn(db), false, out2, err2), 0) << err2.str();
    EXPECT_EQ(out2.str().find("sample ("), std::string::npos);
    EXPECT_TRUE(err2.str().empty()) << err2.str();
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
    auto at = text.find("Listing of HOrdenes_Comentarios (");
    ASSERT_NE(at, std::string::npos) << text;
    const long rows = std::stol(text.substr(at + 33));
    ASSERT_GT(rows, 0);
    at = text.find("written with ToHtmlGrid to\n  ", at);
    std::string page = text.substr(at + 29);
    page = page.substr(0, page.find('\n'));

    const std::string dom = runCapture(
        std::string(browser) +
        " --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking"
        " --disable-component-update --disable-sync --user-data-dir=" + (dir.path / "browser").string() +
        " --dump-dom 'file://" + page + "' 2>/dev/null");
    ASSERT_NE(dom.find("<table"), std::string::npos) << dom.substr(0, 500);
    // One header row and one row per record; five captions, upper-cased, accents decoded.
    EXPECT_EQ(occurrences(dom, "<tr>"), static_cast<std::size_t>(rows) + 1);
    EXPECT_EQ(occurrences(dom, "<th "), 5u);
    EXPECT_NE(dom.find(">CÓDIGO</font></th>"), std::string::npos) << dom.substr(0, 1500);
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
