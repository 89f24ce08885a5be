#include "forms/frmStart/frmStart.h"

#include "common/null_safe.h"
#include "common/numbers.h"
#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/text.h"
#include "data/recordset.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace {

constexpr int kColSerial = 0;
constexpr int kColCode = 1;
constexpr int kColName = 2;
constexpr int kColTown = 3;
constexpr int kEnter = 13;
constexpr QSize kGridSize(640, 260);

constexpr const char *kFormat =
    "^Sl.No.|^Code|<Name of the Company                   |<Town/Village           ";

/// A date field formatted and read back, so that a time of day is left behind. Throws
/// RunTimeError(TypeMismatch) when the field holds no date.
Date dayOf(const Value &value)
{
    const std::optional<Date> day = Date::fromText(toText(value));
    if (!day)
        throw RunTimeError(ErrorNumber::TypeMismatch, "The financial year has no valid date.");
    return *day;
}

} // namespace

frmStart::frmStart(const forms::Context &context, forms::Navigator &navigator, QWidget *parent)
    : FormDialog(QStringLiteral("frmStart"), context.dialogs, parent)
    , m_context(context)
    , m_navigator(navigator)
    , m_fgList(new ui::GridView(m_companies, ui::GridView::Selection::Rows, this))
    , m_cmbYear(new ui::ComboBox(this))
    , m_cmdOk(addButton(QStringLiteral("cmdOk"), tr("&Ok")))
    , m_cmdExit(addButton(QStringLiteral("cmdExit"), tr("E&xit")))
{
    m_fgList->setObjectName(QStringLiteral("fgList"));
    m_cmbYear->setObjectName(QStringLiteral("cmbYear"));
    layOut();
    setCancelButton(m_cmdExit);
    // The first row is current before the handlers listen: only what the user does chooses a company.
    m_companies.setRows(2);
    m_companies.setCurrent(1, kColCode);
    ui::on(m_fgList, &ui::GridView::currentCellChanged, this, &frmStart::fgList_RowColChange);
    ui::on(m_fgList, &ui::GridView::currentCellChanged, this, &frmStart::fgList_SelChange);
    ui::on(m_fgList, &ui::GridView::cellClicked, this, &frmStart::fgList_Click);
    ui::on(m_fgList, &ui::GridView::keyPressed, this, &frmStart::fgList_KeyPress);
    ui::on(m_fgList, &ui::GridView::cellDoubleClicked, this, &frmStart::fgList_DblClick);
    ui::on(m_cmbYear, &ui::ComboBox::clicked, this, &frmStart::cmbYear_Click);
    ui::on(m_cmdOk, &QPushButton::clicked, this, &frmStart::cmdOk_Click);
    ui::on(m_cmdExit, &QPushButton::clicked, this, &frmStart::cmdExit_Click);
    ui::guarded(this, [this] { Form_Load(); });
}

frmStart::~frmStart()
{
    // Before the rows it shows.
    delete m_fgList;
}

void frmStart::layOut()
{
    m_fgList->setMinimumSize(kGridSize);
    m_fgList->setStretchColumns({kColName});
    m_fgList->setAccessibleName(tr("Companies"));
    m_fgList->setToolTip(
        tr("Enter opens the company's latest year; a click or an arrow key lists its years"));
    auto *yearLabel = new QLabel(tr("&Year"), this);
    yearLabel->setBuddy(m_cmbYear);
    // The underlined letter makes the text wider than the label reckons.
    yearLabel->setMinimumWidth(yearLabel->sizeHint().width() + fontMetrics().averageCharWidth());
    m_cmbYear->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_cmbYear->setMinimumContentsLength(24);
    m_cmbYear->setPlaceholderText(tr("Choose a company first"));
    m_cmbYear->setAccessibleName(tr("Financial year"));
    m_cmbYear->setToolTip(tr("Financial years of the chosen company, the latest one selected"));
    m_cmdOk->setToolTip(tr("Opens the selected year"));
    m_cmdExit->setToolTip(tr("Ends the program (Escape)"));

    QVBoxLayout *body = layOutUnder(new QLabel(tr("Select Company"), this));
    body->addWidget(m_fgList, 1);
    auto *actions = new QHBoxLayout;
    actions->addWidget(yearLabel);
    actions->addWidget(m_cmbYear);
    layOutButtons(actions, {m_cmdOk, m_cmdExit});
    body->addLayout(actions);
    ui::setKeyCard(this, tr("Select Company"),
                   {{tr("Up, Down"), tr("choose a company; its years are listed, the latest is selected")},
                    {tr("Enter"), tr("opens the latest year of the company")},
                    {tr("Alt+Y"), tr("to the years, to choose an older one")},
                    {tr("Alt+O"), tr("opens the selected year")},
                    {tr("Escape, Alt+X"), tr("ends the program")}});
}

