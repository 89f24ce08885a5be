#include "forms/frmOrd/frmOrd_words.h"

#include <QCoreApplication>

namespace words {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("frmOrd", text);
}

} // namespace

QList<ui::KeyLine> orderKeys()
{
    return {
        {{}, tr("The order")},
        {tr("F2, F3, F4"),
         tr("a new order, modify an order, call one up to print (Delete); what is not saved is dropped")},
        {tr("Enter"), tr("to the next field; in the order number: loads the order; on a button: presses it")},
        {tr("Alt+C"), tr("chooses the supplier")},
        {tr("Alt+A"), tr("fills the lines with the proposed order")},
        {tr("Alt+L"), tr("to the order lines")},
        {tr("Alt+Y"),
         tr("opens or closes the panel that says why a quantity was proposed; Alt+G there: a part that "
            "is missing")},
        {tr("Alt+S, Alt+X"), tr("saves the order and offers to print it; leaves the program")},
        {tr("Alt+I, Alt+E"), tr("reads lines from a spreadsheet; writes the order to one")},
        {tr("Alt+K"), tr("shows the last text print as it comes out of the printer")},
        {{}, tr("The lines")},
        {tr("Up, Down"), tr("to the row above or below")},
        {tr("Ctrl+Home, Ctrl+End"), tr("to the first line, to the new line at the end")},
        {tr("Enter, Right"), tr("on: part number, part name, order quantity, rate, then a new line")},
        {tr("Left"), tr("back through the same cells")},
        {tr("a letter"), tr("in the part name: opens the part search with that letter")},
        {tr("Escape"), tr("gives the cell its old text back")},
        {tr("Ctrl+Delete"), tr("removes the line")},
        {tr("Ctrl+Shift+Delete"), tr("puts the line removed last back")},
    };
}

QStringList columnTips()
{
    return {
        tr("Number of the line; a stored order is numbered anew when it is loaded"),
        tr("Part number of the item master"),
        tr("Part name of the item master; a letter typed here opens the part search"),
        tr("Quantity sold in the averaging period (sale documents only), from the year databases that cover "
           "it"),
        tr("Days from the first sale in the averaging period to the order date; 0 when nothing was sold"),
        tr("Average quantity that went out per month of the period, at least 1, rounded to a whole number"),
        tr("Present stock in this year's database: all that came in less all that went out, over every stock "
           "point"),
        tr("Minimum quantity of the item master; below it an item is proposed even when the stock covers the "
           "demand "
           "of the months of cover"),
        tr("Minimum order quantity of the item master; the proposal is not raised to it, a smaller quantity "
           "is "
           "warned of"),
        tr("Quantity to order: months of cover times average, less present stock. Lines with 0 are not "
           "saved"),
        tr("Price of one: the dealer price of your price category in the item master, else the sale rate"),
        tr("Order quantity times rate"),
    };
}

} // namespace words
