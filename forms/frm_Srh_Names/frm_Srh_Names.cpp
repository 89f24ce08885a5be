#include "forms/frm_Srh_Names/frm_Srh_Names.h"

#include "common/format.h"
#include "common/ui/connect.h"
#include "common/ui/style.h"
#include "common/ui/text.h"
#include "orders/stock.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kColName = 0;
constexpr int kColTown = 1;
constexpr int kEnter = 13;
/// Share of the main window's inner size that the form takes, and the least it needs.
constexpr double kWidthShare = 0.55;
constexpr double kHeightShare = 0.75;
constexpr QSize kLeastSize(560, 420);

constexpr const char *kFormat =
    "<Ledger Name                                             |<Name of the Town        ";

} // namespace

frm_Srh_Names::frm_Srh_Names(const forms::Context &context, QWidget *parent)
    : FormDialog(QStringLiteral("frm_Srh_Names"), context.dialogs, parent)
    , m_context(context)
    , m_Pic(new QFrame(this))
    , m_lblName(new QLabel(tr("Select Supplier"), this))
    , m_txtName(new ui::TextBox(this, ui::TextBox::Keys::UpperCase))
    , m_fgList(new ui::GridView(m_names, ui::GridView::Selection::Rows, this))
    , m_fmSave(new QFrame(this))
    , m_cmdOk(addButton(QStringLiteral("cmdOk"), tr("&Ok")))
    , m_cmdExit(addButton(QStringLiteral("cmdExit"), tr("E&xit")))
{
    m_Pic->setObjectName(QStringLiteral("Pic"));
    m_lblName->setObjectName(QStringLiteral("lblName"));
    m_txtName->setObjectName(QStringLiteral("txtName"));
    m_fgList->setObjectName(QStringLiteral("fgList"));
    m_fmSave->setObjectName(QStringLiteral("fmSave"));
    layOut();
    setCancelButton(m_cmdExit);
    ui::on(m_txtName, &QLineEdit::textChanged, this, &frm_Srh_Names::txtName_Change);
    ui::on(m_txtName, &ui::TextBox::enterPressed, this, &frm_Srh_Names::cmdOk_Click);
    ui::on(m_txtName, &ui::TextBox::downPressed, this, &frm_Srh_Names::txtName_Down);
    ui::on(m_fgList, &ui::GridView::keyPressed, this, &frm_Srh_Names::fgList_KeyPress);
    ui::on(m_fgList, &ui::GridView::cellDoubleClicked, this, &frm_Srh_Names::cmdOk_Click);
    ui::on(m_cmdOk, &QPushButton::clicked, this, &frm_Srh_Names::cmdOk_Click);
    ui::on(m_cmdExit, &QPushButton::clicked, this, &frm_Srh_Names::cmdExit_Click);
    Form_Load();
}

frm_Srh_Names::~frm_Srh_Names()
{
    // Before the rows it shows.
    delete m_fgList;
}

void frm_Srh_Names::layOut()
{
    ui::makeHeading(m_lblName);
    m_fgList->setStretchColumn(kColName);
    m_fgList->setAccessibleName(tr("Suppliers"));
    m_fgList->setToolTip(tr("Enter or a double click takes the supplier"));
    m_txtName->setToolTip(tr("Type the beginning of the name; Down goes to the list"));
    auto *nameLabel = new QLabel(tr("&Name"), this);
    nameLabel->setBuddy(m_txtName);

    auto *search = new QHBoxLayout;
    search->addWidget(nameLabel);
    search->addWidget(m_txtName);
    auto *actions = new QHBoxLayout(m_fmSave);
    actions->setContentsMargins(0, 0, 0, 0);
    actions->addStretch();
    actions->addWidget(m_cmdOk);
    actions->addWidget(m_cmdExit);
    auto *body = new QVBoxLayout;
    body->setContentsMargins(14, 12, 14, 14);
    body->setSpacing(10);
    body->addLayout(search);
    body->addWidget(m_fgList);
    body->addWidget(m_fmSave);
    auto *picture = new QVBoxLayout(m_Pic);
    picture->setContentsMargins(0, 0, 0, 0);
    picture->addWidget(m_lblName);
    picture->addLayout(body);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(m_Pic);
}

/// Sizes the form by the main window's inner size; `Pic`, `fmSave` and `lblName` follow by their layouts.
void frm_Srh_Names::Form_Load()
{
    setWindowTitle(tr("Supplier Search"));
    m_field = "LedgName";
    const QSize share(static_cast<int>(m_context.session.MdiWidth * kWidthShare),
                      static_cast<int>(m_context.session.MdiHeight * kHeightShare));
    resize(share.expandedTo(kLeastSize));
    m_names.setFormatString(kFormat);
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
    TextGrid::Batch batch(m_names);
    m_names.setCurrent(0, kColName);
    m_names.setRows(2);
    m_names.clear();
    if (suppliers.empty())
        return;
    m_names.setRows(static_cast<int>(suppliers.size()) + 1);
    int row = 1;
    for (const orders::Supplier &supplier : suppliers) {
        m_names.setText(row, kColName, supplier.name);
        m_names.setText(row, kColTown, supplier.town);
        m_names.setRowData(row, supplier.code);
        ++row;
    }
    m_names.setFormatString(kFormat);
}

void frm_Srh_Names::txtName_Change()
{
    m_text = ui::typed(m_txtName->text());
    Load_frm_Srh_Names();
    if (m_text.empty())
        return;
    const QString wanted = ui::shown(upperText(trimmed(m_text)));
    for (int row = 1; row < m_names.rows(); ++row) {
        const QString name = ui::shown(upperText(trimmed(m_names.text(row, kColName))));
        if (name.left(m_txtName->text().size()) == wanted) {
            m_names.setCurrent(row, kColName);
            m_fgList->scrollToRow(row, QAbstractItemView::PositionAtTop);
            return;
        }
    }
}

void frm_Srh_Names::txtName_Down()
{
    m_fgList->setFocus();
}

void frm_Srh_Names::fgList_KeyPress(int character)
{
    if (character == kEnter)
        cmdOk_Click();
}

void frm_Srh_Names::cmdOk_Click()
{
    const int row = m_names.currentRow();
    m_context.session.FoundLedgCode = row > 0 ? m_names.rowData(row) : 0;
    m_context.session.FoundLedgName = row > 0 ? m_names.text(row, kColName) : std::string();
    accept();
}

void frm_Srh_Names::cmdExit_Click()
{
    reject();
}