void frmStart::Form_Load()
{
    setWindowTitle(tr(" Select Company"));
    m_context.session.ComCode.clear();
    data::Environment environment = m_context.environment();
    data::Open_Data(environment, "");
    if (!m_context.shell.ended())
        Load_Company();
}

void frmStart::Form_Activate()
{
    Load_Company();
    m_fgList->setFocus();
}

void frmStart::Load_Company()
{
    TextGrid::Batch batch(m_companies);
    m_companies.setRows(2);
    m_companies.clear();
    Design();
    data::Recordset companies("Select Distinct ComCode from Years Order by ComCode",
                              m_context.connections.conMain, data::CursorType::Static);
    std::int16_t row = 1;
    std::int16_t companyNumber = 1;
    for (; !companies.eof(); companies.moveNext()) {
        // Every code is counted, listed or not; a null code reads as "" and finds no year.
        if (listCompany(Null_Str(companies.field("ComCode")), companyNumber, row)) {
            row = narrow<std::int16_t>(row + 1);
            m_companies.setRows(m_companies.rows() + 1);
        }
        companyNumber = narrow<std::int16_t>(companyNumber + 1);
    }
    companies.close();
}

bool frmStart::listCompany(const std::string &code, std::int16_t companyNumber, std::int16_t row)
{
    data::Recordset years("Select * from Years Where ComCode = '" + code + "' order by Code Desc ",
                          m_context.connections.conMain, data::CursorType::Static);
    const bool listed = years.hasRows() && mayOpen(companyNumber);
    if (listed) {
        m_companies.setText(row, kColSerial, std::to_string(row));
        m_companies.setText(row, kColCode, Null_Str(years.field("ComCode")));
        m_companies.setText(row, kColName, Null_Str(years.field("ComName")));
        m_companies.setText(row, kColTown, Null_Str(years.field("Town")));
        m_companies.setRowData(row, narrow<std::int32_t>(toInteger(years.field("Code"))));
    }
    years.close();
    return listed;
}

bool frmStart::mayOpen(std::int16_t companyNumber)
{
    data::Recordset user("Select * from Pass where Uid = " + std::to_string(m_context.session.UserId) + " ",
                         m_context.connections.conMain);
    // Kept: the rights have two flags, so a third company is never listed.
    const char *flag = companyNumber == 1 ? "Year1" : companyNumber == 2 ? "Year2" : nullptr;
    // The flag is the number 1; -1, as other programs write a truth, is not.
    const bool may = user.hasRows() && flag && toDouble(user.field(flag)) == 1;
    user.close();
    return may;
}

void frmStart::Design()
{
    m_companies.setColumns(4);
    m_companies.setFormatString(kFormat);
}

void frmStart::Load_Years()
{
    m_cmbYear->clear();
    data::Recordset years("Select * from Years Where ComCode = '" + m_context.session.ComCode +
                              "' Order by Code",
                          m_context.connections.conMain);
    std::optional<std::int32_t> latest;
    for (; !years.eof(); years.moveNext()) {
        latest = narrow<std::int32_t>(toInteger(years.field("Code")));
        m_cmbYear->addEntry(ui::shown(toText(years.field("YStart")) + " - " + toText(years.field("YEnd"))),
                            *latest);
    }
    if (latest)
        Set_Combo(m_cmbYear, *latest);
    years.close();
}

