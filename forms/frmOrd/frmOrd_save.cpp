// frmOrd: saving the order on screen, loading a stored one, printing.
#include "forms/frmOrd/frmOrd.h"

#include "common/db.h"
#include "common/numbers.h"
#include "common/ui/text.h"
#include "common/value.h"
#include "data/paths.h"
#include "forms/frmOrd/frmOrd_ui.h"
#include "forms/paper_preview/paper_preview.h"
#include "orders/persistence.h"
#include "output/print_order.h"
#include "output/text_printer.h"

#include <QScopeGuard>

namespace {

double numberIn(const QLineEdit *box)
{
    return leadingNumber(ui::typed(box->text()));
}

/// An order number as the form keeps it. Throws RunTimeError(Overflow) beyond 16 bits.
std::int16_t orderNumber(double number)
{
    return narrow<std::int16_t>(toInteger(Value(number)));
}

} // namespace

void frmOrd::CmdSave_Click()
{
    if (numberIn(m_ui->txtOrdNo) == 0)
        return dialogs().notice(ui::typed(tr("Enter Order No.")));
    if (m_supplierCode <= 0) {
        dialogs().notice(ui::typed(tr("Select Supplier Name")));
        return m_ui->cmdSup->setFocus();
    }
    if (m_lines.rows() < 3) {
        dialogs().notice(ui::typed(tr("Enter Spares Details")));
        m_lines.setCurrent(1, orders::kColPartNo);
        return fgList_EnterCell();
    }
    // In Delete mode nothing is written: no order is ever removed, it can be called up and printed.
    if (m_mode == "NEW" || m_mode == "MOD")
        Save_Data();
    m_printedNumber = orderNumber(numberIn(m_ui->txtOrdNo));
    m_lines.setCurrent(1, orders::kColPartNo);
    m_ui->dtpOrdDate->setFocus();

    if (dialogs().question(ui::typed(tr("Do You Want Print"))))
        Print_Form();

    Clear_Fields();
    // Two rows again, or the next Save would find the rows of this order and not miss any lines.
    emptyGrid();
    Design();
    m_ui->lblNetTotal->setText(QStringLiteral("0"));
    if (m_mode == "NEW")
        Max_OrdNo();
    m_supplierCode = 0;
}

void frmOrd::Save_Data()
{
    orders::OrderHeader header;
    header.number = numberIn(m_ui->txtOrdNo);
    header.date = m_ui->dtpOrdDate->day();
    header.supplierName = ui::typed(m_ui->txtSName->text());
    header.town = ui::typed(m_ui->txtPlace->text());
    header.type = m_ui->cmbType->selectedData().value_or(0);
    header.months = m_ui->cmbMonth->selectedData().value_or(0);
    header.supplierCode = m_supplierCode;
    header.mq = numberIn(m_ui->txtMQ);
    const std::string consequence = ui::typed(
        tr("The order may be stored only in part: its header may be written while its lines are missing. "
           "Leave the form as it is, put the cause right and press Save again."));
    withConsequence(consequence, [&] {
        orders::Save_Data(m_context.connections.conYear, header, m_lines, [this] {
            Max_OrdNo();
            return m_nextNumber;
        });
    });
}

/// Asks for text or report printing of the order that was saved or loaded last, under its number on screen.
void frmOrd::Print_Form()
{
    output::PrintContext context{m_context.session,
                                 m_context.connections.conYear,
                                 m_context.connections.conLayouts,
                                 m_context.dialogs,
                                 m_context.shell,
                                 m_context.rptOrder};
    output::PrintRequest request;
    request.orderNumber = m_printedNumber;
    request.orderNumberText = ui::typed(m_ui->txtOrdNo->text());
    request.order = static_cast<output::PrintOrder>(m_ui->cmbOrder->selectedData().value_or(0));
    request.rates = m_ui->chkRat->isChecked();
    context.showPaper = [this] { paper().showBeside(*this); };
    // Paper that came up for the question goes with it: it would lie over the form, and the keys go to the
    // form.
    const bool wasShown = m_paper && m_paper->isVisible();
    const auto questionAnswered = qScopeGuard([&] {
        if (m_paper && !wasShown)
            m_paper->close();
    });
    withConsequence(
        ui::typed(tr("The stored order is not affected, but it was not printed, or not whole. Put the "
                     "cause right, load the order by its number and print it again.")),
        [&] { output::Print_Form(context, request); });
}

