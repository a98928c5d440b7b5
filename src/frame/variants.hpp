#pragma once
// What a record class declares next to its own members: its table, its statement
// templates, its IniciaRs keywords, the argument lists where it differs from the
// common interface, and the facts on which the shared members differ between
// classes. The frame (record.hpp) reads the declaration; a class file holds this,
// its own members and its interface list, and nothing of the shared behaviour.
//
// Fields with a default hold what most classes do; a declaration names the fields
// where its class differs, and every field without a default.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/statement.hpp"
#include "platform/dispatch.hpp"

namespace hist::frame {

// How IniciaRs treats the caller's connection and orders its steps.
enum class OpenForm : uint8_t {
    // New recordset, SELECT, DataMembers.Clear, connection, open. The caller's
    // connection is used if set; if unset one is asked for and written back into
    // the caller's argument.
    A,
    // New recordset, SELECT, connection, open, DataMembers.Clear. The caller's
    // connection is accepted and ignored: a fresh one, kept in a local, is used.
    B,
    // The document classes: the steps of B, and IniciaRs takes no connection argument
    // at all (its list is sSelecSql and id); a fresh connection, kept in a local.
    E,
    // New recordset, SELECT, open, DataMembers.Clear. The caller's connection is handed
    // to AbrirRs as it is, set or unset; the class never asks for one itself.
    C,
    // The connection first (as in A: used if set, else asked for and written back into
    // the caller's argument), then new recordset, SELECT, open, DataMembers.Clear.
    D,
};

// FindRecord's field position when the class searches the field its Index argument names.
inline constexpr int16_t kFindByIndex = -1;

// One IniciaRs keyword. The keyword is compared exactly; a keyword the class does not
// list opens the default SELECT and writes "todos" back.
struct Selection {
    std::string_view keyword;
    // Appended to the default SELECT, or the whole statement where `whole` says so; its
    // holes are {id} and the date hole ({F:dtFecha} or {FL:dtFecha}) of IniciaRs's
    // arguments.
    Template clause;
    bool restoresOrder = true;   // the saved order is restored (where the class restores it on IniciaRs)
    bool whole = false;          // the clause is the whole statement, not appended to the SELECT
    std::string_view keyBack = {};  // written back into sSelecSql (the key of the saved order)
};

// Where a value that a member writes into a field comes from.
enum class ValueSource : uint8_t {
    RecordCount,            // the recordset's RecordCount (a temporary row number)
    NuevoCodigoPlusCount,   // NuevoCodigo(GetConnection) + RecordCount
    Counter,                // a 16-bit counter from 1 (UpdateId)
    NuevoCodigoOfId,        // NuevoCodigo(vId, GetConnection), asked anew at each use
    NuevoCodigoOfIdAlone,   // NuevoCodigo(vId) with no connection (the call opens its own)
    Constant,               // the FieldDefault's constant
    TimeOfDay,              // the clock's present time of day
    TodayShortDate,         // today's date as "Short Date" text
    // UpdateId: a 16-bit counter that starts at NuevoCodigo(vId, GetConnection), asked
    // once before the loop, and is raised per numbered row.
    NuevoCodigoCounter,
    // NuevoCodigo within the series the FieldDefault's constant names, with no
    // connection (the call opens its own): the documents' new row.
    NuevoCodigoInSeries,
};

// One field AddNew writes into the new row when bDefVal holds.
struct FieldDefault {
    std::string_view field;
    ValueSource source;
    Variant constant = {};  // what ValueSource::Constant writes
};

// What Update does: UpdateBatch with its scope (3 every pending row, 1 the current
// one); with the guard, nothing at all on an empty selection.
struct UpdateForm {
    bool guard = false;
    int32_t scope = 3;
    // Before the UpdateBatch, the current row's field `copyInto` := its field `copyFrom`
    // (the document classes keep their bar-code text equal to the number this way).
    std::string_view copyInto = {};
    std::string_view copyFrom = {};
    // Before the UpdateBatch (after the copy), this field of the current row := the
    // clock's present time of day: the delivery note tells the time of its last write.
    std::string_view stampTime = {};
};

// What Delete does after marking the current row deleted.
enum class DeleteForm : uint8_t {
    Batch,  // UpdateBatch over every pending row
    Plain,  // nothing more: the deletion stays pending until Update
    Line,   // the recordset's Update: the deletion stays pending until the class's Update
};

// How UpdateId numbers the rows a host built with AddNew: the parent field := vId,
// "ID" := the key source, "Fecha" := dFecha where written, Update, next row.
struct UpdateIdForm {
    std::string_view parent = {};               // the parent field
    ValueSource key = ValueSource::Counter;     // what "ID" receives
    bool writesFecha = true;                    // "Fecha" := dFecha
    bool moveFirstAfter = true;                 // MoveFirst once every row is numbered
    bool countGuard = false;                    // entered only while RecordCount is not 0
    bool onlyUnnumbered = false;                // only rows whose "ID" is -1, the mark AddNew leaves
};

// How UpdateadAffectCurrent gives the current row to a parent: the parent field := vId,
// "ID" := the key source (a Counter gives the current row the counter's first value),
// then Update of that row alone.
struct AffectCurrentForm {
    std::string_view parent = "Código";
    ValueSource key = ValueSource::RecordCount;
    bool writesId = true;   // false: the parent field alone is written
    bool batch = false;     // true: UpdateBatch of the current row instead of the recordset's Update
};

// The argument list of a member where the class's differs from the common interface.
struct Signature {
    std::string_view member;
    std::vector<Param> params;
};

// Which columns the listing ToHtmlGrid walks and where each cell's value comes from.
enum class ListingWalk : uint8_t {
    RecordFields,   // i over the recordset's Fields.Count; cell i is Fields(i)
    GridColumns,    // i over the grid's Count; cell i is Fields(i)
    GridDataField,  // i over the grid's Count; the cell is Fields(<column i>.DataField)
};

// The operators CreateFilter takes from iType, and what it does beyond the base.
enum class FilterForm : uint8_t {
    // "1" gives ">=", "2" gives "<=", anything else "Like" on text and "=" elsewhere.
    // The line classes also take this form.
    Base,
    // As Base, and "11" gives ">=", "12" gives "<=".
    WideRange,
    // "1", "10", "12" give ">="; "2", "11", "13" give "<="; a 16-bit integer field
    // counts as a number; on number and boolean fields a combo box is a three-way
    // choice by its ListIndex (0 "<> 0", 1 "= 0", else nothing).
    Orders,
};

// How a document class tells that a document is invoiced (bEstaFacturado and
// EstaFacturado): by its "Facturado" code, or, on the work order, by "Cerrada" holding
// the text "Cerrada". EstaFacturado reads a one-row selection, where a Null field
// gives false or fails 94 by class.
enum class InvoicedForm : uint8_t {
    Facturado,            // "Facturado" <> 0; EstaFacturado fails on a Null field
    FacturadoNullFalse,   // "Facturado" <> 0; EstaFacturado gives false on a Null field
    Cerrada,              // "Cerrada" = "Cerrada"; EstaFacturado gives false on a Null field
};

// The facts on which the members every document kind shares (src/documents/) differ.
struct DocumentForms {
    InvoicedForm invoiced = InvoicedForm::Facturado;
    // iQDocumento gives "Doc_E" as a 32-bit integer instead of a Double.
    bool sourceIsLong = false;
};

// What ValidaDefinedSize answers for a field.
enum class DefinedSizeForm : uint8_t {
    Table,             // 32-bit integer Precision - 5, double Precision, text DefinedSize, else 10
    LongTextConstant,  // as Table, but long text answers 536870910 whatever its DefinedSize
    WholePrecision,    // as Table, but a 32-bit integer answers its whole Precision
};

// How ValidaKey judges a printable key.
enum class KeyForm : uint8_t {
    Table,              // by the field's type alone
    SelectionReplaces,  // with text selected in the control ("SelLength" not 0) any key passes
    WholePrecision,     // as Table, but a 32-bit integer takes its whole Precision
};

struct ClassVariants {
    std::string_view className = {};  // the class's registered name
    std::string_view table = {};      // what sClassName returns; fills {table} in the templates

