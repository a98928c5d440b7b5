#include "tools/listing_tools.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/record.hpp"
#include "frame/services/helpers.hpp"
#include "platform/clock.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "tools/listing_text.hpp"
#include "tools/tool_members.hpp"

namespace hist::tools {

using frame::ListingWalk;
using frame::RsPtr;
using frame::RecordClass;
using listing::OutputFile;
using listing::upperCase;

namespace {

std::string tableOf(const RecordClass& cls) { return std::string(cls.variants().table); }
std::string sourceOf(const RecordClass& cls) { return std::string(cls.variants().className); }

// "<application path>/rpt/<name>"
std::string reportFolderFile(const std::string& name) {
    return (std::filesystem::path(application().Path()) / "rpt" / name).string();
}

// ------------------------------------------------------------ the grid's columns

// The grid's columns as the listing reads them: a host's GridColumns directly, any
// other object by name (Count, Item, and the column's Visible, Caption, Alignment,
// DataField), as a late-bound call on the grid control would.
class Columns {
public:
    // Nothing is asked of the object until the walk needs it, so a wrong one fails
    // after the head of the file is written, at its first use.
    explicit Columns(const Variant& v) : holder_(v), grid_(v.objectAs<GridColumns>()) {}

    int32_t count() const {
        if (grid_) return grid_->Count();
        return rt::CLng(call(holder_, "Count"));
    }

    class Column {
    public:
        bool visible() const { return col_ ? col_->Visible() : rt::CBool(get("Visible")); }
        std::string caption() const { return col_ ? col_->Caption() : rt::CStr(get("Caption")); }
        int32_t alignment() const { return col_ ? col_->Alignment() : rt::CLng(get("Alignment")); }
        std::string dataField() const { return col_ ? col_->DataField() : rt::CStr(get("DataField")); }

    private:
        friend class Columns;
        Variant get(std::string_view member) const { return call(late_, member); }
        std::shared_ptr<GridColumn> col_;
        Variant late_;
    };

    Column item(int32_t i) const {
        Column c;
        if (grid_) {
            c.col_ = grid_->Item(i);
            if (!c.col_) raise(err::ObjectNotSet, err::SrcRuntime);
        } else {
            Args args{Variant(i)};
            c.late_ = call(holder_, "Item", args);
        }
        return c;
    }

private:
    static Variant call(const Variant& obj, std::string_view member) {
        Args none;
        return hist::call(obj, member, none);
    }
    static Variant call(const Variant& obj, std::string_view member, Args& args) {
        return hist::call(obj, member, args);
    }
    Variant holder_;
    std::shared_ptr<GridColumns> grid_;
};

// ------------------------------------------------------------ choosing the recordset

// The recordset a listing reads: a sorted clone of the primary, or the primary
// itself; then, when asked, the saved filter applied and the rows read again. Null
// when the clone has no rows: the listing then writes nothing.
RsPtr chooseRecordset(RecordClass& cls, bool bDoclone, std::string& sSelecSql, bool bFilter) {
    RsPtr primary = cls.primaryRecordset();
    if (!primary) raise(err::ObjectNotSet, sourceOf(cls));
    RsPtr rs;
    if (bDoclone) {
        rs = primary->Clone(-1);
        int16_t index = 0;
        std::string mode;
        if (cls.variants().listingSavedOrder) cls.GetOrder(index, mode, sSelecSql);
        if (rs->RecordCount() == 0) return nullptr;
        auto field = rs->Fields()->Item(Variant(index));
        rs->SetSort(field->Name() + mode);
    } else {
        rs = primary;
    }
    if (bFilter) {
        rs->SetFilter(Variant(cls.GetFilter("Filter")));
        rs->Requery(-1);
    }
    return rs;
}

// To the first row, when there is one.
void toFirstRow(ado::Recordset& rs) {
    if (!(rs.Bof() && rs.Eof())) rs.MoveFirst();
}

// The fields of the recordset, by position, taken once.
std::vector<std::shared_ptr<ado::Field>> fieldsOf(ado::Recordset& rs) {
    auto fields = rs.Fields();
    std::vector<std::shared_ptr<ado::Field>> out;
    const long n = fields->Count();
    out.reserve(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i) out.push_back(fields->Item(Variant(static_cast<int32_t>(i))));
    return out;
}

// Lines 1 to 8 of the HTML listings.
void htmlHead(OutputFile& f, const std::string& table) {
    f.line("<HTML>").line("<HEAD>");
    f.line("<meta http-equiv='Content-Type'content='text/html; charset=iso-8859-1'>");
    f.line("<meta name='GENERATOR' content='Vandrel HtmlPage Express 1.0'>");
    f.raw("<TITLE>").text(application().ProductName()).raw(" - ").text(table).raw("</TITLE>").endl();
    f.line("</HEAD>").endl();
    f.line("<BODY bgcolor=white text=Black>");
}

// "<count> registros. - <today>"
void countLine(OutputFile& f, int32_t count) {
    f.text(rt::Format(Variant(count))).raw(" registros. - ").text(rt::CStr(Variant(DateValue{Clock::today()})));
    f.endl();
}

std::string longDate() { return rt::Format(Variant(DateValue{Clock::today()}), "Long Date"); }

// ------------------------------------------------------------ ToHtmlGrid

// The four sums of the document classes, by the exact name of the field.
struct Sums {
    double base = 0, impuestos = 0, irpf = 0, total = 0;

