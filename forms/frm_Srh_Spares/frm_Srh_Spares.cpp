#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"

#include "common/format.h"
#include "common/numbers.h"
#include "common/ui/connect.h"
#include "common/ui/style.h"
#include "common/ui/text.h"
#include "orders/stock.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int kColCode = 0;
constexpr int kColName = 1;
constexpr int kColStock = 2;
constexpr int kColLocation = 3;
constexpr int kColItem = 4;
constexpr int kColHigher = 5;
constexpr int kColumns = 6;
constexpr int kEnter = 13;
/// Share of the main window's inner size that the form takes, and the least it needs.
constexpr double kWidthShare = 0.85;
constexpr double kHeightShare = 0.85;
constexpr QSize kLeastSize(760, 460);

constexpr const char *kFormat =
    "<Part Number                        |<Part Name"
    "                                                                |^Qty.           "
    "|<Location                       ||";
constexpr const char *kVehicleFormat = "<Vehicle Model             ";

} // namespace

frm_Srh_Spares::frm_Srh_Spares(const forms::Context &context, QWidget *parent)
    : FormDialog(QStringLiteral("frm_Srh_Spares"), context.dialogs, parent)
    , m_context(context)
    , m_Pic(new QFrame(this))
    , m_lblName(new QLabel(tr("Select Spare Part"), this))
    , m_txtItem_Code(new ui::TextBox(this, ui::TextBox::Keys::UpperCase))
    , m_txtItem_Name(new ui::TextBox(this, ui::TextBox::Keys::UpperCase))
    , m_fgList(new ui::GridView(m_parts, ui::GridView::Selection::Rows, this))
    , m_fgVeh(new ui::GridView(m_vehicles, ui::GridView::Selection::Rows, this))
    , m_fmSave(new QFrame(this))
    , m_cmdOk(addButton(QStringLiteral("cmdOk"), tr("&Ok")))
    , m_cmdExit(addButton(QStringLiteral("cmdExit"), tr("E&xit")))
{
    m_Pic->setObjectName(QStringLiteral("Pic"));
    m_lblName->setObjectName(QStringLiteral("lblName"));
    m_txtItem_Code->setObjectName(QStringLiteral("txtItem_Code"));
    m_txtItem_Name->setObjectName(QStringLiteral("txtItem_Name"));
    m_fgList->setObjectName(QStringLiteral("fgList"));
    m_fgVeh->setObjectName(QStringLiteral("fgVeh"));
    m_fmSave->setObjectName(QStringLiteral("fmSave"));
    layOut();
    setCancelButton(m_cmdExit);
    ui::on(m_txtItem_Code, &QLineEdit::textChanged, this, &frm_Srh_Spares::txtItem_Code_Change);
    ui::on(m_txtItem_Name, &QLineEdit::textChanged, this, &frm_Srh_Spares::txtItem_Name_Change);
    for (ui::TextBox *box : {m_txtItem_Code, m_txtItem_Name}) {
        // The letter typed in the grid is the first of a word; the next one must not replace it.
        box->setSelectsOnFocus(false);
        ui::on(box, &ui::TextBox::enterPressed, this, &frm_Srh_Spares::cmdOk_Click);
        ui::on(box, &ui::TextBox::downPressed, this, &frm_Srh_Spares::txtItem_Down);
    }
    ui::on(m_fgList, &ui::GridView::currentCellChanged, this, &frm_Srh_Spares::fgList_RowColChange);
    ui::on(m_fgList, &ui::GridView::keyPressed, this, &frm_Srh_Spares::fgList_KeyPress);
    ui::on(m_fgList, &ui::GridView::cellDoubleClicked, this, &frm_Srh_Spares::cmdOk_Click);
    ui::on(m_cmdOk, &QPushButton::clicked, this, &frm_Srh_Spares::cmdOk_Click);
    ui::on(m_cmdExit, &QPushButton::clicked, this, &frm_Srh_Spares::cmdExit_Click);
    Form_Load();
}

frm_Srh_Spares::~frm_Srh_Spares()
{
    // Before the rows they show.
    delete m_fgList;
    delete m_fgVeh;
}

void frm_Srh_Spares::layOut()
{
    ui::makeHeading(m_lblName);
    m_fgList->setStretchColumn(kColName);
    m_fgList->setAccessibleName(tr("Spare parts"));
    m_fgList->setToolTip(tr("Enter or a double click takes the part"));
    m_fgVeh->setStretchColumn(0);
    m_fgVeh->setAccessibleName(tr("Vehicle models of the highlighted part"));
    m_fgVeh->setFocusPolicy(Qt::NoFocus);
    m_txtItem_Code->setToolTip(tr("Type the beginning of the part number; Down goes to the list"));
    m_txtItem_Name->setToolTip(tr("Type the beginning of the part name; Down goes to the list"));
    auto *codeLabel = new QLabel(tr("Part N&umber"), this);
    codeLabel->setBuddy(m_txtItem_Code);
    auto *nameLabel = new QLabel(tr("Part &Name"), this);
    nameLabel->setBuddy(m_txtItem_Name);

    auto *search = new QHBoxLayout;
    search->addWidget(codeLabel);
    search->addWidget(m_txtItem_Code, 2);
    search->addSpacing(10);
    search->addWidget(nameLabel);
    search->addWidget(m_txtItem_Name, 3);
    auto *lists = new QHBoxLayout;
    lists->setSpacing(10);
    lists->addWidget(m_fgList, 4);
    lists->addWidget(m_fgVeh, 1);
    auto *actions = new QHBoxLayout(m_fmSave);
    actions->setContentsMargins(0, 0, 0, 0);
    actions->addStretch();
    actions->addWidget(m_cmdOk);
    actions->addWidget(m_cmdExit);
    auto *body = new QVBoxLayout;
    body->setContentsMargins(14, 12, 14, 14);
    body->setSpacing(10);
    body->addLayout(search);
    body->addLayout(lists);
    body->addWidget(m_fmSave);
    auto *picture = new QVBoxLayout(m_Pic);
    picture->setContentsMargins(0, 0, 0, 0);
    picture->addWidget(m_lblName);
    picture->addLayout(body);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(m_Pic);
}

