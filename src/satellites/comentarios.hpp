#pragma once
// The comment records of the four document kinds: free-text comments, one or more
// rows per document, in a table of their own. ClsOrdenesComentarios has a second
// text column, numbers its rows within their order, and keys them on order and date;
// the other three number across the table and key on the document alone.
#include <string>

#include "frame/record.hpp"

namespace hist {

class Registry;

namespace satellites {

using frame::ConnPtr;

class ClsOrdenesComentarios : public frame::RecordClass {
public:
    ClsOrdenesComentarios();
    void Insertar(const Variant& vCodigo, std::string& sComent, std::string& sDescripcion, DateValue& dtFecha,
                  ConnPtr& objCn);
    void Obtener(const Variant& vId, std::string& sComent, std::string& sDescripcion, ConnPtr& objCn);
};

// The comments of customer orders, delivery notes and invoices share their
// statements; only the table differs.
class DocumentComments : public frame::RecordClass {
public:
    void Insertar(const Variant& vCodigo, std::string& sComent, DateValue& dtFecha, ConnPtr& objCn);

protected:
    using RecordClass::RecordClass;
    void Obtener(const Variant& vId, std::string& sComentarios, ConnPtr& objCn);
};

class ClsPedidosCliComent : public DocumentComments {
public:
    ClsPedidosCliComent();
    using DocumentComments::Obtener;
};

class ClsAlbaranesComentarios : public DocumentComments {
public:
    ClsAlbaranesComentarios();
    using DocumentComments::Obtener;
};

// Has no Obtener: its comments are read through IniciaRs.
class ClsFacturasComentarios : public DocumentComments {
public:
    ClsFacturasComentarios();
};

// Publishes the four classes for dispatch.
void registerCommentClasses(Registry& r);

}  // namespace satellites
}  // namespace hist
