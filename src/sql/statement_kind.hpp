#pragma once

namespace hist::sql {

// What a call expects a statement to do: read (a selection) or write.
enum class StatementKind { Read, Write };

}  // namespace hist::sql
