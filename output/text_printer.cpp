#include "output/text_printer.h"

#include "common/date.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/null_safe.h"

#include <array>

namespace output {

namespace {

using namespace std::string_view_literals;

// Control bytes in front of a cell
constexpr char kNone = 0;
constexpr char kCondensed = 15;   ///< SI
constexpr char kNormalWidth = 18; ///< DC2, cancels condensed
constexpr char kUntitled = 1;

constexpr auto kTenPerInch = "\x1bP"sv;
constexpr auto kCancelLine = "\x18"sv;
constexpr auto kTwelveInchPage = "\x1b\x43\x00\x0c"sv;
constexpr auto kDoubleWidthOn = "\x1bW\x01"sv;
constexpr auto kDoubleWidthOff = "\x1bW\x00"sv;
constexpr auto kAdvance = "\x1bJ\x12"sv;
constexpr auto kFormFeed = "\x0c"sv;

constexpr std::size_t kPageWidth = 80; ///< characters at 10 to the inch
constexpr std::size_t kNameCharacters = 25;

struct HeadingCell
{
    std::string_view text;
    std::int32_t width;
    Align align;
};
/// The widths fill the page.
constexpr std::array<HeadingCell, 6> kColumnHeading = {{{"Sl.No", 6, Align::Centre},
                                                        {"PartCode.", 18, Align::Left},
                                                        {"Name of the Item", 26, Align::Left},
                                                        {"Qty", 6, Align::Right},
                                                        {"Rate", 10, Align::Right},
                                                        {"Amount", 14, Align::Right}}};

std::string dashes()
{
    return std::string(kPageWidth, '-');
}

std::string textIn(const data::Recordset &row, const char *field)
{
    return Null_Str(row.field(field));
}

/// A rate or amount for comparing and adding; one that cannot be read is not greater than 0 and adds nothing.
Currency amountOf(const data::Recordset &row, const char *field)
{
    return attemptOr(Currency(), [&] { return Null_Cur(row.field(field)); });
}

/// A date kept as text, formatted once more: what is no date stays as it is.
std::string dateText(const std::string &stored)
{
    const auto date = Date::fromText(stored);
    return date ? date->toText() : stored;
}

} // namespace

std::string Field(std::string_view text, std::int32_t width, Align align, std::int32_t trailing)
{
    return Format_Cell(trimmed(text), width, static_cast<std::int32_t>(align), trailing);
}

std::string Money_Text(Currency value)
{
    return Format_Num(value, 2, BlankIfZero::No, Grouping::None);
}

std::string printerFile(const Session &session)
{
    return session.ServerPath + "\\dinn.txt";
}

TextPrinter::TextPrinter(const Session &session, const data::Connection &conLayouts)
    : m_session(session)
    , m_layouts(conLayouts)
{}

void TextPrinter::Write_Cell(std::string_view text, char control, LineEnd lineEnd)
{
    if (control != kNone)
        m_file.write({&control, 1});
    m_file.write(printerBytes(text));
    // Lines are not counted: the printer's own page length does the paging.
    if (lineEnd == LineEnd::Yes)
        m_file.write("\r\n");
}

void TextPrinter::Line_Advance()
{
    m_file.write(kAdvance);
}

void TextPrinter::cell(std::string_view text, char control, LineEnd lineEnd)
{
    attempt([&] { Write_Cell(text, control, lineEnd); });
}

void TextPrinter::codes(std::string_view bytes)
{
    attempt([&] { m_file.write(bytes); });
}

void TextPrinter::printTitle(std::string_view company, std::string_view town, std::string_view third,
                             std::string_view title)
{
    m_file.write(kDoubleWidthOn);
    Write_Cell(Field(company, 68, Align::Centre), kCondensed, LineEnd::Yes);
    m_file.write(kDoubleWidthOff);
    m_file.write(kAdvance);
    Write_Cell(Field(town, 80, Align::Centre), kNormalWidth, LineEnd::Yes);
    m_file.write(kAdvance);

    m_file.write(kDoubleWidthOn);
    const std::string_view heading = third.empty() ? title : third;
    if (heading.empty()) {
        Write_Cell(std::string(60, ' '), kUntitled, LineEnd::No);
    } else {
        Write_Cell(Field(heading, 52, Align::Left), kCondensed, LineEnd::No);
    }
    m_file.write(kDoubleWidthOff);
    // Every page would be page 1: its counter starts afresh with each heading.
    Write_Cell(Field("Page No. : 1", third.empty() ? 18 : 20, Align::Right), kNormalWidth, LineEnd::Yes);
}

void TextPrinter::openFile()
{
    attempt([&] { m_file.open(printerFile(m_session)); });
    codes(kTenPerInch);
}

void TextPrinter::printParty()
{
    cell(dashes(), kNormalWidth, LineEnd::Yes);
    data::Recordset order;
    attempt([&] { order.open("Select * from StkOrd", m_layouts); });
    if (!attemptOr(false, [&] { return order.hasRows(); }))
        return;

    codes(kDoubleWidthOn);
    cell(Field("To,", 25, Align::Left), kCondensed, LineEnd::No);
    // A cell whose field cannot be read is skipped with its control byte and its line end.
    attempt([&] {
        Write_Cell(Field("Ord.No. : " + textIn(order, "OrdNo"), 20, Align::Left), kCondensed, LineEnd::No);
    });
    attempt([&] {
        Write_Cell(Field("Date : " + dateText(textIn(order, "Date")), 20, Align::Left), kCondensed,
                   LineEnd::Yes);
    });
    for (const char *field : {"SName", "Area", "Town"}) {
        const std::string line = attemptOr(std::string(), [&] { return textIn(order, field); });
        if (!line.empty())
            cell(Field(line, 55, Align::Left), kCondensed, LineEnd::Yes);
    }
    codes(kDoubleWidthOff);
    attempt([&] { order.close(); });
}

void TextPrinter::printColumnHeading()
{
    cell(dashes(), kNormalWidth, LineEnd::Yes);
    for (const HeadingCell &heading : kColumnHeading) {
        const bool last = &heading == &kColumnHeading.back();
        cell(Field(heading.text, heading.width, heading.align), kNormalWidth,
             last ? LineEnd::Yes : LineEnd::No);
    }
    cell(dashes(), kNormalWidth, LineEnd::Yes);
}

void TextPrinter::printBody()
{
    data::Recordset rows;
    attempt([&] { rows.open("Select * from StkOrd", m_layouts); });
    for (int serial = 1; attemptOr(false, [&] { return !rows.eof(); }); ++serial) {
        printLine(rows, serial);
        // Without a next row to go to, the same line would be printed for ever.
        if (!attempt([&] { rows.moveNext(); }))
            break;
    }
    attempt([&] { rows.close(); });
}

void TextPrinter::printLine(const data::Recordset &row, int serial)
{
    const auto bodyCell = [this](std::string_view text) { cell(text, kNormalWidth, LineEnd::No); };
    // A cell whose field cannot be read is skipped whole: not even its blanks are printed.
    const auto fieldCell = [&](const char *field, std::int32_t width, Align align,
                               std::size_t characters = std::string::npos) {
        attempt([&] {
            const std::string text = textIn(row, field);
            Write_Cell(Field(firstCharacters(text, characters), width, align), kNormalWidth, LineEnd::No);
        });
    };
    bodyCell(Field(std::to_string(serial), 6, Align::Centre));
    fieldCell("ItemNo", 18, Align::Left);
    fieldCell("ItemName", 26, Align::Left, kNameCharacters);
    fieldCell("Qty", 6, Align::Right);

    const Currency rate = amountOf(row, "Rate");
    const Currency amount = amountOf(row, "Amount");
    if (rate > Currency() || amount > Currency()) {
        // Kept: 8 blanks for a missing rate, not 10, which puts the amount two columns to the left.
        bodyCell(rate > Currency() ? Field(Money_Text(rate), 10, Align::Right) : std::string(8, ' '));
        bodyCell(amount > Currency() ? Field(Money_Text(amount), 14, Align::Right) : std::string(14, ' '));
    }
    attempt([&] { m_total += amount; });
    attempt([&] { Line_Advance(); });
}

void TextPrinter::printEnd()
{
    cell(dashes(), kNormalWidth, LineEnd::Yes);
    if (m_total > Currency()) {
        cell(Field("Total", 56, Align::Right, 6), kNormalWidth, LineEnd::No);
        cell(Field(Money_Text(m_total), 18, Align::Right), kNormalWidth, LineEnd::Yes);
        cell(dashes(), kNormalWidth, LineEnd::Yes);
    }
    codes(kFormFeed);
    attempt([&] { m_file.close(); });
}

bool TextPrinter::writeOrder()
{
    m_total = Currency();
    bool begun = false;
    const bool hasOrder = attemptOr(false, [&] {
        const data::Recordset order("Select * from StkOrd", m_layouts);
        return order.hasRows();
    });
    if (hasOrder) {
        openFile();
        begun = m_file.isOpen();
        codes(kCancelLine);
        codes(kTwelveInchPage);
        attempt([&] { printTitle(m_session.ComName, m_session.Town, "", "Order Form"); });
        attempt([&] { Line_Advance(); });
        printParty();
        attempt([&] { Line_Advance(); });
        printColumnHeading();
        printBody();
    }
    // Without an order no file was opened: what follows fails, piece by piece and silently, and the file of
    // the previous print stays.
    printEnd();
    return begun;
}

} // namespace output
