#include "backends/sqlite/functions.hpp"

// Built twice: into the library, on the engine it links, and into the loadable
// extension (libhistoricos_sqlite.so), where every engine call goes through the
// routine table of the process that loads it.
#ifdef HISTORICOS_SQLITE_EXTENSION
#include <sqlite3ext.h>
SQLITE_EXTENSION_INIT3
#else
#include <sqlite3.h>
#endif

#include <string_view>

#include "sql/catalog.hpp"
#include "sql/literals.hpp"
#include "sql/textmatch.hpp"

namespace hist::backend::sqlite {

namespace {

int collateNoCase(void*, int na, const void* a, int nb, const void* b) {
    return sql::compareNoCase(std::string_view(static_cast<const char*>(a), static_cast<size_t>(na)),
                              std::string_view(static_cast<const char*>(b), static_cast<size_t>(nb)));
}

std::string_view textOf(sqlite3_value* v) {
    const unsigned char* p = sqlite3_value_text(v);
    int n = sqlite3_value_bytes(v);
    return p ? std::string_view(reinterpret_cast<const char*>(p), static_cast<size_t>(n)) : std::string_view();
}

// like(pattern, text[, escape]): SQLite calls it for `text LIKE pattern`.
void likeFunction(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
    for (int i = 0; i < argc; ++i)
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) return sqlite3_result_null(ctx);
    char32_t escape = 0;
    if (argc == 3) {
        std::string_view e = textOf(argv[2]);
        if (e.size() != 1) {
            sqlite3_result_error(ctx, "ESCAPE expression must be a single character", -1);
            return;
        }
        escape = static_cast<unsigned char>(e[0]);
    }
    std::string_view pattern = textOf(argv[0]);
    std::string_view text = textOf(argv[1]);
    sqlite3_result_int(ctx, sql::likeMatch(text, pattern, escape) ? 1 : 0);
}

// jet_currency(value, digits): the value rounded as the currency format rounds; Null stays Null.
void currencyFunction(sqlite3_context* ctx, int, sqlite3_value** argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) return sqlite3_result_null(ctx);
    int digits = sqlite3_value_int(argv[1]);
    int t = sqlite3_value_numeric_type(argv[0]);
    if (t != SQLITE_INTEGER && t != SQLITE_FLOAT) {
        sqlite3_result_error(ctx, "Data type mismatch in criteria expression.", -1);
        return;
    }
    sqlite3_result_double(ctx, sql::roundCurrency(sqlite3_value_double(argv[0]), digits));
}

}  // namespace

int registerFunctions(sqlite3* db) {
    int rc = sqlite3_create_collation(db, sql::kTextCollation, SQLITE_UTF8, nullptr, collateNoCase);
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    if (rc == SQLITE_OK) rc = sqlite3_create_function(db, "like", 2, flags, nullptr, likeFunction, nullptr, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_create_function(db, "like", 3, flags, nullptr, likeFunction, nullptr, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_create_function(db, "jet_currency", 2, flags, nullptr, currencyFunction, nullptr, nullptr);
    return rc;
}

}  // namespace hist::backend::sqlite
