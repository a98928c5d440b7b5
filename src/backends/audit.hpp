#pragma once
// The audit log: every writing statement that an archive session ran, with the
// time, the user, the class and member whose call sent it, and its text (and bound
// values), appended as one JSON line each to a file. Entries of a transaction are
// held until its outermost commit and written then, in one append; a rollback (of
// the transaction, or of a savepoint inside it) drops what it undid. A statement
// that failed is not recorded: it changed nothing.
#include <memory>
#include <string>

#include "backends/engine.hpp"

namespace hist::backend {

// Wraps a session so that its writes are recorded in the log at `path`. The file
// is opened (created when missing) at once; failing that raises an error naming it.
std::unique_ptr<Session> auditedSession(std::unique_ptr<Session> inner, const std::string& path);

}  // namespace hist::backend
