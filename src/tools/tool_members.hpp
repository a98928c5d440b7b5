#pragma once
// The record tools, each taking the class first: the filter builder, field
// validation, rights and listings. registration.hpp publishes them as members of the
// classes whose interface lists name them; C++ hosts call them directly.
#include <cstdint>
#include <string>

#include "frame/record.hpp"
#include "platform/variant.hpp"

namespace hist::tools {

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

// ---- listings (listing_tools.cpp) ----
std::string getHtmlFile(frame::RecordClass& cls);
void toHtmlGrid(frame::RecordClass& cls, Variant& clColfields, bool& bDoclone, std::string& sSelecSql, bool& bFilter);
void toHtml(frame::RecordClass& cls, bool& bDoclone, std::string& sSelecSql, bool& bFilter);
void toTxt(frame::RecordClass& cls, bool& bDoclone, std::string& sSelecSql, bool& bFilter);

}  // namespace hist::tools
