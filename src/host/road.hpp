#pragma once
// The road of one piece of work, walked through the record classes as a form and
// its host walk it: the pending work orders opened, narrowed by a filter built from
// a form's control and put in the saved order; one order's lines summed and its
// totals written; the order invoiced in one transaction with its lines and its
// delivery note (live tables included); the invoice's totals recomputed and its
// receipt issued; the invoices' listing printed; and the rows that changed, per
// table. Each step is told in a line or two.
#include <iosfwd>

namespace hist::host {

// Returns false when there was no pending order to take (the road is told as far
// as it went); failures raise, after the transaction was rolled back.
bool walkTheRoad(std::ostream& out);

}  // namespace hist::host
