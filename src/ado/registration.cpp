#include "ado/registration.hpp"

#include "ado/connection.hpp"
#include "ado/recordset.hpp"

namespace hist::ado {

void registerAdoClasses(Registry& r) {
    auto cn = r.define<Connection>("Connection");
    cn.method("BeginTrans", {}, [](Connection& c) { return static_cast<int32_t>(c.BeginTrans()); });
    cn.method("CommitTrans", {}, [](Connection& c) { c.CommitTrans(); });
    cn.method("RollbackTrans", {}, [](Connection& c) { c.RollbackTrans(); });
    cn.method("Close", {}, [](Connection& c) { c.Close(); });
    cn.get("State", [](Connection& c) { return static_cast<int32_t>(c.State()); });

    auto rs = r.define<Recordset>("Recordset");
    rs.get("BOF", [](Recordset& s) { return s.Bof(); });
    rs.get("EOF", [](Recordset& s) { return s.Eof(); });
    rs.get("RecordCount", [](Recordset& s) { return static_cast<int32_t>(s.RecordCount()); });
    rs.get("AbsolutePosition", [](Recordset& s) { return static_cast<int32_t>(s.AbsolutePosition()); });
    rs.property(
        "Bookmark", [](Recordset& s) { return s.Bookmark(); },
        [](Recordset& s, const Variant& v) { s.SetBookmark(v); });
    rs.method("MoveFirst", {}, [](Recordset& s) { s.MoveFirst(); });
    rs.method("MoveLast", {}, [](Recordset& s) { s.MoveLast(); });
    rs.method("MoveNext", {}, [](Recordset& s) { s.MoveNext(); });
    rs.method("MovePrevious", {}, [](Recordset& s) { s.MovePrevious(); });
    rs.method("Find",
              {in("Criteria", PT::String), opt("SkipRecords", PT::Long, Variant(static_cast<int32_t>(0))),
               opt("SearchDirection", PT::Long, Variant(static_cast<int32_t>(1))), opt("Start")},
              [](Recordset& s, const std::string& criteria, int32_t skip, int32_t direction, const Variant& start) {
                  s.Find(criteria, skip, direction, start);
              });
    rs.get("EditMode", [](Recordset& s) { return static_cast<int32_t>(s.EditMode()); });
    rs.get("Status", [](Recordset& s) { return static_cast<int32_t>(s.Status()); });
    rs.method("AddNew", {}, [](Recordset& s) { s.AddNew(); });
    rs.method("Update", {}, [](Recordset& s) { s.Update(); });
    rs.method("CancelUpdate", {}, [](Recordset& s) { s.CancelUpdate(); });
    rs.method("UpdateBatch", {opt("AffectRecords", PT::Long, Variant(static_cast<int32_t>(3)))},
              [](Recordset& s, int32_t affect) { s.UpdateBatch(affect); });
    rs.method("CancelBatch", {opt("AffectRecords", PT::Long, Variant(static_cast<int32_t>(3)))},
              [](Recordset& s, int32_t affect) { s.CancelBatch(affect); });
    rs.method("Delete", {opt("AffectRecords", PT::Long, Variant(static_cast<int32_t>(1)))},
              [](Recordset& s, int32_t affect) { s.Delete(affect); });
    rs.method("Requery", {opt("Options", PT::Long, Variant(static_cast<int32_t>(-1)))},
              [](Recordset& s, int32_t options) { s.Requery(options); });
    rs.property(
        "Filter", [](Recordset& s) { return s.Filter(); }, [](Recordset& s, const Variant& v) { s.SetFilter(v); });
    rs.property(
        "Sort", [](Recordset& s) { return s.Sort(); }, [](Recordset& s, const std::string& v) { s.SetSort(v); },
        PT::String);
    rs.method("Clone", {opt("LockType", PT::Long, Variant(static_cast<int32_t>(-1)))},
              [](Recordset& s, int32_t lockType) { return s.Clone(lockType); });
    rs.method("Close", {}, [](Recordset& s) { s.Close(); });
    rs.get("Fields", [](Recordset& s) { return s.Fields(); });
    rs.get("ActiveConnection", [](Recordset& s) { return Variant(ObjectPtr(s.ActiveConnection())); });
    rs.get("State", [](Recordset& s) { return static_cast<int32_t>(s.State()); });

    auto fields = r.define<Fields>("Fields");
    fields.method("Item", {in("Index")}, [](Fields& f, const Variant& index) { return f.Item(index); });
    fields.get("Count", [](Fields& f) { return static_cast<int32_t>(f.Count()); });
    fields.defaultMember("Item");

    auto field = r.define<Field>("Field");
    field.property(
        "Value", [](Field& f) { return f.Value(); }, [](Field& f, const Variant& v) { f.SetValue(v); });
    field.get("Name", [](Field& f) { return f.Name(); });
    field.get("Type", [](Field& f) { return static_cast<int32_t>(f.Type()); });
    field.get("Precision", [](Field& f) { return static_cast<int32_t>(f.Precision()); });
    field.get("DefinedSize", [](Field& f) { return static_cast<int32_t>(f.DefinedSize()); });
    field.get("OriginalValue", [](Field& f) { return f.OriginalValue(); });
}

}  // namespace hist::ado
