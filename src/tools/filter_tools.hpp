#pragma once
// The record tools of saved filters and orders, the filter builder, field validation
// and rights. installFilterTools() puts them into the frame's hook table
// (frame::recordTools()) and installs the saved-order step that ends IniciaRs and
// Requery. The host calls it once, before any class is used; calling it again
// installs the same tools again.
namespace hist::tools {

void installFilterTools();

}  // namespace hist::tools
