#pragma once
// RecordClass: what every record class is. One primary recordset (adoPrimaryRS)
// and the connection it came on (cnnPrimary); navigation, editing, transactions,
// the data-source members and the statement members over that table. A class
// derives from it, hands it its declaration (variants.hpp) and adds its own
// members; registration.hpp publishes the members in the class's interface order.
//
// Failures pass to the caller unchanged. What a member did before the failure
// stands (an IniciaRs that fails after replacing the recordset leaves the new,
// never-opened one in place).
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/services/data_service.hpp"
#include "frame/statement.hpp"
#include "frame/variants.hpp"
#include "platform/collection.hpp"
#include "platform/host_objects.hpp"
#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::frame {

using services::ConnPtr;
using services::RsPtr;

// The iBase of nearly every data operation.
inline constexpr int kBase = 4;

class MoveRelay;

// What a reading member does when the field it reads into a typed argument is Null:
// Keep leaves the argument as it was, Empty writes the type's empty value ("", 0,
// False, 0:00:00), Fail raises 94 as assigning Null to a typed variable does.
enum class OnNull : uint8_t { Keep, Empty, Fail };

// The recordset's AffectEnum: the current row, or every pending one.
inline constexpr int kAffectCurrent = 1;
inline constexpr int kAffectAll = 3;

class RecordClass : public Object {
public:
    explicit RecordClass(const ClassVariants& variants);
    ~RecordClass() override;
    RecordClass(const RecordClass&) = delete;
    RecordClass& operator=(const RecordClass&) = delete;

    std::string_view typeName() const override { return v_.className; }
    const ClassVariants& variants() const noexcept { return v_; }

    // ---- connection and report data ----
    std::string sClassName() const;
    ConnPtr GetConnection();
    void GetConnectionStrToRpt(std::string& sDbtype, std::string& sDataSource, std::string& sCatalog,
                               std::string& sUser, std::string& sPasw);
    std::string GetConnectionStr();
    std::string GetRptPath(std::string& sRptPath);

    // ---- opening ----
    void IniciaRs(ConnPtr& cnnActive, std::string& sSelecSql, Variant& id, DateValue& dtFecha);
    void Requery(std::string& sSelecSql);

    // ---- position and editing ----
    bool EditingRecord();
    int32_t AbsolutePosition();
    void AddNew(bool& bDefVal);
    // The document classes' AddNew: bIsInvoiced is accepted and never read.
    void AddNewDocument(bool& bDefVal, bool& bIsInvoiced);
    void Delete();
    void MoveToBookmark(Variant& mybookmark);
    void Update();
    void Cancel();
    void CancelBatch();
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    bool ExistenRegistros();
    // Searches the field the class declares, or field Index where it searches by Index.
    void FindRecord(const std::string& Criteria, int16_t Index = 0);

    // ---- transactions on cnnPrimary ----
    void CnnBeginTrans();
    void CnnCommitTrans();
    void CnnRollbackTrans();

    // ---- statement members (the class's templates) ----
    // vCod goes into the template where it has a hole for it.
    Variant NuevoCodigo(const Variant& vCod, ConnPtr& objCn);
    // NuevoCodigo with every value a template may scope by: the parent's number vCod,
    // or the document series (the template's {serie}, quoted).
    Variant NuevoCodigoIn(const Variant& vCod, const std::string& serie, ConnPtr& objCn);
    // dtFecha goes into the template where it has a hole for it.
    void DeleteAll(const Variant& vId, const DateValue& dtFecha, ConnPtr& cnnActive);
    void ConvertirSerie(const Variant& vId, const Variant& vNewId, const std::string& sSerie,
                        ConnPtr& cnnActive);
    void UpdateId(Variant& vId, DateValue& dFecha);
    // The current row alone given to the parent vId (AffectCurrentForm), then Update.
    void UpdateadAffectCurrent(Variant& vId);
    // True when no row answers the class's CodigoLibre selection for vId.
    bool CodigoLibre(Variant& vId, ConnPtr& objCn);
    // The "ID" of each row of the class's ObtenerCol selection, no key; no object when
    // it has no rows.
    std::shared_ptr<Collection> ObtenerCol(Variant& vId, DateValue& dtFecha, ConnPtr& objCn);
    // ObtenerCol with every value a template may select by: the documents' customer
    // pattern vId, series pattern, date range (as day counts) and number range.
    std::shared_ptr<Collection> ObtenerColIn(Variant& vId, std::string& sSerie, DateValue& dtFchIni,
                                             DateValue& dtFchFin, Variant& dDesde, Variant& dHasta,
                                             DateValue& dtFecha, ConnPtr& objCn);
    // The same over the primary recordset as it stands; the cursor is left at EOF.
    std::shared_ptr<Collection> ObtenerColRs();

    // ---- saved filters and orders (saved_views.cpp) ----
    std::string GetFilter(const std::string& sLlave);
    void AplyFilter(const std::string& Criteria);
    void SetFilter(std::string& Criteria, std::string& sLlave);
    void SetOrder(int16_t& Index, std::string& Mode, std::string& sLlave);
    void GetOrder(int16_t& Index, std::string& Mode, const std::string& sLlave);
    // The settings key of one view of the class:
    // "<application key>Configuracion\registros\<table>\<sLlave>\".
    std::string viewKey(const std::string& sLlave) const;

