#pragma once
// The saved-order step that ends IniciaRs and Requery in the classes that restore the
// user's order (GetOrder under the selection keyword, then SetOrder). The settings
// tools live in a layer above the frame; until they install their step here, the step
// does nothing, so a class opens in the engine's order and nothing else changes.
#include <functional>
#include <string>

namespace hist::frame {

class RecordClass;

// Reads the order saved under `key` and applies it to the class's recordset.
using SavedOrderStep = std::function<void(RecordClass& cls, std::string& key)>;

// Installs the step (an empty function removes it).
void setSavedOrderStep(SavedOrderStep step);
// Runs the installed step, if any. An error of the step keeps its number and source;
// its description names the class's table and the view whose saved order failed.
void applySavedOrder(RecordClass& cls, std::string& key);

}  // namespace hist::frame