/// Shows the print file that lies in the server folder, whoever wrote it.
void frmOrd::cmdPaper_Click()
{
    if (!data::fileExists(output::printerFile(m_context.session))) {
        return dialogs().notice(
            ui::typed(tr("There is no print file yet. Save an order and print it in text mode first.")));
    }
    paper().showInFront(*this);
}

PaperPreview &frmOrd::paper()
{
    if (!m_paper)
        m_paper = new PaperPreview(output::printerFile(m_context.session), dialogs());
    return *m_paper;
}

void frmOrd::Get_Data()
{
    // Failing statements are skipped one by one: what cannot be read stays as it was, the rest is shown.
    emptyGrid();
    const double number = attemptOr(0.0, [this] { return numberIn(m_ui->txtOrdNo); });
    if (number == 0) {
        dialogs().notice(ui::typed(tr("Enter Order Number")));
        return m_ui->txtOrdNo->setFocus(); // Clearing the grid may have drawn the focus there.
    }
    attempt([&] { m_printedNumber = orderNumber(number); });

    // A header that cannot be read counts as none: nothing of the form is touched.
    using Header = std::optional<orders::OrderHeader>;
    const Header header =
        attemptOr(Header(), [&] { return orders::loadHeader(m_context.connections.conYear, number); });
    if (header)
        showHeader(*header);
    showStoredLines(number);

    Design();
    m_ui->dtpOrdDate->setFocus();
}

void frmOrd::showHeader(const orders::OrderHeader &header)
{
    if (header.hasDate)
        attempt([&] { m_ui->dtpOrdDate->setDay(header.date); });
    // An order without a ledger supplier must be given one before it can be saved again.
    m_supplierCode = 0;
    if (header.supplierCode > 0) {
        const auto ledger = [&](const char *field) {
            return Get_Field(m_context.connections.conYear, "Mast_Ledgers", "LedgCode", header.supplierCode,
                             field);
        };
        attempt([&] { m_ui->txtSName->setText(ui::shown(ledger("LedgName"))); });
        attempt([&] { m_ui->txtPlace->setText(ui::shown(ledger("Town"))); });
        m_supplierCode = header.supplierCode;
    } else {
        m_ui->txtSName->setText(ui::shown(header.supplierName));
        m_ui->txtPlace->setText(ui::shown(header.town));
    }
    // The order date stands by now: choosing the months moves the from-date after it.
    attempt([&] { Set_Combo(m_ui->cmbMonth, header.months); });
    attempt([&] { m_ui->txtMQ->setText(ui::shown(shortestText(header.mq))); });
    attempt([&] { Set_Combo(m_ui->cmbType, header.type); });
}

void frmOrd::showStoredLines(double number)
{
    using Lines = std::vector<orders::StoredLine>;
    const Lines lines =
        attemptOr(Lines(), [&] { return orders::loadLines(m_context.connections.conYear, number); });
    if (lines.empty()) {
        // Also for a header without lines, whose fields were just shown: it counts as no order.
        Clear_Fields();
        dialogs().notice(ui::typed(tr("No Records")));
    } else if (m_mode == "NEW") {
        dialogs().notice(ui::typed(tr("Please Select Modify Mode")));
    } else {
        const TextGrid::Batch batch(m_lines);
        attempt([&] { orders::showLines(lines, m_lines); });
    }
}

void frmOrd::emptyGrid()
{
    m_lines.clear();
    m_lines.setRows(2);
    showResult({});
    m_removed.reset();
    hideEditor(); // It still shows what the cell under it held.
}