    // ---- data source ----
    // Hands back adoPrimaryRS when DataMember is exactly "Primary"; swallows failures.
    void Class_GetDataMember(const std::string& DataMember, Variant& Data);
    std::shared_ptr<DataMembers> dataMembers() const { return dataMembers_; }
    void DataMemberChanged(const std::string& name) { dataMembers_->changed(name); }

    // ---- the class event MoveComplete, for C++ hosts ----
    using MoveCompleteHandler = std::function<void()>;
    int subscribeMoveComplete(MoveCompleteHandler h);
    void unsubscribeMoveComplete(int token);

    // ---- for the shared members of the layers above (documents) ----
    // The class's own statement of that name (ClassVariants::statements), filled; a
    // name the class does not declare is a programming error (std::logic_error).
    Statement ownStatement(std::string_view name, HoleValues values) const;
    Statement ownStatement(std::string_view name, std::span<const HoleValue> values) const;
    // The optional-connection rule of a writing member, and a reading member's open.
    static void executeStatement(const Statement& sql, ConnPtr& objCn, int iBase = kBase) {
        execute(sql, objCn, iBase);
    }
    static RsPtr openStatement(const Statement& sql, ConnPtr& objCn, int iBase = kBase) {
        return open(sql, objCn, iBase);
    }

    // The primary recordset and connection as they stand (null when unset).
    const RsPtr& primaryRecordset() const noexcept { return adoPrimaryRS_; }
    const ConnPtr& primaryConnection() const noexcept { return cnnPrimary_; }

protected:
    // ---- helpers for the class's own statement members ----
    std::string table() const { return std::string(v_.table); }
    // A template of the class filled with values ({table} is the class's table).
    Statement fill(const Template& t, HoleValues values) const { return t.fill(values, v_.table); }
    Statement fill(const Template& t, std::span<const HoleValue> values) const { return t.fill(values, v_.table); }
    // The optional-connection rule of a writing member: fill an unset argument from
    // GetConexion(iBase, no object, 0), then run the statement on it.
    static void execute(const Statement& sql, ConnPtr& objCn, int iBase = kBase);
    // A reading member: a new local recordset opened on sql with the connection as
    // it came (unset included).
    static RsPtr open(const Statement& sql, ConnPtr& objCn, int iBase = kBase);
    // The same, left on its last row (of several rows the last one is read), or null
    // when it is at BOF or EOF.
    static RsPtr openAtLastRow(const Statement& sql, ConnPtr& objCn, int iBase = kBase);
    // Reads a field into a typed argument (see OnNull). A non-Null value goes through
    // the runtime's conversion for the argument's type, so a text that is no number
    // fails 13 and a number out of range 6.
    static void readField(ado::Recordset& rs, std::string_view field, std::string& target, OnNull rule);
    static void readField(ado::Recordset& rs, std::string_view field, int16_t& target, OnNull rule);
    static void readField(ado::Recordset& rs, std::string_view field, int32_t& target, OnNull rule);
    static void readField(ado::Recordset& rs, std::string_view field, double& target, OnNull rule);
    static void readField(ado::Recordset& rs, std::string_view field, bool& target, OnNull rule);
    static void readField(ado::Recordset& rs, std::string_view field, DateValue& target, OnNull rule);
    // A Variant argument takes the field as it is, Null included, unless the rule keeps it.
    static void readField(ado::Recordset& rs, std::string_view field, Variant& target, OnNull rule);
    static bool bofAndEof(ado::Recordset& rs);
    // The runtime's sum of a value and a whole number (a Long while it fits).
    static Variant plus(const Variant& v, int32_t n);
    static int32_t recordCount(ado::Recordset& rs);
    // NuevoCodigo's answer from its selection's "Nuevo_Codigo": 1 for Null, the value
    // plus 1 when numeric, anything else as it stands.
    static Variant nextCode(ado::Recordset& rs);
    // The fields AddNew writes into a new row when bDefVal holds; by default the
    // declaration's addNewDefaults. A class whose defaults are its own writes them here.
    virtual void writeNewRowDefaults(ado::Recordset& rs);
    // The "ID" of a line not yet numbered: -1.
    static bool isUnnumbered(const Variant& id);

    // Every row's field (its "ID") from the first to EOF, or no object when there is none.
    static std::shared_ptr<Collection> collectIds(ado::Recordset& r, std::string_view field = "ID");

    // Puts a connection into the class's connection field in place of what it held
    // (the transaction members then work on it).
    void replacePrimaryConnection(ConnPtr cn) { cnnPrimary_ = std::move(cn); }

    // The recordset that the members work on; error 91 while unset.
    ado::Recordset& rs();

private:
    void restoreSavedOrder(const std::string& key);
    // The value a FieldDefault, UpdateId or UpdateadAffectCurrent writes, by its source.
    Variant sourcedValue(ValueSource source, const Variant& vId, const Variant& constant = {});
    void attachEvents();
    void detachEvents();
    void ensureConnection();
    void raiseMoveComplete();
    friend class MoveRelay;

    const ClassVariants& v_;
    RsPtr adoPrimaryRS_;
    ConnPtr cnnPrimary_;
    std::shared_ptr<DataMembers> dataMembers_;
    std::shared_ptr<MoveRelay> relay_;
    std::vector<std::pair<int, MoveCompleteHandler>> moveHandlers_;
    int nextHandler_ = 0;
};

// "SOFTWARE\<CompanyName>\<ProductName>\<Major>.<Minor>\" of the running application,
// asked afresh at every call: the root of the class's settings and rights keys.
std::string applicationKey();

}  // namespace hist::frame
