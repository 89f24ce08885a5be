#include "output/libreoffice/calc.h"

#include "output/libreoffice/workbook_file.h"

#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/connection/NoConnectException.hpp>
#include <com/sun/star/container/NoSuchElementException.hpp>
#include <com/sun/star/document/LockedDocumentRequest.hpp>
#include <com/sun/star/document/MacroExecMode.hpp>
#include <com/sun/star/document/UpdateDocMode.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/lang/DisposedException.hpp>
#include <com/sun/star/sheet/XCalculatable.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XSheetCellCursor.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>
#include <com/sun/star/task/XInteractionAbort.hpp>
#include <com/sun/star/task/XInteractionHandler.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <cppuhelper/implbase1.hxx>
#include <rtl/ref.hxx>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace output {

namespace {

using namespace com::sun::star;
using rtl::OUString;
using uno::Reference;
using uno::Sequence;
using uno::UNO_QUERY;
using uno::UNO_QUERY_THROW;

OUString office(std::string_view text)
{
    return OUString(text.data(), static_cast<sal_Int32>(text.size()), RTL_TEXTENCODING_UTF8);
}

std::string plain(const OUString &text)
{
    const rtl::OString bytes = rtl::OUStringToOString(text, RTL_TEXTENCODING_UTF8);
    return {bytes.getStr(), static_cast<std::size_t>(bytes.getLength())};
}

/// A local path as the office wants it; the locale's character set has no part in it.
OUString urlOf(const std::string &file)
{
    static constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/-_.~";
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char c : file) {
        if (kPlain.find(c) != std::string_view::npos) {
            url += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            url += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
        }
    }
    return office(url);
}

template <class T>
beans::PropertyValue property(const char *name, const T &value)
{
    return {OUString::createFromAscii(name), -1, uno::Any(value), beans::PropertyState_DIRECT_VALUE};
}

OUString filterOf(WorkbookKind kind)
{
    switch (kind) {
    case WorkbookKind::Excel2007:
        return "Calc MS Excel 2007 XML";
    case WorkbookKind::OpenDocument:
        return "calc8";
    case WorkbookKind::Excel97:
        break;
    }
    return "MS Excel 97"; // Loads the older kinds as well.
}

/// Runs one piece of UNO. What it throws becomes an error of ours: `sentence` with the office's own words.
template <class Piece>
auto guarded(ErrorNumber number, const std::string &sentence, Piece piece)
{
    try {
        return piece();
    } catch (const lang::DisposedException &) {
        throw OfficeLost();
    } catch (const uno::Exception &exception) {
        const std::string words = plain(exception.Message);
        const std::string end = sentence.ends_with('?') ? "" : ".";
        throw AppError(number, sentence + (words.empty() ? end : " (" + words + ")."));
    }
}

/// Answers what the office would ask a person while it loads a file, always with No, and keeps the reason.
class Questions : public cppu::WeakImplHelper1<task::XInteractionHandler>
{
public:
    void SAL_CALL handle(const Reference<task::XInteractionRequest> &request) override
    {
        const uno::Any question = request->getRequest();
        const std::string kind = plain(question.getValueTypeName());
        document::LockedDocumentRequest locked;
        if (question >>= locked) {
            m_reason = "it is in use by " + plain(locked.UserInfo);
        } else if (kind.find("Password") != std::string::npos) {
            m_reason = "it is protected by a password";
        }
        const auto continuations = request->getContinuations();
        for (sal_Int32 i = 0; i < continuations.getLength(); ++i) {
            const Reference<task::XInteractionAbort> abort(continuations[i], UNO_QUERY);
            if (abort.is())
                return abort->select();
        }
    }

    /// "" when nothing was asked whose answer matters.
    [[nodiscard]] const std::string &reason() const { return m_reason; }

private:
    std::string m_reason;
};

} // namespace

struct Calc::Parts
{
    Reference<uno::XComponentContext> local;
    Reference<frame::XDesktop2> desktop;
    Reference<sheet::XSpreadsheetDocument> workbook;
    std::string file; ///< of the open workbook

    [[nodiscard]] Reference<sheet::XSpreadsheet> sheet(const std::string &name) const;
    [[nodiscard]] std::string sheetNames() const;
};

