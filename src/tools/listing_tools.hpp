#pragma once
// The listings of the record classes: ToHtmlGrid (every row, the grid's columns),
// ToHtml and ToTxt (the fields of the first row, one below the other) and the file
// names a host asks for (GetHtmlFile, and the text file's name of ClsOrdenes).
#include <string>

namespace hist::frame {
class RecordClass;
}

namespace hist::tools {

// "<application path>/rpt/<table>.htm" and ".txt": the application's report folder,
// never the user's working folder where ToHtmlGrid and ToHtml write.
std::string listingHtmlFile(const frame::RecordClass& cls);
std::string listingTxtFile(const frame::RecordClass& cls);

}  // namespace hist::tools
