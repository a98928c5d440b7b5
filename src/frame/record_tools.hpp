#pragma once
// The record tools (saved filters and orders, the filter builder, validation, rights,
// listings) live in a layer above the frame. Each is installed here, once, by that
// layer's installation function; the frame's members of those names call the
// installed tool with the class itself. Until a tool is installed its members answer
// error 5 with a description naming the member, never a wrong result.
#include <cstdint>
#include <functional>
#include <string>

#include "platform/variant.hpp"

namespace hist::frame {

class RecordClass;

struct RecordTools {
    // Rights
    std::function<bool(RecordClass&, std::string& sId)> seguridadPermiso;
    // Validation
    std::function<int32_t(RecordClass&, Variant& Text)> validaDefinedSize;
    std::function<bool(RecordClass&, Variant& Text, int16_t KeyAscii)> validaKey;
    std::function<bool(RecordClass&, Variant& Text)> validaValue;
    // Saved filters and orders
    std::function<std::string(RecordClass&, const std::string& sLlave)> getFilter;
    std::function<void(RecordClass&, const std::string& Criteria)> aplyFilter;
    std::function<void(RecordClass&, std::string& Criteria, std::string& sLlave)> setFilter;
    std::function<void(RecordClass&, int16_t& Index, std::string& Mode, std::string& sLlave)> setOrder;
    std::function<void(RecordClass&, int16_t& Index, std::string& Mode, const std::string& sLlave)> getOrder;
    // Filter builder
    std::function<std::string(RecordClass&, Variant& ctl, std::string& iType)> createFilter;
    // Listings
    std::function<std::string(RecordClass&)> getHtmlFile;
    std::function<void(RecordClass&, Variant& clColfields, bool& bDoclone, std::string& sSelecSql, bool& bFilter)>
        toHtmlGrid;
    std::function<void(RecordClass&, bool& bDoclone, std::string& sSelecSql, bool& bFilter)> toHtml;
    std::function<void(RecordClass&, bool& bDoclone, std::string& sSelecSql, bool& bFilter)> toTxt;
};

// The installed tools; a tools layer assigns its entries in its installation function
// (before any class member runs).
RecordTools& recordTools();

}  // namespace hist::frame
