// Printing an order: the scratch table `StkOrd` is filled, then the order goes out as a printer stream or as
// a report.
#pragma once

#include "app/session.h"
#include "common/seams.h"
#include "data/connection.h"
#include "output/report.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace output {

/// How the lines are ordered; the item data of the sort list. 0: no entry selected.
enum class PrintOrder : std::int32_t { None = 0, PartNumber = 1, PartName = 2, Original = 3 };

/// One entry of the sort list `cmbOrder`.
struct PrintOrderEntry
{
    const char *text;
    PrintOrder order;
};
/// "Orginal" is spelled so on purpose.
inline constexpr std::array<PrintOrderEntry, 3> kPrintOrders = {{{"Part Number wise", PrintOrder::PartNumber},
                                                                 {"Part Name wise", PrintOrder::PartName},
                                                                 {"Orginal Order", PrintOrder::Original}}};

struct PrintRequest
{
    std::int16_t orderNumber = 0; ///< the order to print
    std::string orderNumberText;  ///< text of the order-number box, for the report's head
    PrintOrder order = PrintOrder::None;
    bool rates = false; ///< print rates and amounts
};

struct PrintContext
{
    Session &session;
    const data::Connection &conYear;
    const data::Connection &conLayouts;
    Dialogs &dialogs;
    Shell &shell;
    ReportControl *rptOrder = nullptr; ///< null where no report engine is installed
    /// Called when "dinn.txt" was written, before the question about sending it; may be empty.
    std::function<void()> showPaper{};
};

/// The statement that reads an order with its lines, in the wanted order.
[[nodiscard]] std::string printStatement(std::int16_t orderNumber, PrintOrder order);

/// Copies the order into `StkOrd`, asks for text or report printing and prints. Throws what the databases
/// throw.
void Print_Form(PrintContext &context, const PrintRequest &request);

/// Writes "dinn.txt" in the server folder from `StkOrd`, shows it and asks "Do You Want Print ". Failing
/// statements are skipped.
void Print_Order_As_Text(PrintContext &context);

/// Runs "PPrint.Bat" of a folder hidden, with folder, drive, port and file name.
void Send_To_Printer(Shell &shell, const std::string &folder, const std::string &port,
                     const std::string &file);

} // namespace output