void frm_Srh_Spares::Form_Load()
{
    setWindowTitle(tr("Spare Part Search"));
    Session &session = m_context.session;
    session.FoundItemCode = 0;
    session.FoundPartCode.clear();
    session.FoundItemName.clear();
    const QSize share(static_cast<int>(session.MdiWidth * kWidthShare),
                      static_cast<int>(session.MdiHeight * kHeightShare));
    resize(share.expandedTo(kLeastSize));
    Design();
    Design_Veh();
    ui::guarded(this, [this] { searchFilter(); });
}

void frm_Srh_Spares::searchFilter()
{
    // Filled without its handler, so that an empty filter searches too, and only once.
    const QSignalBlocker blocker(m_txtItem_Name);
    m_txtItem_Name->setText(ui::shown(upperText(m_context.session.SearchFilter)));
    txtItem_Name_Change();
}

void frm_Srh_Spares::Form_Activate()
{
    m_txtItem_Name->setFocus();
}

void frm_Srh_Spares::Load_Items()
{
    TextGrid::Batch batch(m_parts);
    m_parts.setCurrent(0, kColCode);
    m_parts.setRows(1);
    m_vehicles.setRows(1); // of a part that may not be listed any more
    Design();
    if (!m_Adodc1.isOpen()) {
        m_Adodc1.setConnectionString(m_context.session.YearDsnConnect);
        m_Adodc1.open();
    }
    const auto parts = orders::findParts(m_Adodc1, m_field, m_text);
    m_parts.setRows(static_cast<int>(parts.size()) + 1);
    int row = 1;
    for (const orders::Part &part : parts) {
        m_parts.setText(row, kColCode, part.partCode);
        m_parts.setText(row, kColName, part.name);
        m_parts.setText(row, kColStock, part.stock);
        m_parts.setText(row, kColLocation, part.location);
        m_parts.setText(row, kColItem, std::to_string(part.code));
        m_parts.setText(row, kColHigher, part.higher);
        ++row;
    }
}

void frm_Srh_Spares::Load_Veh()
{
    TextGrid::Batch batch(m_vehicles);
    m_vehicles.setRows(1);
    Design_Veh();
    const int current = m_parts.currentRow();
    if (current <= 0)
        return;
    const auto item = narrow<std::int32_t>(Currency::fromText(m_parts.text(current, kColItem)).toUnits());
    const auto models = orders::vehicleModels(m_context.connections.conYear, item);
    m_vehicles.setRows(static_cast<int>(models.size()) + 1);
    int row = 1;
    for (const std::string &model : models)
        m_vehicles.setText(row++, 0, model);
}

void frm_Srh_Spares::Design()
{
    m_parts.setColumns(kColumns);
    m_parts.setFormatString(kFormat);
}

void frm_Srh_Spares::Design_Veh()
{
    m_vehicles.setFormatString(kVehicleFormat);
}

void frm_Srh_Spares::txtItem_Code_Change()
{
    searchBy("PartCode", kColCode, m_txtItem_Code->text());
}

void frm_Srh_Spares::txtItem_Name_Change()
{
    searchBy("ItemName", kColName, m_txtItem_Name->text());
}

void frm_Srh_Spares::searchBy(const char *field, int column, const QString &text)
{
    m_field = field;
    m_text = ui::typed(text);
    m_searching = true;
    const auto done = qScopeGuard([this] { m_searching = false; });
    Load_Items();
    const QString wanted = ui::shown(upperText(m_text));
    for (int row = 1; row < m_parts.rows(); ++row) {
        const QString cell = ui::shown(upperText(trimmed(m_parts.text(row, column))));
        if (cell.left(text.size()) == wanted) {
            m_parts.setCurrent(row, column);
            m_fgList->scrollToRow(row);
            break;
        }
    }
    Load_Veh();
}

void frm_Srh_Spares::txtItem_Down()
{
    if (m_parts.rows() > 1)
        m_fgList->setFocus();
}

void frm_Srh_Spares::fgList_RowColChange()
{
    if (!m_searching)
        Load_Veh();
}

void frm_Srh_Spares::fgList_KeyPress(int character)
{
    if (character == kEnter)
        cmdOk_Click();
}

void frm_Srh_Spares::cmdOk_Click()
{
    Session &session = m_context.session;
    const int row = m_parts.currentRow();
    const bool chosen = row > 0;
    session.FoundItemCode =
        chosen ? narrow<std::int32_t>(Currency::fromText(m_parts.text(row, kColItem)).toUnits()) : 0;
    session.FoundPartCode = chosen ? m_parts.text(row, kColCode) : std::string();
    session.FoundItemName = chosen ? m_parts.text(row, kColName) : std::string();
    accept();
}

void frm_Srh_Spares::cmdExit_Click()
{
    reject();
}