namespace {

/// The whole of a sheet that holds anything, as numbers of the last row and column, from 1.
std::pair<int, int> usedArea(const Reference<sheet::XSpreadsheet> &sheet)
{
    const Reference<sheet::XSheetCellCursor> cursor = sheet->createCursor();
    Reference<sheet::XUsedAreaCursor>(cursor, UNO_QUERY_THROW)->gotoEndOfUsedArea(false);
    const table::CellRangeAddress end =
        Reference<sheet::XCellRangeAddressable>(cursor, UNO_QUERY_THROW)->getRangeAddress();
    return {end.EndRow + 1, end.EndColumn + 1};
}

Reference<sheet::XCellRangeData> range(const Reference<sheet::XSpreadsheet> &sheet, int row, int column,
                                       int rows, int columns)
{
    return {sheet->getCellRangeByPosition(column - 1, row - 1, column + columns - 2, row + rows - 2),
            UNO_QUERY_THROW};
}

Cell cellOf(const uno::Any &value)
{
    if (double number = 0; value >>= number)
        return number;
    OUString text;
    if ((value >>= text) && !text.isEmpty())
        return plain(text);
    return {}; // Empty, or an error such as a division by zero.
}

uno::Any valueOf(const Cell &cell)
{
    if (const auto *number = std::get_if<double>(&cell))
        return uno::Any(*number);
    const auto *text = std::get_if<std::string>(&cell);
    return uno::Any(text ? office(*text) : OUString());
}

void prepareForWriting(const Reference<sheet::XSpreadsheetDocument> &workbook, const std::string &file)
{
    const bool readOnly = guarded(ErrorNumber::Workbook, "The file " + file + " cannot be opened", [&] {
        // Rows keep their heights: fitted to the fonts of this machine, a page would hold fewer of them.
        Reference<beans::XPropertySet>(workbook, UNO_QUERY_THROW)
            ->setPropertyValue("IsAdjustHeightEnabled", uno::Any(false));
        return bool(Reference<frame::XStorable>(workbook, UNO_QUERY_THROW)->isReadonly());
    });
    if (readOnly) {
        throw AppError(ErrorNumber::Workbook,
                       "The file " + file +
                           " cannot be written: it is in use, or this user may not write it.");
    }
}

} // namespace

std::string Calc::Parts::sheetNames() const
{
    std::string names;
    const Sequence<OUString> all = workbook->getSheets()->getElementNames();
    for (sal_Int32 i = 0; i < all.getLength(); ++i)
        names += (names.empty() ? "\"" : ", \"") + plain(all[i]) + "\"";
    return names;
}

Reference<sheet::XSpreadsheet> Calc::Parts::sheet(const std::string &name) const
{
    if (!workbook.is())
        throw AppError(ErrorNumber::Workbook, "No workbook is open.");
    const auto sheets = workbook->getSheets();
    if (!sheets->hasByName(office(name))) {
        throw AppError(ErrorNumber::SheetNotFound,
                       "The file " + file + " has no sheet \"" + name + "\"; it has " + sheetNames() + ".");
    }
    return {sheets->getByName(office(name)), UNO_QUERY_THROW};
}

Calc::Calc(const std::string &office)
    : m_parts(std::make_unique<Parts>())
{
    // Without the office's types the first object of it would end this process.
    const std::string types = "vnd.sun.star.pathname:" + office + "/fundamentalrc";
    ::setenv("URE_BOOTSTRAP", types.c_str(), 1);
    m_parts->local = guarded(ErrorNumber::SpreadsheetProgram, "The spreadsheet program cannot be used",
                             [] { return cppu::defaultBootstrap_InitialComponentContext(); });
}

Calc::~Calc() = default;

bool Calc::connect(const std::string &pipe)
{
    try {
        const auto resolver = bridge::UnoUrlResolver::create(m_parts->local);
        const Reference<uno::XComponentContext> context(
            resolver->resolve(office("uno:pipe,name=" + pipe + ";urp;StarOffice.ComponentContext")),
            UNO_QUERY_THROW);
        m_parts->desktop = frame::Desktop::create(context);
        return true;
    } catch (const connection::NoConnectException &) {
        return false;
    } catch (const uno::Exception &) {
        throw OfficeLost(); // It listened, and is gone already.
    }
}

void Calc::greet()
{
    guarded(ErrorNumber::SpreadsheetProgram, "The spreadsheet program does not answer",
            [this] { m_parts->desktop->getCurrentFrame(); });
}

void Calc::terminate()
{
    guarded(ErrorNumber::SpreadsheetProgram, "The spreadsheet program cannot be ended",
            [this] { m_parts->desktop->terminate(); });
}

