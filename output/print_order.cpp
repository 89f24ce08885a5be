#include "output/print_order.h"

#include "common/date.h"
#include "common/db.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/null_safe.h"
#include "data/paths.h"
#include "data/recordset.h"
#include "output/text_printer.h"

namespace output {

namespace {

using data::Recordset;

const char *orderClause(PrintOrder order)
{
    switch (order) {
    case PrintOrder::PartNumber:
        return "Order by Mast_Items.PartCode";
    case PrintOrder::PartName:
        return "Order by Mast_Items.ItemName";
    default:
        return "";
    }
}

/// Null when either is null.
Value product(const Value &quantity, const Value &rate)
{
    if (isNull(quantity) || isNull(rate))
        return Null{};
    return Null_Cur(quantity) * Null_Cur(rate);
}

void addRow(Recordset &print, const Recordset &line, bool rates)
{
    print.addNew();
    print.setField("OrdNo", line.field("StkOrdNo"));
    print.setField("Date", toText(line.field("StkOrdDate")));
    print.setField("SName", Null_Str(line.field("SupName")));
    print.setField("Town", Null_Str(line.field("Town")));
    print.setField("ItemNo", line.field("PartCode"));
    print.setField("ItemName", line.field("ItemName"));
    print.setField("Qty", line.field("Qty"));
    if (rates) {
        print.setField("Rate", line.field("Rate"));
        print.setField("Amount", product(line.field("Qty"), line.field("Rate")));
    }
    print.update();
}

void fillStkOrd(const PrintContext &context, const PrintRequest &request)
{
    Recordset print("Select * from StkOrd", context.conLayouts, data::CursorType::Dynamic,
                    data::LockType::Pessimistic);
    Recordset lines(printStatement(request.orderNumber, request.order), context.conYear);
    try {
        for (; !lines.eof(); lines.moveNext())
            addRow(print, lines, request.rates);
    } catch (const AppError &) {
        // The lines done so far stay in the scratch table.
        attempt([&] { print.close(); });
        throw;
    }
    print.close();
    lines.close();
}

void printReport(PrintContext &context, const PrintRequest &request)
{
    if (!context.rptOrder) {
        context.dialogs.notice(
            "This installation has no report printing. Answer Yes to print the order in text mode.",
            Dialogs::Icon::Information);
        return;
    }
    Print_Report(*context.rptOrder, context.session, "ORDER FORM", "Ord.No. : " + request.orderNumberText,
                 request.rates ? "Stk_OrdR" : "Stk_Ord", kToPreview);
}

} // namespace

std::string printStatement(std::int16_t orderNumber, PrintOrder order)
{
    // Two blanks behind the number: fixed statement text, there without a clause too.
    return "SELECT Stock_Ord.*, Mast_Items.PartCode, Mast_Items.ItemName, Stock_OrdSub.Qty, "
           "Stock_OrdSub.Rate FROM "
           "(Stock_Ord INNER JOIN Stock_OrdSub ON Stock_Ord.StkOrdNo = Stock_OrdSub.StkOrdNo) INNER JOIN "
           "Mast_Items ON "
           "Stock_OrdSub.ItemCode = Mast_Items.ItemCode Where Stock_Ord.StkOrdNo = " +
           std::to_string(orderNumber) + "  " + orderClause(order);
}

void Print_Form(PrintContext &context, const PrintRequest &request)
{
    Clear_Table(context.conLayouts, "StkOrd");
    context.session.PrintRates = request.rates;
    fillStkOrd(context, request);
    const bool asText = context.dialogs.question(
        "Click - Yes For Dos Printing \r\nClick - No For Windows Printing", Dialogs::Icon::Information);
    if (asText) {
        Print_Order_As_Text(context);
    } else {
        printReport(context, request);
    }
}

void Print_Order_As_Text(PrintContext &context)
{
    const bool written = TextPrinter(context.session, context.conLayouts).writeOrder();
    // The picture of the paper is no part of the print: what goes wrong with it changes nothing.
    if (written && context.showPaper)
        attempt(context.showPaper);
    // Blank at the end: this is not the question that follows saving.
    if (context.dialogs.question("Do You Want Print "))
        attempt([&] { Send_To_Printer(context.shell, context.session.ServerPath, "LPT1", "dinn.txt"); });
}

void Send_To_Printer(Shell &shell, const std::string &folder, const std::string &port,
                     const std::string &file)
{
    const std::string local = data::localPath(folder);
    const std::string drive(firstCharacters(folder, 2));
    shell.start(data::localPath(folder + "\\PPrint.Bat"), {local, drive, port, file}, local);
}

} // namespace output
