#pragma once
// Connection: one engine session for the connection's whole life, transaction
// control, and the two ways statements reach the engine (a write, a read into a
// row sink). A new Connection is unopened and can be held as it is; using it then
// fails with the platform's error (3704 for its own members, 3709 for a recordset
// or statement that needs it).
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "backends/engine.hpp"
#include "platform/object.hpp"

namespace hist::ado {

class Connection : public Object {
public:
    // Told of the statements a recordset sends of its own accord: op "Requery" or
    // "UpdateBatch", the text as sent, and the connection.
    using StatementHook = std::function<void(std::string_view op, std::string_view text, Connection& cn)>;

    Connection() = default;
    ~Connection() override;
    std::string_view typeName() const override { return "Connection"; }

    // Opens on a data source (3705 when already open).
    void Open(const backend::DataSource& ds);
    // Opens on a session already made (another backend, a session from a pool).
    void Open(std::unique_ptr<backend::Session> session);
    // 3704 when not open, 3246 inside a transaction.
    void Close();
    int State() const noexcept { return session_ ? 1 : 0; }  // adStateClosed / adStateOpen

    // Transactions; BeginTrans returns the new nesting level (1 for the outermost).
    int BeginTrans();
    void CommitTrans();
    void RollbackTrans();
    int TransactionLevel() const noexcept;

    // A writing statement; returns the rows it touched.
    long long Execute(std::string_view sent);
    // A reading statement streamed into a sink.
    void Query(std::string_view sent, backend::RowSink& sink);

    void setStatementHook(StatementHook hook) { hook_ = std::move(hook); }
    void report(std::string_view op, std::string_view text);

    // The session, for the data layer's own statements (3709 when not open).
    backend::Session& session();
    const backend::DataSource& dataSource() const noexcept { return ds_; }

private:
    backend::Session& openSession(long closedError);

    std::unique_ptr<backend::Session> session_;
    backend::DataSource ds_;
    StatementHook hook_;
};

}  // namespace hist::ado
