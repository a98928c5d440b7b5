// The published interface of each comment class: exactly the members its interface
// list names, in that order, with the data-source members callable but unlisted.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "satellites/comentarios.hpp"

namespace hist::satellites {
namespace {

std::vector<std::string> split(const std::string& list) {
    std::vector<std::string> out;
    std::stringstream ss(list);
    std::string item;
    while (std::getline(ss, item, ',')) {
        item.erase(0, item.find_first_not_of(' '));
        out.push_back(item);
    }
    return out;
}

struct InterfaceCase {
    const char* cls;
    const char* members;  // as the class's interface list gives them
};

// The lists as the class descriptions give them ("(property)" marks dropped).
const InterfaceCase kInterfaces[] = {
    {"ClsOrdenesComentarios",
     "sClassName, GetConnection, GetConnectionStrToRpt, GetConnectionStr, DeleteAll, Obtener, Insertar, "
     "IniciaRs, ConvertirSerie, NuevoCodigo, SeguridadPermiso, EditingRecord, AbsolutePosition, AddNew, Delete, "
     "MoveToBookmark, Requery, Update, UpdateId, CnnBeginTrans, CnnCommitTrans, CnnRollbackTrans, Cancel, "
     "MoveFirst, MoveLast, MoveNext, MovePrevious, ExistenRegistros, FindRecord, ValidaDefinedSize, ValidaKey, "
     "ValidaValue, GetFilter, AplyFilter, CreateFilter, SetFilter, SetOrder, GetOrder, GetHtmlFile, ToHtmlGrid, "
     "ToHtml, ToTxt"},
    {"ClsPedidosCliComent",
     "sClassName, GetConnection, ConvertirSerie, GetConnectionStrToRpt, GetConnectionStr, DeleteAll, Obtener, "
     "Insertar, IniciaRs, NuevoCodigo, SeguridadPermiso, EditingRecord, AbsolutePosition, AddNew, Delete, "
     "MoveToBookmark, Requery, Update, UpdateId, CnnBeginTrans, CnnCommitTrans, CnnRollbackTrans, Cancel, "
     "MoveFirst, MoveLast, MoveNext, MovePrevious, ExistenRegistros, FindRecord, ValidaDefinedSize, ValidaKey, "
     "ValidaValue, GetFilter, AplyFilter, CreateFilter, SetFilter, SetOrder, GetOrder, GetHtmlFile, ToHtmlGrid, "
     "ToHtml, ToTxt"},
    {"ClsFacturasComentarios",
     "sClassName, GetConnection, GetConnectionStrToRpt, GetConnectionStr, DeleteAll, Insertar, IniciaRs, "
     "NuevoCodigo, SeguridadPermiso, EditingRecord, AbsolutePosition, AddNew, Delete, MoveToBookmark, Requery, "
     "Update, UpdateId, CnnBeginTrans, CnnCommitTrans, CnnRollbackTrans, Cancel, MoveFirst, MoveLast, MoveNext, "
     "MovePrevious, ExistenRegistros, FindRecord, ValidaDefinedSize, ValidaKey, ValidaValue, GetFilter, "
     "AplyFilter, CreateFilter, SetFilter, SetOrder, GetOrder, GetHtmlFile, ToHtmlGrid, ToHtml, ToTxt"},
    {"ClsAlbaranesComentarios",
     "GetRptPath, sClassName, ConvertirSerie, GetConnection, GetConnectionStrToRpt, GetConnectionStr, DeleteAll, "
     "Insertar, IniciaRs, Obtener, NuevoCodigo, SeguridadPermiso, EditingRecord, AbsolutePosition, AddNew, "
     "Delete, MoveToBookmark, Requery, Update, UpdateId, CnnBeginTrans, CnnCommitTrans, CnnRollbackTrans, Cancel, "
     "MoveFirst, MoveLast, MoveNext, MovePrevious, ExistenRegistros, FindRecord, ValidaDefinedSize, ValidaKey, "
     "ValidaValue, GetFilter, AplyFilter, CreateFilter, SetFilter, SetOrder, GetOrder, GetHtmlFile, ToHtmlGrid, "
     "ToHtml, ToTxt"},
};

class CommentInterface : public ::testing::Test {
protected:
    void SetUp() override { registerCommentClasses(registry); }
    Registry& registry = Registry::global();
};

TEST_F(CommentInterface, ListsExactlyTheInterfaceInOrder) {
    for (const auto& c : kInterfaces) {
        SCOPED_TRACE(c.cls);
        const ClassInfo* info = registry.find(c.cls);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->listedNames(), split(c.members));
    }
}

TEST_F(CommentInterface, DataSourceMembersAreCallableButUnlisted) {
    for (const auto& c : kInterfaces) {
        SCOPED_TRACE(c.cls);
        const ClassInfo* info = registry.find(c.cls);
        ASSERT_NE(info, nullptr);
        for (const char* name : {"Class_GetDataMember", "DataMembers", "DataMemberChanged"}) {
            const Member* m = info->find(name);
            ASSERT_NE(m, nullptr) << name;
            EXPECT_FALSE(m->listed) << name;
        }
    }
}

TEST_F(CommentInterface, ArgumentShapesFollowTheClassVariants) {
    struct ShapeCase {
        const char* cls;
        const char* member;
        std::vector<std::string> params;
    };
    const ShapeCase cases[] = {
        {"ClsOrdenesComentarios", "NuevoCodigo", {"vCod", "objCn"}},
        {"ClsPedidosCliComent", "NuevoCodigo", {"objCn"}},
        {"ClsOrdenesComentarios", "DeleteAll", {"vId", "dtFecha", "cnnActive"}},
        {"ClsFacturasComentarios", "DeleteAll", {"vId", "cnnActive"}},
        {"ClsOrdenesComentarios", "Insertar", {"vCodigo", "sComent", "sDescripcion", "dtFecha", "objCn"}},
        {"ClsAlbaranesComentarios", "Insertar", {"vCodigo", "sComent", "dtFecha", "objCn"}},
        {"ClsOrdenesComentarios", "Obtener", {"vId", "sComent", "sDescripcion", "objCn"}},
        {"ClsPedidosCliComent", "Obtener", {"vId", "sComentarios", "objCn"}},
        {"ClsAlbaranesComentarios", "IniciaRs", {"cnnActive", "sSelecSql", "id", "dtFecha"}},
        {"ClsFacturasComentarios", "FindRecord", {"Criteria"}},
        {"ClsFacturasComentarios", "UpdateId", {"vId", "dFecha"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.cls) + "." + c.member);
        const Member* m = registry.find(c.cls)->find(c.member);
        ASSERT_NE(m, nullptr);
        std::vector<std::string> names;
        for (const auto& p : m->params) names.push_back(p.name);
        EXPECT_EQ(names, c.params);
    }
    // The in/out marks of the interface reach the caller.
    const Member* ins = registry.find("ClsOrdenesComentarios")->find("Insertar");
    EXPECT_FALSE(ins->params[0].byRef);
    EXPECT_TRUE(ins->params[1].byRef);
    EXPECT_TRUE(ins->params[4].optional);
}

TEST_F(CommentInterface, MembersOfOtherClassesAreNotReachable) {
    Args none;
    auto facturas = registry.create("ClsFacturasComentarios");
    for (const char* name : {"Obtener", "ConvertirSerie", "GetRptPath", "CloseRs", "CancelBatch"}) {
        try {
            call(facturas, name, none);
            ADD_FAILURE() << name << " answered";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::NoSuchMember) << name;
        }
    }
}