std::string frmStart::currentCompany() const
{
    return m_companies.currentRow() >= 1 ? m_companies.text(m_companies.currentRow(), kColCode)
                                         : std::string();
}

bool frmStart::onCompany() const
{
    return m_companies.rows() > 1 && !currentCompany().empty();
}

void frmStart::fgList_Click()
{
    if (!onCompany())
        return;
    m_context.session.ComCode = currentCompany();
    Load_Years();
}

void frmStart::fgList_RowColChange()
{
    fgList_Click();
}

void frmStart::fgList_SelChange()
{
    if (!onCompany())
        return;
    m_context.session.ComCode = currentCompany();
    m_context.session.YearCode = m_companies.rowData(m_companies.currentRow());
    Load_Years();
}

void frmStart::fgList_KeyPress(int character)
{
    if (!onCompany())
        return;
    // Kept: the years are loaded anew and the latest is selected, also when another one was chosen before.
    fgList_SelChange();
    if (character == kEnter)
        cmdOk_Click();
}

void frmStart::fgList_DblClick()
{
    // Kept: as with Enter the latest year is selected first; OK runs whether a company is selected or not.
    fgList_Click();
    cmdOk_Click();
}

void frmStart::cmbYear_Click()
{
    if (const auto code = m_cmbYear->selectedData()) {
        m_context.session.ComCode = currentCompany();
        m_context.session.YearCode = *code;
    }
}

void frmStart::cmdOk_Click()
{
    const auto year = m_cmbYear->selectedData();
    if (!year) {
        dialogs().notice(ui::typed(tr("Select Year")));
        return;
    }
    m_context.session.ComCode = currentCompany();
    m_context.session.YearCode = *year;
    if (!takeYearRow())
        return;
    data::Environment environment = m_context.environment();
    attempt([&] { data::Open_Data(environment, m_database); });
    if (m_context.shell.ended())
        return;
    Un();
    attempt([&] { m_navigator.showMain(); });
}

/// Fills the session from the chosen row of `Years`, failing statements skipped one by one. False when there
/// is no row or no reading it. The row is let go before the main database is opened anew.
bool frmStart::takeYearRow()
{
    Session &session = m_context.session;
    data::Recordset year;
    const bool opened = attempt([&] {
        year.open("Select * from Years where ComCode='" + session.ComCode +
                      "' and Code = " + std::to_string(session.YearCode),
                  m_context.connections.conMain);
    });
    if (!opened || !year.hasRows())
        return false;
    attempt([&] { session.YearStart = dayOf(year.field("YStart")); });
    attempt([&] { session.YearEnd = dayOf(year.field("YEnd")); });
    session.WorkDate = std::min(m_context.clock.today(), session.YearEnd);
    attempt([&] { session.ComName = Null_Str(year.field("ComName")); });
    attempt([&] { session.Town = Null_Str(year.field("Town")); });
    attempt([&] { session.DbSub = Null_Str(year.field("DbSub")); });
    m_database.clear();
    attempt([&] { m_database = Null_Str(year.field("DBMst")); });
    attempt([&] { year.close(); });
    return true;
}

void frmStart::cmdExit_Click()
{
    Un();
    // No other window is open.
    m_context.shell.endProgram();
}

void frmStart::Un()
{
    hide();
}

/// The same as Un; nothing calls it.
void frmStart::Un_Ld()
{
    Un();
}

std::uint8_t frmStart::Numm(const std::string &N)
{
    static constexpr std::array<std::uint8_t, 10> kDigits{9, 7, 2, 8, 7, 3, 2, 3, 1, 4};
    const double value = leadingNumber(N);
    for (std::size_t number = 0; number < kDigits.size(); ++number) {
        if (value == static_cast<double>(number))
            return kDigits[number];
    }
    return 1;
}