void Calc::open(const std::string &file, SpreadsheetApplication::Access access)
{
    close();
    const bool writes = access == SpreadsheetApplication::Access::Write;
    const WorkbookKind kind = workbookKind(file);
    const std::string cannot = "The file " + file + " cannot be opened";
    rtl::Reference<Questions> questions(new Questions);
    const beans::PropertyValue properties[] = {
        property("Hidden", true),
        property("ReadOnly", !writes),
        property("MacroExecutionMode", document::MacroExecMode::NEVER_EXECUTE),
        property("UpdateDocMode", document::UpdateDocMode::NO_UPDATE),
        property("FilterName", filterOf(kind)),
        property("InteractionHandler", Reference<task::XInteractionHandler>(questions.get()))};
    try {
        guarded(ErrorNumber::Workbook, cannot, [&] {
            m_parts->workbook.set(m_parts->desktop->loadComponentFromURL(
                                      urlOf(file), "_blank", 0, Sequence(properties, std::size(properties))),
                                  UNO_QUERY);
        });
    } catch (const OfficeLost &) {
        throw;
    } catch (const AppError &) {
        // What it asked says more.
        if (questions->reason().empty())
            throw;
    }
    if (!m_parts->workbook.is()) {
        const std::string &reason = questions->reason();
        throw AppError(ErrorNumber::Workbook,
                       cannot + ": " + (reason.empty() ? "it is damaged, or no spreadsheet" : reason) + ".");
    }
    m_parts->file = file;
    if (!writes)
        return;
    try {
        prepareForWriting(m_parts->workbook, file);
    } catch (const AppError &) {
        attempt([this] { close(); }); // Nobody else would, and its mark would stay.
        throw;
    }
}

void Calc::close()
{
    if (!m_parts->workbook.is())
        return;
    const Reference<sheet::XSpreadsheetDocument> workbook = std::exchange(m_parts->workbook, {});
    guarded(ErrorNumber::Workbook, "The file " + m_parts->file + " cannot be closed", [&] {
        Reference<util::XCloseable>(workbook, UNO_QUERY_THROW)->close(true);
    }); // also after a veto
}

void Calc::requireSheet(const std::string &name)
{
    guarded(ErrorNumber::Workbook, "The sheets of " + m_parts->file + " cannot be read",
            [&] { static_cast<void>(m_parts->sheet(name)); });
}

CellBlock Calc::read(const std::string &sheet, int row, int column, int rows, int columns)
{
    return guarded(ErrorNumber::Workbook, "The cells of " + m_parts->file + " cannot be read", [&] {
        const auto source = m_parts->sheet(sheet);
        const auto [lastRow, lastColumn] = usedArea(source);
        const int usedRows = std::min(rows, lastRow - row + 1);
        const int usedColumns = std::min(columns, lastColumn - column + 1);
        if (usedRows <= 0 || usedColumns <= 0)
            return CellBlock();
        const auto data = range(source, row, column, usedRows, usedColumns)->getDataArray();
        CellBlock block(usedRows, usedColumns);
        for (int r = 0; r < usedRows; ++r) {
            for (int c = 0; c < usedColumns; ++c)
                block.at(r, c) = cellOf(std::as_const(data)[r][c]);
        }
        return block;
    });
}

void Calc::write(const std::string &sheet, int row, int column, const CellBlock &block)
{
    const std::string cannot =
        "The cells of " + m_parts->file + " cannot be written; is its sheet protected?";
    guarded(ErrorNumber::Workbook, cannot, [&] {
        const auto target = m_parts->sheet(sheet);
        Sequence<Sequence<uno::Any>> data(block.rows());
        Sequence<uno::Any> *line = data.getArray();
        for (int r = 0; r < block.rows(); ++r) {
            line[r].realloc(block.columns());
            uno::Any *cell = line[r].getArray();
            for (int c = 0; c < block.columns(); ++c)
                cell[c] = valueOf(block.at(r, c));
        }
        if (block.rows() > 0 && block.columns() > 0)
            range(target, row, column, block.rows(), block.columns())->setDataArray(data);
    });
}

void Calc::save()
{
    guarded(ErrorNumber::Workbook, "The file " + m_parts->file + " cannot be saved; is the disk full?", [&] {
        Reference<sheet::XCalculatable>(m_parts->workbook, UNO_QUERY_THROW)->calculateAll();
        Reference<frame::XStorable>(m_parts->workbook, UNO_QUERY_THROW)->store();
    });
}

} // namespace output
