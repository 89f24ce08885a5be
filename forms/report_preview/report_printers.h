// Printers that reports can go to.
//
// Reports reach a printer as PDF, which the print system turns into what the printer understands. A raw queue
// hands on what it gets, unchanged: it is there for the printer streams, and a report sent to it would come
// out as pages of program text.
#pragma once

#include "output/report_document.h"

#include <QPrinter>
#include <QPrinterInfo>

class QPrintDialog;

namespace forms {

[[nodiscard]] bool isRawQueue(const QPrinterInfo &printer);

/// The default printer, or else the first one that reports can go to; a null one when there is none.
[[nodiscard]] QPrinterInfo reportPrinter();

/// Takes the raw queues out of the list of a dialog, with its printer if that is one.
void leaveRawQueuesOut(QPrintDialog &dialog);

/// Gives a printer the paper of a report, with the corner of the paper as its origin.
void setPaper(QPrinter &printer, const output::ReportDocument &document);

} // namespace forms
