// libhistoricos_sqlite.so: the archive's text collation, Like and currency rounding
// for readers that open the archive file with their own engine (the sqlite3 shell,
// Python's sqlite3, report tools). Without it they cannot prepare a comparison on a
// text column, whose declared collation they do not know.
#include <sqlite3ext.h>
SQLITE_EXTENSION_INIT1

#include "backends/sqlite/functions.hpp"

namespace {

int initialise(sqlite3* db, char** errorText, const sqlite3_api_routines* api) {
    SQLITE_EXTENSION_INIT2(api);
    const int rc = hist::backend::sqlite::registerFunctions(db);
    if (rc != SQLITE_OK && errorText)
        *errorText = sqlite3_mprintf("historicos: the archive's functions could not be registered (%d)", rc);
    return rc;
}

}  // namespace

// The entry point the engine derives from the file name, and the generic one.
extern "C" __attribute__((visibility("default"))) int sqlite3_historicossqlite_init(
    sqlite3* db, char** errorText, const sqlite3_api_routines* api) {
    return initialise(db, errorText, api);
}

extern "C" __attribute__((visibility("default"))) int sqlite3_extension_init(sqlite3* db, char** errorText,
                                                                            const sqlite3_api_routines* api) {
    return initialise(db, errorText, api);
}
