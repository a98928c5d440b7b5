#include "frame/registration.hpp"

#include <map>

#include "ado/connection.hpp"

namespace hist::frame {

namespace {

using B = ClassBuilder<RecordClass>;

// Every frame member by name, with every argument it can take; a class's declared
// argument list (ClassVariants::signatures) picks from them by name.
}  // namespace

const MemberTable& frameMembers() {
    static const MemberTable table = {
        {"sClassName", [](B& b) { b.get("sClassName", &RecordClass::sClassName); }},
        {"GetConnection",
         [](B& b) { b.method("GetConnection", {}, &RecordClass::GetConnection); }},
        {"GetConnectionStrToRpt",
         [](B& b) {
             b.method("GetConnectionStrToRpt",
                      {inout("sDbtype", PT::String), inout("sDataSource", PT::String), inout("sCatalog", PT::String),
                       inout("sUser", PT::String), inout("sPasw", PT::String)},
                      &RecordClass::GetConnectionStrToRpt);
         }},
        {"GetConnectionStr",
         [](B& b) { b.method("GetConnectionStr", {}, &RecordClass::GetConnectionStr); }},
        {"GetRptPath",
         [](B& b) {
             b.method("GetRptPath", {inout("sRptPath", PT::String)}, &RecordClass::GetRptPath);
         }},
        {"DeleteAll",
         [](B& b) {
             b.method("DeleteAll", {in("vId"), inout("dtFecha", PT::Date), optObj("cnnActive")},
                      &RecordClass::DeleteAll);
         }},
        {"IniciaRs",
         [](B& b) {
             b.method("IniciaRs",
                      {optObj("cnnActive"), optRef("sSelecSql", PT::String), optRef("id"),
                       optRef("dtFecha", PT::Date)},
                      &RecordClass::IniciaRs);
         }},
        {"ConvertirSerie",
         [](B& b) {
             b.method("ConvertirSerie", {in("vId"), in("vNewId"), in("sSerie", PT::String), optObj("cnnActive")},
                      &RecordClass::ConvertirSerie);
         }},
        {"NuevoCodigo",
         {[](B& b) {
              b.method("NuevoCodigo", {inout("vCod"), optRef("serie", PT::String), optObj("objCn")},
                       &RecordClass::NuevoCodigoIn);
          },
          {inout("vCod"), optObj("objCn")}}},
        {"EditingRecord", [](B& b) { b.get("EditingRecord", &RecordClass::EditingRecord); }},
        {"AbsolutePosition",
         [](B& b) { b.get("AbsolutePosition", &RecordClass::AbsolutePosition); }},
        {"AddNew",
         {[](B& b) {
              b.method("AddNew",
                       {optRef("bDefVal", PT::Boolean, Variant(true)), optRef("bIsInvoiced", PT::Boolean, Variant(true))},
                       &RecordClass::AddNewDocument);
          },
          {optRef("bDefVal", PT::Boolean, Variant(true))}}},
        {"Delete", [](B& b) { b.method("Delete", {}, &RecordClass::Delete); }},
        {"MoveToBookmark",
         [](B& b) {
             b.method("MoveToBookmark", {inout("mybookmark")}, &RecordClass::MoveToBookmark);
         }},
        {"Requery",
         [](B& b) {
             b.method("Requery", {optRef("sSelecSql", PT::String)}, &RecordClass::Requery);
         }},
        {"Update", [](B& b) { b.method("Update", {}, &RecordClass::Update); }},
        {"UpdateId",
         [](B& b) {
             b.method("UpdateId", {inout("vId"), inout("dFecha", PT::Date)}, &RecordClass::UpdateId);
         }},
        {"CnnBeginTrans",
         [](B& b) { b.method("CnnBeginTrans", {}, &RecordClass::CnnBeginTrans); }},
        {"CnnCommitTrans",
         [](B& b) { b.method("CnnCommitTrans", {}, &RecordClass::CnnCommitTrans); }},
        {"CnnRollbackTrans",
         [](B& b) { b.method("CnnRollbackTrans", {}, &RecordClass::CnnRollbackTrans); }},
        {"Cancel", [](B& b) { b.method("Cancel", {}, &RecordClass::Cancel); }},
        {"CancelBatch", [](B& b) { b.method("CancelBatch", {}, &RecordClass::CancelBatch); }},
        {"UpdateadAffectCurrent",
         [](B& b) { b.method("UpdateadAffectCurrent", {inout("vId")}, &RecordClass::UpdateadAffectCurrent); }},
        {"CodigoLibre",
         [](B& b) { b.method("CodigoLibre", {inout("vId"), optObj("objCn")}, &RecordClass::CodigoLibre); }},
        {"ObtenerCol",
         {[](B& b) {
              b.method("ObtenerCol",
                       {inout("vId"), inout("sSerie", PT::String), inout("dtFchIni", PT::Date),
                        inout("dtFchFin", PT::Date), inout("dDesde"), inout("dHasta"), inout("dtFecha", PT::Date),
                        optObj("objCn")},
                       &RecordClass::ObtenerColIn);
          },
          {inout("vId"), inout("dtFecha", PT::Date), optObj("objCn")}}},
        {"ObtenerColRs", [](B& b) { b.method("ObtenerColRs", {}, &RecordClass::ObtenerColRs); }},
        {"MoveFirst", [](B& b) { b.method("MoveFirst", {}, &RecordClass::MoveFirst); }},
        {"MoveLast", [](B& b) { b.method("MoveLast", {}, &RecordClass::MoveLast); }},
        {"MoveNext", [](B& b) { b.method("MoveNext", {}, &RecordClass::MoveNext); }},
        {"MovePrevious",
         [](B& b) { b.method("MovePrevious", {}, &RecordClass::MovePrevious); }},
        {"ExistenRegistros",
         [](B& b) { b.method("ExistenRegistros", {}, &RecordClass::ExistenRegistros); }},
        {"FindRecord",
         {[](B& b) {
             b.method("FindRecord", {in("Criteria", PT::String), optRef("Index", PT::Integer, Variant(int16_t{0}))},
                      &RecordClass::FindRecord);
         },
         {in("Criteria", PT::String)}}},
        {"GetFilter",
         [](B& b) {
             b.method("GetFilter", {in("sLlave", PT::String)}, &RecordClass::GetFilter);
         }},
        {"AplyFilter",
         [](B& b) {
             b.method("AplyFilter", {in("Criteria", PT::String)}, &RecordClass::AplyFilter);
         }},
        {"SetFilter",
         [](B& b) {
             b.method("SetFilter", {inout("Criteria", PT::String), inout("sLlave", PT::String)},
                      &RecordClass::SetFilter);
         }},
        {"SetOrder",
         [](B& b) {
             b.method("SetOrder",
                      {inout("Index", PT::Integer), inout("Mode", PT::String), inout("sLlave", PT::String)},
                      &RecordClass::SetOrder);
         }},
        {"GetOrder",
         [](B& b) {
             b.method("GetOrder", {inout("Index", PT::Integer), inout("Mode", PT::String), in("sLlave", PT::String)},
                      &RecordClass::GetOrder);
         }},
    };
    return table;
}

namespace {


// The value a parameter the class's list leaves out receives: its declared default,
// else Missing for a Variant and the type's zero for a typed one.
Variant leftOut(const Param& p) {
    if (!p.defaultValue.isMissing()) return p.defaultValue;
    return p.type == PT::Variant ? Variant::missing() : zeroOf(p.type);
}

// The member called with the class's own argument list: each declared argument goes
// to the parameter of the same name, the others take leftOut, and what the member
// writes comes back to the declared arguments.
Member withSignature(const Member& common, const std::vector<Param>& declared) {
    std::vector<size_t> slot;
    for (const Param& d : declared) {
        size_t k = 0;
        while (k < common.params.size() && foldName(common.params[k].name) != foldName(d.name)) ++k;
        if (k == common.params.size())
            throw std::logic_error(common.name + " has no parameter " + d.name);
        slot.push_back(k);
    }
    Member m = common;
    m.params = declared;
    m.invoke = [invoke = common.invoke, params = common.params, slot](Object& o, Args& a) {
        Args all;
        for (const Param& p : params) all.push_back(leftOut(p));
        for (size_t j = 0; j < slot.size(); ++j) all[slot[j]] = a[j];
        auto back = [&] {
            for (size_t j = 0; j < slot.size(); ++j) a[j] = all[slot[j]];
        };
        try {
            Variant r = invoke(o, all);
            back();
            return r;
        } catch (...) {
            back();
            throw;
        }
    };
    return m;
}

}  // namespace

bool addMemberFrom(const MemberTable& table, ClassInfo& info, std::string_view name, const ClassVariants& v) {
    auto it = table.find(name);
    if (it == table.end()) return false;
    ClassInfo common(info.name(), {});
    B b(common);
    it->second.add(b);
    const Member& m = common.members().front();
    const std::vector<Param>* declared = v.signatureOf(name);
    if (!declared && !it->second.common.empty()) declared = &it->second.common;
    if (declared) info.add(withSignature(m, *declared));
    else info.add(m);
    return true;
}

void addDataSourceMembers(ClassInfo& info) {
    B b(info);
    b.method("Class_GetDataMember", {inout("DataMember", PT::String), inout("Data")},
             &RecordClass::Class_GetDataMember)
        .unlisted();
    b.get("DataMembers", &RecordClass::dataMembers).unlisted();
    b.method("DataMemberChanged", {in("DataMember", PT::String)}, &RecordClass::DataMemberChanged).unlisted();
}

void checkOwnMembersListed(const ClassInfo& own, InterfaceList order) {
    for (const Member& m : own.members()) {
        bool listed = false;
        for (std::string_view name : order) listed = listed || foldName(name) == foldName(m.name);
        if (!listed)
            throw std::logic_error(own.name() + ": own member " + m.name + " is not on the interface list");
    }
}

}  // namespace hist::frame
