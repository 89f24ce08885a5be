// Waiting and working without letting the windows go blank.
#pragma once

#include "common/currency.h"
#include "common/seams.h"

/// Waits until the clock's seconds since midnight have passed their present value plus `seconds`. The windows
/// stay painted meanwhile. The end of the program ends every wait.
void Wait_Secs(Clock &clock, Currency seconds);

namespace ui {

/// Called again and again by long work, at least every 50 ms: paints what needs painting. What the user types
/// or clicks waits until the work is done, so that no handler starts inside another. Calls in quick
/// succession cost nothing.
void keepPainting();

} // namespace ui
