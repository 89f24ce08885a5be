// The order as a stream of text and ESC/P codes for a dot-matrix printer.
//
// The stream is laid down byte for byte, oddities included: body lines end with a paper advance and no line
// end, the page number is always 1, and no form feed stands but the last byte. Lines are not counted, since
// the printer's own page length does the paging.
#pragma once

#include "app/session.h"
#include "common/currency.h"
#include "data/connection.h"
#include "data/recordset.h"
#include "output/printer_file.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace output {

enum class LineEnd : bool { No, Yes };

/// Alignments of Format_Cell.
enum class Align : std::int32_t { Left = 0, Right = 1, Centre = 2 };

/// Cells of fixed width: trimmed, aligned, cut to the width, blank when the text is empty or zero; `trailing`
/// blanks follow the cell.
[[nodiscard]] std::string Field(std::string_view text, std::int32_t width, Align align,
                                std::int32_t trailing = 0);

/// Two decimals, no grouping, never blank.
[[nodiscard]] std::string Money_Text(Currency value);

/// The printer file "dinn.txt" of a session, as the system writes paths.
[[nodiscard]] std::string printerFile(const Session &session);

class TextPrinter
{
public:
    TextPrinter(const Session &session, const data::Connection &conLayouts);

    /// Writes the order in `StkOrd` into "dinn.txt" of the server folder. Failing statements are skipped one
    /// by one and nothing is reported. With an empty `StkOrd` the file stays as it was. True when the file
    /// was begun anew.
    bool writeOrder();

    /// Heading of a page. A third text takes the place of the title; an empty title leaves 60 blanks. Ends at
    /// the first error.
    void printTitle(std::string_view company, std::string_view town, std::string_view third,
                    std::string_view title);

    [[nodiscard]] PrinterFile &file() { return m_file; }

private:
    /// A control byte (0: none), the text, the line end.
    void Write_Cell(std::string_view text, char control, LineEnd lineEnd);
    /// Advances the paper by 18/180 inch; the print position along the line stays.
    void Line_Advance();
    /// Cells and codes that stand alone, each skipped by itself when it fails.
    void cell(std::string_view text, char control, LineEnd lineEnd);
    void codes(std::string_view bytes);

    void openFile();
    void printParty();
    void printColumnHeading();
    void printBody();
    void printLine(const data::Recordset &row, int serial);
    void printEnd();

    const Session &m_session;
    const data::Connection &m_layouts;
    PrinterFile m_file;
    Currency m_total;
};

} // namespace output
