#include "frame/saved_order.hpp"

#include <utility>

#include "frame/record.hpp"
#include "platform/error.hpp"

namespace hist::frame {

namespace {
SavedOrderStep& installed() {
    static SavedOrderStep step;
    return step;
}
}  // namespace

void setSavedOrderStep(SavedOrderStep step) { installed() = std::move(step); }

void applySavedOrder(RecordClass& cls, std::string& key) {
    const auto& step = installed();
    if (!step) return;
    // A damaged saved order (an index past the fields, a direction the recordset
    // refuses, an index that is no number) fails the opening with its own number; the
    // description says which form's saved order it was, since nothing else in the
    // caller's hands points at the settings store.
    const std::string view = key;
    try {
        step(cls, key);
    } catch (const Error& e) {
        throw Error(e.number(), e.source(),
                    "The saved order of " + cls.sClassName() + " (view \"" + view + "\") cannot be applied: " +
                        e.description());
    }
}

}  // namespace hist::frame
