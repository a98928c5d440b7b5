#pragma once
// The functions and collation every archive connection registers: the text
// collation of the catalog's text columns, the dialect's Like, and the currency
// rounding the translator writes for Format(x,'Currency').
struct sqlite3;

namespace hist::backend::sqlite {

// Registers JETTEXT, like/2, like/3 and jet_currency/2 on the connection.
// Returns an SQLite result code.
int registerFunctions(sqlite3* db);

}  // namespace hist::backend::sqlite
