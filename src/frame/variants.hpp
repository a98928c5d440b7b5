#pragma once
// The table of variants a record class declares next to its constants. The frame
// (record.hpp) reads it to decide, member by member, which of the known forms the
// class follows; a class file holds this table, its SQL text and its own members,
// and nothing of the shared behaviour.
//
// Each enumeration lists only the forms some class in the library uses; a new form
// is added together with the class that needs it.
#include <cstdint>
#include <string_view>

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
};

// How a date goes into the key clause of IniciaRs.
enum class SelectionDate : uint8_t {
    FechaSql,       // FechaSql(4, date) unconditionally
    ServerBranch,   // bFechaServidor(4) chooses FechaSql(4, date) or FechaSqlLocal(date)
};

// What Update does. All: UpdateBatch over every pending row, rows or none.
enum class UpdateForm : uint8_t { All };

// What Delete does. Batch: Delete the current row, then UpdateBatch over all rows.
enum class DeleteForm : uint8_t { Batch };

// Which field FindRecord searches. Second: the field at position 1.
enum class FindField : uint8_t { Second };

// Whether the class relays its recordset's MoveComplete as its own event.
enum class EventForm : uint8_t { Event };

// The form of the DELETE statement of DeleteAll.
enum class DeleteAllForm : uint8_t {
    // "DELETE  FROM <table>  WHERE (<key> = <vId> AND <date column> = <date> )"
    NumberAndDate,
    // "DELETE  FROM <table> WHERE (<key> = <vId>)"
    NumberOneBlank,
};

// What NuevoCodigo takes and how it scopes the maximum.
enum class NuevoCodigoForm : uint8_t {
    WithinCode,  // argument vCod; suffix " Where Codigo = <vCod>"
    WholeTable,  // no argument; no suffix
};

// How UpdateId numbers the rows. Counter: every row, parent field := vId,
// "ID" := a 16-bit counter from 1, "Fecha" := dFecha, then MoveFirst.
enum class UpdateIdForm : uint8_t { Counter };

// The default AddNew writes into the key field "ID".
enum class AddNewKey : uint8_t {
    RecordCount,             // RecordCount (a temporary row number)
    NuevoCodigoPlusCount,    // NuevoCodigo(GetConnection) + RecordCount
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

// A field with a default holds the form most classes follow; a class's table names
// the fields where it differs, and every field without a default.
struct ClassVariants {
    std::string_view className;  // the class's registered name
    std::string_view table;      // what sClassName returns

    // IniciaRs
    std::string_view selectSql;  // the default SELECT, without a WHERE clause
    // "seleccion" adds " Where (<selectionKey> = <id> AND Fecha = <date> )";
    // "ninguno" adds noneClause.
    std::string_view selectionKey;
    std::string_view noneClause = " Where Id = 0";
    OpenForm open = OpenForm::A;
    SelectionDate selectionDate = SelectionDate::FechaSql;
    bool orderOnIniciaRs = false;  // restore the saved order at the end of IniciaRs
    bool orderOnRequery = false;   // ... and of Requery
    std::string_view requeryDefaultKey = "Todos";  // written into an empty sSelecSql by Requery

    // Editing
    UpdateForm update = UpdateForm::All;
    DeleteForm del = DeleteForm::Batch;
    FindField find = FindField::Second;
    EventForm events = EventForm::Event;
    AddNewKey addNewKey = AddNewKey::RecordCount;

    // Statements
    NuevoCodigoForm nuevoCodigo = NuevoCodigoForm::WholeTable;
    std::string_view nuevoCodigoColumn;  // MAX(<column>)
    bool nuevoCodigoCloses = false;      // close the recordset after reading the maximum
    DeleteAllForm deleteAll = DeleteAllForm::NumberOneBlank;
    std::string_view deleteAllKey;       // the key column of DeleteAll
    std::string_view deleteAllDateColumn = {};  // its date column (NumberAndDate only)
    std::string_view convertirSerieKey;  // the key column of ConvertirSerie
    UpdateIdForm updateId = UpdateIdForm::Counter;
    std::string_view updateIdParent;     // the parent field UpdateId writes

    // Record tools
    std::string_view permissionGroup = {};  // the rights group SeguridadPermiso asks about
    FilterForm filter = FilterForm::Base;
    DefinedSizeForm definedSize = DefinedSizeForm::Table;
    KeyForm key = KeyForm::Table;

    // Listings (ToHtmlGrid, ToHtml, ToTxt)
    ListingWalk listingWalk = ListingWalk::RecordFields;
    bool listingSavedOrder = true;  // false: a clone sorts by field 0, GetOrder is not asked
    bool listingSums = false;       // the document classes' block of sums after the table
};

}  // namespace hist::frame
