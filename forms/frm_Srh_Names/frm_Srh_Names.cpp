#include "forms/frm_Srh_Names/frm_Srh_Names.h"

#include "common/format.h"
#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/text.h"
#include "orders/stock.h"

#include <QVBoxLayout>

namespace {

constexpr int kColName = 0;
constexpr int kColTown = 1;
constexpr int kColumns = 2;
/// Share of the main window's inner size that the form takes, and the least it needs.
constexpr double kWidthShare = 0.55;
constexpr double kHeightShare = 0.75;
constexpr QSize kLeastSize(560, 420);

constexpr const char *kFormat =
    "<Ledger Name                                             |<Name of the Town        ";

} // namespace

frm_Srh_Names::frm_Srh_Names(const forms::Context &context, QWidget *parent)
    : SearchDialog(QStringLiteral("frm_Srh_Names"), tr("Select Supplier"), kColumns, context.dialogs, parent)
    , m_context(context)
    , m_txtName(
          addSearchBox("txtName", tr("&Name"), tr("Type the beginning of the name; Down goes to the list")))
{
    m_fgList->setStretchColumns({kColName});
    m_fgList->setAccessibleName(tr("Suppliers"));
    m_fgList->setToolTip(tr("Enter or a double click takes the supplier"));
    auto *list = new QVBoxLayout;
    list->addWidget(m_fgList);
    layOut(list);
    ui::setKeyCard(this, tr("Supplier Search"),
                   {{tr("letters"), tr("narrow the list to the names that begin so")},
                    {tr("Down"), tr("to the list")},
                    {tr("Up, Down"), tr("to another supplier in the list")},
                    {tr("Enter"), tr("takes the highlighted supplier")},
                    {tr("Alt+N"), tr("back to the name")},
                    {tr("Escape"), tr("closes without a choice")}});
    ui::on(m_txtName, &QLineEdit::textChanged, this, &frm_Srh_Names::txtName_Change);
    ui::on(m_txtName, &ui::TextBox::downPressed, this, &frm_Srh_Names::txtName_Down);
    Form_Load();
}

/// Sizes the form by the main window's inner size; `Pic`, `fmSave` and `lblName` follow by their layouts.
void frm_Srh_Names::Form_Load()
{
    setWindowTitle(tr("Supplier Search"));
    m_field = "LedgName";
    fitInto({m_context.session.MdiWidth, m_context.session.MdiHeight}, kWidthShare, kHeightShare, kLeastSize);
    m_rows.setFormatString(kFormat);
}

void frm_Srh_Names::Calling()
{
    m_context.session.FoundLedgCode = 0;
    m_context.session.FoundLedgName.clear();
    Load_frm_Srh_Names();
}

void frm_Srh_Names::Form_Activate()
{
    m_txtName->setFocus();
}

void frm_Srh_Names::Load_frm_Srh_Names()
{
    const auto suppliers = orders::findSuppliers(m_context.connections.conYear, m_field, m_text);
    TextGrid::Batch batch(m_rows);
    m_rows.setCurrent(0, kColName);
    m_rows.setRows(2);
    m_rows.clear();
    if (suppliers.empty())
        return;
    m_rows.setRows(static_cast<int>(suppliers.size()) + 1);
    int row = 1;
    for (const orders::Supplier &supplier : suppliers) {
        m_rows.setText(row, kColName, supplier.name);
        m_rows.setText(row, kColTown, supplier.town);
        m_rows.setRowData(row, supplier.code);
        ++row;
    }
    m_rows.setFormatString(kFormat);
}

void frm_Srh_Names::txtName_Change()
{
    m_text = ui::typed(m_txtName->text());
    Load_frm_Srh_Names();
    // Kept: the names are cut to the text's whole length and compared with the text trimmed, so that a blank
    // at its end finds no row.
    const QString text = m_txtName->text();
    if (!text.isEmpty())
        showMatch(kColName, text.trimmed(), text.size(), QAbstractItemView::PositionAtTop);
}

void frm_Srh_Names::txtName_Down()
{
    m_fgList->setFocus();
}

void frm_Srh_Names::cmdOk_Click()
{
    const int row = m_rows.currentRow();
    m_context.session.FoundLedgCode = row > 0 ? m_rows.rowData(row) : 0;
    m_context.session.FoundLedgName = row > 0 ? m_rows.text(row, kColName) : std::string();
    accept();
}
