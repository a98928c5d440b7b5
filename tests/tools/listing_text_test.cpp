// The text side of the listings: the 8-bit code page, upper case, the output file.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "support/scratch.hpp"
#include "tools/listing_text.hpp"

namespace hist::tools::listing {
namespace {

namespace fs = std::filesystem;

TEST(ListingText, Windows1252Bytes) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"plain <b> & \"q\"", "plain <b> & \"q\""},
        {"Código año Ávila ü", "C\xF3" "digo a\xF1o \xC1vila \xFC"},
        {"\xC2\xA0\xC3\xBF", "\xA0\xFF"},                       // U+00A0 and U+00FF
        {"20 €", "20 \x80"},
        {"‘a’ “b” – — … ™ Š œ Ÿ", "\x91" "a\x92 \x93" "b\x94 \x96 \x97 \x85 \x99 \x8A \x9C \x9F"},
        {"\xC2\x81\xC2\x8D", "\x81\x8D"},                       // unassigned positions stand for themselves
        {"\xC2\x80", "?"},                                      // U+0080 has no byte of its own
        {"Ā 日本 😀", "? ?? ?"},                                 // outside the code page
        {"a\xFF" "b\xC3", "a?b?"},                              // no valid UTF-8
        {"", ""},
    };
    for (const auto& [utf8, ansi] : cases) {
        std::string out = "x";
        appendAnsi(out, utf8);
        EXPECT_EQ(out, "x" + ansi) << utf8;
    }
}

TEST(ListingText, UpperCaseOneCharacterForOne) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"Código", "CÓDIGO"},
        {"descripción ñandú", "DESCRIPCIÓN ÑANDÚ"},
        {"straße", "STRAßE"},  // no ß to SS: one code point for one
        {"fecha_1 é€", "FECHA_1 É€"},
        {"ÿ", "Ÿ"},
        {"a\xFFz", "A\xFFZ"},  // a byte that is no UTF-8 stays
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(upperCase(in), out) << in;
}

class OutputFileTest : public ::testing::Test {
protected:
    static std::string read(const fs::path& p) { return hist::testing::readFile(p); }
    hist::testing::Scratch scratch_{"hist-listing-text"};
    const fs::path dir_ = scratch_.path();
};

TEST_F(OutputFileTest, ReplacesTheFileAndPrintsValues) {
    const fs::path p = dir_ / "a.htm";
    std::ofstream(p) << "an older and much longer content than the new one";
    RegionalScope es(Regional::esES());
    {
        OutputFile f(p.string(), "Prueba");
        f.raw("<A>").text("ñ").value(Variant(1234.5)).value(Variant(int32_t{-7})).value(Variant::null());
        f.value(Variant(true)).value(Variant("é<")).value(Variant()).endl().line("fin");
        f.close();
    }
    EXPECT_EQ(read(p), "<A>\xF1 1234,5 -7 NullTrue\xE9<\r\nfin\r\n");
}

TEST_F(OutputFileTest, LargeOutputGoesOutWhole) {
    const fs::path p = dir_ / "big.htm";
    std::string line(999, 'x');
    {
        OutputFile f(p.string(), "Prueba");
        for (int i = 0; i < 3000; ++i) f.line(line);  // about three blocks
        f.close();
    }
    EXPECT_EQ(fs::file_size(p), 3000u * 1001u);
}

TEST_F(OutputFileTest, AFailureLeavesWhatWasWrittenAndAMissingFolderIsPathNotFound) {
    const fs::path p = dir_ / "part.htm";
    try {
        OutputFile f(p.string(), "Prueba");
        f.line("<HTML>").raw("<TR>");
        throw Error(94, "Prueba", "Invalid use of Null");
    } catch (const Error&) {
    }
    EXPECT_EQ(read(p), "<HTML>\r\n<TR>");

    // A missing folder, then a folder where a file should be.
    const std::vector<std::pair<fs::path, long>> cases = {{dir_ / "no" / "a.htm", 76}, {dir_, 75}};
    for (const auto& [path, number] : cases) {
        try {
            OutputFile f(path.string(), "ClsPrueba");
            ADD_FAILURE() << "opened " << path;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), number);
            EXPECT_EQ(e.source(), "ClsPrueba");
        }
    }
}

}  // namespace
}  // namespace hist::tools::listing
