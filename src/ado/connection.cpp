#include "ado/connection.hpp"

#include "platform/error.hpp"

namespace hist::ado {
Connection::~Connection() {
    // A connection dropped inside a transaction gives its work up, as the engine would.
    if (session_) {
        try {
            while (session_->depth() > 0) session_->rollback();
        } catch (...) {
        }
    }
}

void Connection::Open(const backend::DataSource& ds) {
    if (session_) raise(err::ObjectOpen, err::SrcConnection);
    session_ = backend::openSession(ds);
    ds_ = ds;
}

void Connection::Open(std::unique_ptr<backend::Session> session) {
    if (session_) raise(err::ObjectOpen, err::SrcConnection);
    if (!session) raise(err::InvalidConnection, err::SrcConnection);
    session_ = std::move(session);
}

void Connection::Close() {
    if (!session_) raise(err::ObjectClosed, err::SrcConnection);
    if (session_->depth() > 0) raise(err::InTransaction, err::SrcConnection);
    session_.reset();
}

backend::Session& Connection::openSession(long closedError) {
    if (!session_) raise(closedError, err::SrcConnection);
    return *session_;
}

backend::Session& Connection::session() { return openSession(err::InvalidConnection); }

int Connection::BeginTrans() { return openSession(err::ObjectClosed).begin(); }

void Connection::CommitTrans() {
    backend::Session& s = openSession(err::ObjectClosed);
    if (s.depth() == 0) raise(err::NoTransaction, err::SrcConnection, "No transaction is active.");
    s.commit();
}

void Connection::RollbackTrans() {
    backend::Session& s = openSession(err::ObjectClosed);
    if (s.depth() == 0) raise(err::NoTransaction, err::SrcConnection, "No transaction is active.");
    s.rollback();
}

int Connection::TransactionLevel() const noexcept { return session_ ? session_->depth() : 0; }

long long Connection::Execute(std::string_view sent) { return session().execute(sent); }

void Connection::Query(std::string_view sent, backend::RowSink& sink) { session().query(sent, sink); }

void Connection::report(std::string_view op, std::string_view text) {
    if (hook_) hook_(op, text, *this);
}

}  // namespace hist::ado
