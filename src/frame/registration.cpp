#include "frame/registration.hpp"

#include <map>

#include "ado/connection.hpp"

namespace hist::frame {

namespace {

using B = ClassBuilder<RecordClass>;
using Adder = void (*)(B&, const ClassVariants&);

// Omitted listing arguments take the listing's own defaults.
std::vector<Param> listingParams() {
    return {optRef("bDoclone", PT::Boolean, Variant(true)), optRef("sSelecSql", PT::String, Variant("todos")),
            optRef("bFilter", PT::Boolean, Variant(false))};
}

// Every frame member by name. Members whose arguments depend on the class's
// variants pick their shape here.
const std::map<std::string, Adder, std::less<>>& frameMembers() {
    static const std::map<std::string, Adder, std::less<>> table = {
        {"sClassName", [](B& b, const ClassVariants&) { b.get("sClassName", &RecordClass::sClassName); }},
        {"GetConnection",
         [](B& b, const ClassVariants&) { b.method("GetConnection", {}, &RecordClass::GetConnection); }},
        {"GetConnectionStrToRpt",
         [](B& b, const ClassVariants&) {
             b.method("GetConnectionStrToRpt",
                      {inout("sDbtype", PT::String), inout("sDataSource", PT::String), inout("sCatalog", PT::String),
                       inout("sUser", PT::String), inout("sPasw", PT::String)},
                      &RecordClass::GetConnectionStrToRpt);
         }},
        {"GetConnectionStr",
         [](B& b, const ClassVariants&) { b.method("GetConnectionStr", {}, &RecordClass::GetConnectionStr); }},
        {"GetRptPath",
         [](B& b, const ClassVariants&) {
             b.method("GetRptPath", {inout("sRptPath", PT::String)}, &RecordClass::GetRptPath);
         }},
        {"DeleteAll",
         [](B& b, const ClassVariants& v) {
             switch (v.deleteAll) {
                 case DeleteAllForm::NumberAndDate:
                     b.method("DeleteAll", {in("vId"), inout("dtFecha", PT::Date), optObj("cnnActive")},
                              &RecordClass::DeleteAll);
                     break;
                 case DeleteAllForm::NumberOneBlank:
                     b.method("DeleteAll", {in("vId"), optObj("cnnActive")},
                              [](RecordClass& c, const Variant& vId, ConnPtr& cn) { c.DeleteAll(vId, {}, cn); });
                     break;
             }
         }},
        {"IniciaRs",
         [](B& b, const ClassVariants&) {
             b.method("IniciaRs",
                      {optObj("cnnActive"), optRef("sSelecSql", PT::String), optRef("id"),
                       optRef("dtFecha", PT::Date)},
                      &RecordClass::IniciaRs);
         }},
        {"ConvertirSerie",
         [](B& b, const ClassVariants&) {
             b.method("ConvertirSerie", {in("vId"), in("vNewId"), in("sSerie", PT::String), optObj("cnnActive")},
                      &RecordClass::ConvertirSerie);
         }},
        {"NuevoCodigo",
         [](B& b, const ClassVariants& v) {
             switch (v.nuevoCodigo) {
                 case NuevoCodigoForm::WithinCode:
                     b.method("NuevoCodigo", {inout("vCod"), optObj("objCn")},
                              [](RecordClass& c, Variant& vCod, ConnPtr& cn) { return c.NuevoCodigo(vCod, cn); });
                     break;
                 case NuevoCodigoForm::WholeTable:
                     b.method("NuevoCodigo", {optObj("objCn")},
                              [](RecordClass& c, ConnPtr& cn) { return c.NuevoCodigo(Variant(), cn); });
                     break;
             }
         }},
        {"SeguridadPermiso",
         [](B& b, const ClassVariants&) {
             b.method("SeguridadPermiso", {inout("sId", PT::String)}, &RecordClass::SeguridadPermiso);
         }},
        {"EditingRecord", [](B& b, const ClassVariants&) { b.get("EditingRecord", &RecordClass::EditingRecord); }},
        {"AbsolutePosition",
         [](B& b, const ClassVariants&) { b.get("AbsolutePosition", &RecordClass::AbsolutePosition); }},
        {"AddNew",
         [](B& b, const ClassVariants&) {
             b.method("AddNew", {optRef("bDefVal", PT::Boolean, Variant(true))}, &RecordClass::AddNew);
         }},
        {"Delete", [](B& b, const ClassVariants&) { b.method("Delete", {}, &RecordClass::Delete); }},
        {"MoveToBookmark",
         [](B& b, const ClassVariants&) {
             b.method("MoveToBookmark", {inout("mybookmark")}, &RecordClass::MoveToBookmark);
         }},
        {"Requery",
         [](B& b, const ClassVariants&) {
             b.method("Requery", {optRef("sSelecSql", PT::String)}, &RecordClass::Requery);
         }},
        {"Update", [](B& b, const ClassVariants&) { b.method("Update", {}, &RecordClass::Update); }},
        {"UpdateId",
         [](B& b, const ClassVariants&) {
             b.method("UpdateId", {inout("vId"), inout("dFecha", PT::Date)}, &RecordClass::UpdateId);
         }},
        {"CnnBeginTrans",
         [](B& b, const ClassVariants&) { b.method("CnnBeginTrans", {}, &RecordClass::CnnBeginTrans); }},
        {"CnnCommitTrans",
         [](B& b, const ClassVariants&) { b.method("CnnCommitTrans", {}, &RecordClass::CnnCommitTrans); }},
        {"CnnRollbackTrans",
         [](B& b, const ClassVariants&) { b.method("CnnRollbackTrans", {}, &RecordClass::CnnRollbackTrans); }},
        {"Cancel", [](B& b, const ClassVariants&) { b.method("Cancel", {}, &RecordClass::Cancel); }},
        {"MoveFirst", [](B& b, const ClassVariants&) { b.method("MoveFirst", {}, &RecordClass::MoveFirst); }},
        {"MoveLast", [](B& b, const ClassVariants&) { b.method("MoveLast", {}, &RecordClass::MoveLast); }},
        {"MoveNext", [](B& b, const ClassVariants&) { b.method("MoveNext", {}, &RecordClass::MoveNext); }},
        {"MovePrevious",
         [](B& b, const ClassVariants&) { b.method("MovePrevious", {}, &RecordClass::MovePrevious); }},
        {"ExistenRegistros",
         [](B& b, const ClassVariants&) { b.method("ExistenRegistros", {}, &RecordClass::ExistenRegistros); }},
        {"FindRecord",
         [](B& b, const ClassVariants& v) {
             switch (v.find) {
                 case FindField::Second:
                     b.method("FindRecord", {in("Criteria", PT::String)}, &RecordClass::FindRecord);
                     break;
             }
         }},
        {"ValidaDefinedSize",
         [](B& b, const ClassVariants&) {
             b.method("ValidaDefinedSize", {inout("Text")}, &RecordClass::ValidaDefinedSize);
         }},
        {"ValidaKey",
         [](B& b, const ClassVariants&) {
             b.method("ValidaKey", {inout("Text"), in("KeyAscii", PT::Integer)}, &RecordClass::ValidaKey);
         }},
        {"ValidaValue",
         [](B& b, const ClassVariants&) { b.method("ValidaValue", {inout("Text")}, &RecordClass::ValidaValue); }},
        {"GetFilter",
         [](B& b, const ClassVariants&) {
             b.method("GetFilter", {in("sLlave", PT::String)}, &RecordClass::GetFilter);
         }},
        {"AplyFilter",
         [](B& b, const ClassVariants&) {
             b.method("AplyFilter", {in("Criteria", PT::String)}, &RecordClass::AplyFilter);
         }},
        {"CreateFilter",
         [](B& b, const ClassVariants&) {
             b.method("CreateFilter", {inout("ctl"), optRef("iType", PT::String)}, &RecordClass::CreateFilter);
         }},
        {"SetFilter",
         [](B& b, const ClassVariants&) {
             b.method("SetFilter", {inout("Criteria", PT::String), inout("sLlave", PT::String)},
                      &RecordClass::SetFilter);
         }},
        {"SetOrder",
         [](B& b, const ClassVariants&) {
             b.method("SetOrder",
                      {inout("Index", PT::Integer), inout("Mode", PT::String), inout("sLlave", PT::String)},
                      &RecordClass::SetOrder);
         }},
        {"GetOrder",
         [](B& b, const ClassVariants&) {
             b.method("GetOrder", {inout("Index", PT::Integer), inout("Mode", PT::String), in("sLlave", PT::String)},
                      &RecordClass::GetOrder);
         }},
        {"GetHtmlFile", [](B& b, const ClassVariants&) { b.method("GetHtmlFile", {}, &RecordClass::GetHtmlFile); }},
        {"ToHtmlGrid",
         [](B& b, const ClassVariants&) {
             std::vector<Param> p = listingParams();
             p.insert(p.begin(), inout("clColfields"));
             b.method("ToHtmlGrid", std::move(p), &RecordClass::ToHtmlGrid);
         }},
        {"ToHtml", [](B& b, const ClassVariants&) { b.method("ToHtml", listingParams(), &RecordClass::ToHtml); }},
        {"ToTxt", [](B& b, const ClassVariants&) { b.method("ToTxt", listingParams(), &RecordClass::ToTxt); }},
    };
    return table;
}

}  // namespace

bool addFrameMember(ClassInfo& info, std::string_view name, const ClassVariants& v) {
    const auto& table = frameMembers();
    auto it = table.find(name);
    if (it == table.end()) return false;
    B b(info);
    it->second(b, v);
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
