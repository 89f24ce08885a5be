// Export of an order to a spreadsheet: a copy of the dealership's template with the order's lines in it.
#pragma once

#include "app/session.h"
#include "common/date.h"
#include "data/connection.h"
#include "output/spreadsheet.h"

#include <cstdint>
#include <functional>
#include <string>

namespace output {

/// The file of an order, as the system writes paths: "SERVER\StkOrder\ORNo_25_05-Apr-05.xls". The same order
/// on another date is another file.
[[nodiscard]] std::string exportFile(const Session &session, const std::string &orderNumberText,
                                     Date orderDate);

/// Deletes the file if it exists and copies the template "FlashFrm\Ord.Xls" to it. Errors are skipped: a
/// missing template or folder shows when the workbook is opened. Whether somebody has the file open is asked
/// before (workbook_lock.h).
void Copy_Ex(const Session &session, const std::string &file);

/// Told after each line; `total` is the number of lines.
using LineProgress = std::function<void(std::int64_t done, std::int64_t total)>;

/// Writes part code, part name, minimum order quantity, quantity and sale rate of each line (`Stock_OrdSub`
/// with `Mast_Items`) into sheet "Ord", from row 2 on in the order of `SlNo`, and saves. The template's
/// headings and formulas stay. Throws what the spreadsheet application and the databases throw, and
/// RunTimeError(Overflow) beyond row 32,767.
void exportOrder(Spreadsheets &spreadsheets, const data::Connection &conYear, const std::string &file,
                 double orderNumber, const LineProgress &progress);

} // namespace output
