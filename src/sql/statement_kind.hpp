#pragma once

namespace hist::sql {

// What a call expects a statement to do: read (a selection) or write.
enum class StatementKind { Read, Write };

// The engine dialect a statement is rendered for: the embedded engine (the
// default) or the server engine. Only the translator and the catalog's DDL read it;
// the layers above ask their connection which one it speaks.
enum class Dialect { Embedded, Server };

// The hidden row identity column every table has on the server engine (the
// embedded engine has its own rowid).
inline constexpr const char* kServerRowId = "hist_rowid";

}  // namespace hist::sql