TEST_F(CommentInterface, ToolMembersNotYetBuiltFailWithNumberFive) {
    auto cls = registry.create("ClsPedidosCliComent");
    struct ToolCase {
        const char* member;
        Args args;
    };
    std::vector<ToolCase> cases = {
        {"GetFilter", {Variant("k")}},
        {"SetFilter", {Variant("Id = 1"), Variant("k")}},
        {"GetOrder", {Variant(int16_t{0}), Variant(""), Variant("todos")}},
        {"SetOrder", {Variant(int16_t{0}), Variant(""), Variant("todos")}},
        {"AplyFilter", {Variant("Id = 1")}},
        {"CreateFilter", {Variant()}},
        {"ValidaDefinedSize", {Variant()}},
        {"ValidaKey", {Variant(), Variant(int16_t{65})}},
        {"ValidaValue", {Variant()}},
        {"SeguridadPermiso", {Variant("Borrar")}},
        {"GetHtmlFile", {}},
        {"ToHtmlGrid", {Variant()}},
        {"ToHtml", {}},
        {"ToTxt", {}},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.member);
        try {
            call(cls, c.member, c.args);
            ADD_FAILURE() << "answered";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::InvalidCall);
            EXPECT_NE(e.description().find(c.member), std::string::npos);
            EXPECT_NE(e.description().find("not available yet"), std::string::npos);
        }
    }
}

TEST(CommentRegistration, ClassNameAndTableBeforeAnyOpening) {
    Registry& registry = Registry::global();
    registerCommentClasses(registry);
    const struct {
        const char* cls;
        const char* table;
    } cases[] = {{"ClsOrdenesComentarios", "HOrdenes_Comentarios"},
                 {"ClsPedidosCliComent", "HPedidos_Clientes_Comentarios"},
                 {"ClsAlbaranesComentarios", "HAlbaranes_Comentarios"},
                 {"ClsFacturasComentarios", "HFacturas_Comentarios"}};
    for (const auto& c : cases) {
        auto obj = registry.create(c.cls);
        EXPECT_EQ(obj->typeName(), c.cls);
        EXPECT_EQ(call(obj, "sClassName"), Variant(c.table));
    }
}

}  // namespace
}  // namespace hist::satellites
