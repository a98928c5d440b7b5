#pragma once
// The tool members as installed into the frame's hook table (frame/record_tools.hpp),
// each taking the class first. installFilterTools() (filter_tools.hpp) installs them.
#include <cstdint>
#include <string>

#include "frame/record.hpp"
#include "platform/variant.hpp"

namespace hist::tools {

// ---- saved filters and orders (saved_views.cpp) ----
// The settings key of one view of a class:
// "<application key>Configuracion\registros\<table>\<sLlave>\".
std::string viewKey(frame::RecordClass& cls, const std::string& sLlave);
std::string getFilter(frame::RecordClass& cls, const std::string& sLlave);
void setFilter(frame::RecordClass& cls, std::string& Criteria, std::string& sLlave);
void getOrder(frame::RecordClass& cls, int16_t& Index, std::string& Mode, const std::string& sLlave);
void setOrder(frame::RecordClass& cls, int16_t& Index, std::string& Mode, std::string& sLlave);
void aplyFilter(frame::RecordClass& cls, const std::string& Criteria);
// GetOrder then SetOrder under the same key: the step that ends IniciaRs and Requery.
void restoreOrder(frame::RecordClass& cls, std::string& key);

// ---- filter builder (create_filter.cpp) ----
std::string createFilter(frame::RecordClass& cls, Variant& ctl, std::string& iType);

// ---- field validation (validation.cpp) ----
int32_t validaDefinedSize(frame::RecordClass& cls, Variant& Text);
bool validaKey(frame::RecordClass& cls, Variant& Text, int16_t KeyAscii);
bool validaValue(frame::RecordClass& cls, Variant& Text);

// ---- rights (permissions.cpp) ----
// The key of the class's permission group:
// GetRutaSeguridad("<application key>Seguridad\") + "Seguridad\<group>\".
std::string permissionKey(frame::RecordClass& cls);
bool seguridadPermiso(frame::RecordClass& cls, std::string& sId);

}  // namespace hist::tools