    void add(ado::Field& field) {
        const std::string name = field.Name();
        double* target = name == "Base"                ? &base
                         : name == "Importe_Impuestos" ? &impuestos
                         : name == "Importe_IRPF"      ? &irpf
                         : name == "Total"             ? &total
                                                       : nullptr;
        if (target) *target += rt::CDbl(field.Value());
    }
};

const char* cellOpening(int32_t alignment) {
    switch (alignment) {
        case 1: return "        <TD align=right><FONT Size=1>";
        case 3: return "        <TD align=left><FONT Size=1>";
        default: return "        <TD align=center><FONT Size=1>";
    }
}

}  // namespace


void toHtmlGrid(RecordClass& cls, Variant& clColfields, bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    const frame::ClassVariants& v = cls.variants();
    RsPtr held = chooseRecordset(cls, bDoclone, sSelecSql, bFilter);
    if (!held) return;
    ado::Recordset& rs = *held;
    const std::string table = tableOf(cls);
    OutputFile f(services::ClsRutasUsuario::shared()->GetRutaFichero(table + ".htm"), sourceOf(cls));
    const Columns cols(clColfields);
    auto fields = rs.Fields();
    // How many columns the walk takes, asked afresh at each walk.
    auto width = [&]() -> int32_t {
        return v.listingWalk == ListingWalk::RecordFields ? static_cast<int32_t>(fields->Count()) : cols.count();
    };

    htmlHead(f, table);
    f.raw(v.listingSums ? "<H1><font size=4 face=Verdana>Listado de " : "<H1><font size=4>Listado de ")
        .text(table)
        .raw("</Font></H1><hr size=2 noshade><Br>")
        .endl();
    f.line("<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=1>");
    f.line("    <TR>");
    for (int32_t i = 0, n = width(); i < n; ++i) {
        const Columns::Column c = cols.item(i);
        if (c.visible())
            f.raw("        <TH bgcolor=Silver ><FONT Size=1>").text(upperCase(c.caption())).raw("</TH></FONT>").endl();
    }
    f.line("    </TR>");

    toFirstRow(rs);
    Sums sums;
    int32_t count = 0;
    const std::vector<std::shared_ptr<ado::Field>> byPosition = fieldsOf(rs);
    auto fieldAt = [&](int32_t i) -> ado::Field& {
        if (i < 0 || static_cast<std::size_t>(i) >= byPosition.size()) fields->Item(Variant(i));  // raises 3265
        return *byPosition[static_cast<std::size_t>(i)];
    };
    while (!rs.Eof()) {
        ++count;
        f.raw("    <TR>");
        for (int32_t i = 0, n = width(); i < n; ++i) {
            if (v.listingSums) sums.add(fieldAt(i));
            const Columns::Column c = cols.item(i);
            if (!c.visible()) continue;
            f.raw(cellOpening(c.alignment()));
            if (v.listingWalk == ListingWalk::GridDataField)
                f.value(fields->Item(Variant(c.dataField()))->Value());
            else
                f.value(fieldAt(i).Value());
            f.raw("</TD></FONT>").endl();
        }
        f.raw("</TR>");
        rs.MoveNext();
    }
    f.line("</TABLE>");
    if (v.listingSums) {
        f.line("<p>&nbsp;</p>");
        f.line("<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=0>");
        f.line("    <TR>");
        f.line("        <TH align=Left bgcolor=Silver ><FONT Size=2><font face=Verdana> Sumas</TH></FONT>");
        f.line("    </TR>");
        f.line("    <TR>");
        for (const char* caption : {" Base Imponible", " Importe Impuestos", " Importe IRPF", " Total"})
            f.raw("        <TH bgcolor=Silver><FONT Size=1>").raw(caption).raw("</TH></FONT>").endl();
        f.line("    </TR>");
        for (double sum : {sums.base, sums.impuestos, sums.irpf, sums.total})
            f.raw("        <TD align=right><FONT Size=1>").value(Variant(sum)).raw("</TD></FONT>").endl();
        f.raw("</TR>");
        f.line("</TABLE>");
        f.line("<HR>");
        f.line("<P><FONT Size=2>");
        countLine(f, count);
        f.line("</P>");
    } else {
        f.line("<P><FONT Size=2>");
        countLine(f, count);
        f.line("<HR>");
    }
    f.line("</BODY>");
    f.line("</HTML>");
    f.close();
}

// ------------------------------------------------------------ ToHtml, ToTxt

void toHtml(RecordClass& cls, bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    RsPtr held = chooseRecordset(cls, bDoclone, sSelecSql, bFilter);
    if (!held) return;
    ado::Recordset& rs = *held;
    const std::string table = tableOf(cls);
    OutputFile f(services::ClsRutasUsuario::shared()->GetRutaFichero(table + ".htm"), sourceOf(cls));
    htmlHead(f, table);
    f.raw("<H1><font size=4>").text(table).raw("</Font></H1><hr size=0 noshade><Br>").endl();
    f.line("<table border='1'; cellpadding='5'; cellspacing='5';width='50' bgcolor = '#FFFFFF'; "
           "bordercolordark = '#C5C5C5' >");
    toFirstRow(rs);
    for (const auto& field : fieldsOf(rs)) {
        f.line("    <TR>");
        f.raw("        <th align='Right'; bgcolor='Silver'><FONT Size=1>").text(upperCase(field->Name()));
        f.raw("        </TH></FONT>").endl();
        f.raw("        <td><font size=").value(Variant(int16_t{1})).raw(">").value(field->Value());
        f.raw("    </TD></FONT>").endl();
        f.raw("</TR>");
    }
    f.line("</TABLE>");
    f.line("<P><FONT Size=2>");
    f.text(longDate()).endl();
    f.line("</BODY>");
    f.line("</HTML>");
    f.close();
}

void toTxt(RecordClass& cls, bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    RsPtr held = chooseRecordset(cls, bDoclone, sSelecSql, bFilter);
    if (!held) return;
    ado::Recordset& rs = *held;
    const std::string path = listingTxtFile(cls);
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    OutputFile f(path, sourceOf(cls));
    toFirstRow(rs);
    for (const auto& field : fieldsOf(rs)) {
        f.text(upperCase(field->Name())).raw(": ").value(field->Value()).endl();
        f.endl();
    }
    f.endl().endl();
    f.text(longDate()).endl();
    f.endl();
    f.close();
}

std::string listingHtmlFile(const RecordClass& cls) { return reportFolderFile(tableOf(cls) + ".htm"); }
std::string listingTxtFile(const RecordClass& cls) { return reportFolderFile(tableOf(cls) + ".txt"); }

std::string getHtmlFile(RecordClass& cls) { return listingHtmlFile(cls); }

}  // namespace hist::tools
