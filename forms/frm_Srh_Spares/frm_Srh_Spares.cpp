#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"

#include "common/format.h"
#include "common/numbers.h"
#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/text.h"
#include "orders/stock.h"

#include <QHBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int kColCode = 0;
constexpr int kColName = 1;
constexpr int kColStock = 2;
constexpr int kColLocation = 3;
constexpr int kColItem = 4;
constexpr int kColHigher = 5;
constexpr int kColumns = 6;
/// Share of the main window's inner size that the form takes, and the least it needs.
constexpr double kWidthShare = 0.85;
constexpr double kHeightShare = 0.85;
constexpr QSize kLeastSize(760, 460);
/// The list and the vehicles beside it.
constexpr int kListShare = 4;
constexpr int kVehicleShare = 1;
constexpr int kListsGap = 10;

constexpr const char *kFormat =
    "<Part Number                        |<Part Name"
    "                                                                |^Qty.           "
    "|<Location                       ||";
constexpr const char *kVehicleFormat = "<Vehicle Model             ";

} // namespace

frm_Srh_Spares::frm_Srh_Spares(const forms::Context &context, QWidget *parent)
    : SearchDialog(QStringLiteral("frm_Srh_Spares"), tr("Select Spare Part"), kColumns, context.dialogs,
                   parent)
    , m_context(context)
    , m_txtItem_Code(addSearchBox("txtItem_Code", tr("Part N&umber"),
                                  tr("Type the beginning of the part number; Down goes to the list")))
    , m_txtItem_Name(addSearchBox("txtItem_Name", tr("Part &Name"),
                                  tr("Type the beginning of the part name; Down goes to the list")))
    , m_fgVeh(new ui::GridView(m_vehicles, ui::GridView::Selection::Rows, this))
{
    m_fgVeh->setObjectName(QStringLiteral("fgVeh"));
    layOutLists();
    ui::setKeyCard(this, tr("Spare Part Search"),
                   {{tr("letters, digits"), tr("narrow the list to the parts that begin so")},
                    {tr("Alt+U, Alt+N"), tr("to the part number, to the part name")},
                    {tr("Down"), tr("to the list")},
                    {tr("Up, Down"), tr("to another part in the list; its vehicles follow")},
                    {tr("Enter"), tr("takes the highlighted part")},
                    {tr("Escape"), tr("closes without a choice")}});
    ui::on(m_txtItem_Code, &QLineEdit::textChanged, this, &frm_Srh_Spares::txtItem_Code_Change);
    ui::on(m_txtItem_Name, &QLineEdit::textChanged, this, &frm_Srh_Spares::txtItem_Name_Change);
    for (ui::TextBox *box : {m_txtItem_Code, m_txtItem_Name}) {
        // The letter typed in the grid is the first of a word; the next one must not replace it.
        box->setSelectsOnFocus(false);
        ui::on(box, &ui::TextBox::downPressed, this, &frm_Srh_Spares::txtItem_Down);
    }
    ui::on(m_fgList, &ui::GridView::currentCellChanged, this, &frm_Srh_Spares::fgList_RowColChange);
    Form_Load();
}

frm_Srh_Spares::~frm_Srh_Spares()
{
    // Before the rows it shows.
    delete m_fgVeh;
}

void frm_Srh_Spares::layOutLists()
{
    m_fgList->setStretchColumns({kColName});
    m_fgList->setAccessibleName(tr("Spare parts"));
    m_fgList->setToolTip(tr("Enter or a double click takes the part"));
    m_fgList->setHeadingTips(
        {tr("Part number as the item master has it"), tr("Part name of the item master"),
         tr("Stock in hand of this year: all that came in less all that went out, row by "
            "row; empty when nothing was ever moved"),
         tr("Where the part lies in the store")});
    m_fgVeh->setStretchColumns({0});
    m_fgVeh->setAccessibleName(tr("Vehicle models of the highlighted part"));
    m_fgVeh->setToolTip(tr("Vehicles that the highlighted part fits"));
    m_fgVeh->setFocusPolicy(Qt::NoFocus);

    auto *lists = new QHBoxLayout;
    lists->setSpacing(kListsGap);
    lists->addWidget(m_fgList, kListShare);
    lists->addWidget(m_fgVeh, kVehicleShare);
    layOut(lists);
}

void frm_Srh_Spares::Form_Load()
{
    setWindowTitle(tr("Spare Part Search"));
    Session &session = m_context.session;
    session.FoundItemCode = 0;
    session.FoundPartCode.clear();
    session.FoundItemName.clear();
    Design();
    Design_Veh();
    const QSize mainWindow(session.MdiWidth, session.MdiHeight);
    // In a small window the list takes what there is, so that the location is in sight.
    const int wanted = m_fgList->neededWidth() * (kListShare + kVehicleShare) / kListShare + kListsGap;
    const QSize least(std::min(wanted, mainWindow.width()), kLeastSize.height());
    fitInto(mainWindow, kWidthShare, kHeightShare, least.expandedTo(kLeastSize));
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
    TextGrid::Batch batch(m_rows);
    m_rows.setCurrent(0, kColCode);
    m_rows.setRows(1);
    m_vehicles.setRows(1); // of a part that may not be listed any more
    Design();
    if (!m_Adodc1.isOpen()) {
        m_Adodc1.setConnectionString(m_context.session.YearDsnConnect);
        m_Adodc1.open();
    }
    auto parts = orders::findParts(m_Adodc1, m_field, m_text);
    m_rows.setRows(static_cast<int>(parts.size()) + 1);
    int row = 1;
    for (orders::Part &part : parts) {
        m_rows.setText(row, kColCode, std::move(part.partCode));
        m_rows.setText(row, kColName, std::move(part.name));
        m_rows.setText(row, kColStock, std::move(part.stock));
        m_rows.setText(row, kColLocation, std::move(part.location));
        m_rows.setText(row, kColItem, std::to_string(part.code));
        m_rows.setText(row, kColHigher, std::move(part.higher));
        ++row;
    }
}

void frm_Srh_Spares::Load_Veh()
{
    TextGrid::Batch batch(m_vehicles);
    m_vehicles.setRows(1);
    Design_Veh();
    const int current = m_rows.currentRow();
    if (current <= 0)
        return;
    const auto item = narrow<std::int32_t>(Currency::fromText(m_rows.text(current, kColItem)).toUnits());
    const auto models = orders::vehicleModels(m_context.connections.conYear, item);
    m_vehicles.setRows(static_cast<int>(models.size()) + 1);
    int row = 1;
    for (const std::string &model : models)
        m_vehicles.setText(row++, 0, model);
}

void frm_Srh_Spares::Design()
{
    m_rows.setColumns(kColumns);
    m_rows.setFormatString(kFormat);
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
    showMatch(column, text, text.size(), QAbstractItemView::EnsureVisible);
    Load_Veh();
}

void frm_Srh_Spares::txtItem_Down()
{
    if (m_rows.rows() > 1)
        m_fgList->setFocus();
}

void frm_Srh_Spares::fgList_RowColChange()
{
    if (!m_searching)
        Load_Veh();
}

void frm_Srh_Spares::cmdOk_Click()
{
    Session &session = m_context.session;
    const int row = m_rows.currentRow();
    const bool chosen = row > 0;
    session.FoundItemCode =
        chosen ? narrow<std::int32_t>(Currency::fromText(m_rows.text(row, kColItem)).toUnits()) : 0;
    session.FoundPartCode = chosen ? m_rows.text(row, kColCode) : std::string();
    session.FoundItemName = chosen ? m_rows.text(row, kColName) : std::string();
    accept();
}
