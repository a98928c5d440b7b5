#include "frame/saved_order.hpp"

#include <utility>

namespace hist::frame {

namespace {
SavedOrderStep& installed() {
    static SavedOrderStep step;
    return step;
}
}  // namespace

void setSavedOrderStep(SavedOrderStep step) { installed() = std::move(step); }

void applySavedOrder(RecordClass& cls, std::string& key) {
    if (const auto& step = installed()) step(cls, key);
}

}  // namespace hist::frame