    // ---- statements ----
    Template select = {};                     // IniciaRs's default SELECT, without a WHERE clause
    std::vector<Selection> selections = {};   // the keywords beyond "todos"
    Template nuevoCodigo = {};                // the maximum NuevoCodigo reads, as "Nuevo_Codigo"
    bool nuevoCodigoCloses = false;      // close its recordset after reading
    // The maximum plus 1 only while its text fits the DefinedSize of "Nuevo_Codigo";
    // a longer number gives the maximum itself again.
    bool nuevoCodigoWithinSize = false;
    Template deleteAll = {};
    Template convertirSerie = {};
    // The rows whose obtenerColField ObtenerCol gathers; {vId}, {dtFecha}, and on the
    // documents {sSerie}, {S:dtFchIni}, {S:dtFchFin}, {dDesde}, {dHasta}.
    Template obtenerCol = {};
    int obtenerColBase = 1;       // the iBase ObtenerCol reads with
    std::string_view obtenerColField = "ID";
    Template codigoLibre = {};    // the rows CodigoLibre looks for; {vId}
    std::vector<NamedStatement> statements = {};  // the templates of the class's own members

    // ---- argument lists that differ from the common interface ----
    std::vector<Signature> signatures = {};

    // ---- opening ----
    OpenForm open = OpenForm::A;
    bool orderOnIniciaRs = false;  // restore the saved order at the end of IniciaRs
    bool orderOnRequery = false;   // ... and of Requery
    bool relaysMoveComplete = true;  // the recordset's MoveComplete is raised as the class's own
    std::string_view requeryDefaultKey = "Todos";  // written into an empty sSelecSql by Requery

    // ---- editing ----
    std::vector<FieldDefault> addNewDefaults = {{"ID", ValueSource::RecordCount}};
    UpdateForm update = {};
    DeleteForm del = DeleteForm::Batch;
    int16_t findField = 1;  // the field FindRecord searches, by position
    // With findField kFindByIndex: a non-zero Index searches its field by prefix
    // ("<name> Like '<Criteria>*'"); Index 0 compares field 0 whole.
    bool findPrefix = false;
    int16_t deleteAllBase = 4;  // the iBase of DeleteAll's connection and statement
    UpdateIdForm updateId = {};
    AffectCurrentForm affectCurrent = {};

    // ---- record tools ----
    std::string_view permissionGroup = {};  // the rights group SeguridadPermiso asks about
    FilterForm filter = FilterForm::Base;
    DefinedSizeForm definedSize = DefinedSizeForm::Table;
    KeyForm key = KeyForm::Table;

    // ---- listings (ToHtmlGrid, ToHtml, ToTxt) ----
    ListingWalk listingWalk = ListingWalk::RecordFields;
    bool listingSavedOrder = true;  // false: a clone sorts by field 0, GetOrder is not asked
    bool listingSums = false;       // the document classes' block of sums after the table

    // ---- the members every document kind shares ----
    DocumentForms document = {};

    // The declared argument list of a member, or null for the common one.
    const std::vector<Param>* signatureOf(std::string_view member) const;
    // Every statement form of the class with {table} filled, named as
    // "IniciaRs[<keyword>]", "NuevoCodigo", ..., then the own members' statements.
    std::vector<std::pair<std::string, std::string>> templates() const;
};

}  // namespace hist::frame
