#include "forms/frmOrd/frmOrd.h"

#include "common/db.h"
#include "common/null_safe.h"
#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/style.h"
#include "common/ui/text.h"
#include "common/ui/waiting.h"
#include "data/data_sources.h"
#include "data/recordset.h"
#include "forms/frmOrd/frmOrd_ui.h"
#include "forms/frmOrd/frmOrd_why.h"
#include "forms/frmOrd/frmOrd_words.h"
#include "forms/frm_Srh_Names/frm_Srh_Names.h"
#include "forms/paper_preview/paper_preview.h"
#include "orders/permission.h"
#include "orders/persistence.h"
#include "output/print_order.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QScopeGuard>

namespace {

// Key codes and form-mode flags of the three modes.
constexpr std::int16_t kKeyNew = 113;
constexpr std::int16_t kKeyModify = 114;
constexpr std::int16_t kKeyDelete = 115;
constexpr std::uint8_t kNew = 1;
constexpr std::uint8_t kModify = 2;
constexpr std::uint8_t kDelete = 3;

constexpr std::uint8_t kSupplierSearch = 10;
constexpr int kMonths = 12;
constexpr int kTimerMs = 1000;

/// The key code that Identity knows, 0 for any other key.
std::int16_t modeKey(const QKeyEvent &key)
{
    switch (key.key()) {
    case Qt::Key_F2:
        return kKeyNew;
    case Qt::Key_F3:
        return kKeyModify;
    case Qt::Key_F4:
        return kKeyDelete;
    default:
        return 0;
    }
}

bool isEnter(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

} // namespace

frmOrd::frmOrd(const forms::Context &context, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_lines(orders::kColumns)
    , m_ui(std::make_unique<frmOrdUi>(this, m_lines))
    , m_proposal(context.session, context.connections.conMain, context.connections.conLayouts,
                 context.connections.conYear)
    , m_explainer(context.session, context.connections.conMain, context.connections.conLayouts,
                  context.connections.conYear)
{
    setObjectName(QStringLiteral("frmOrd"));
    // A grid begins with one empty row, and its first inner cell is the current one.
    m_lines.setRows(2);
    m_lines.setCurrent(1, orders::kColPartNo);
    m_ui->arrange(this);
    ui::setKeyCard(this, tr("Spares Order Form"), words::orderKeys());
    connectControls();
    connectGrid();
    connectWhy();
    Form_Load();
}

frmOrd::~frmOrd()
{
    delete m_paper;
    // The controls report their end to the form; nothing of it may answer any more.
    for (QWidget *control : findChildren<QWidget *>())
        control->removeEventFilter(this);
    delete m_ui->Pic;
}

void frmOrd::Form_Load()
{
    m_context.session.FormMode = kNew;
    setWindowTitle(tr(" Spares Order Form")); // The blank at the front belongs to the caption.
    Disp_Set();
    m_ui->Timer1->start(kTimerMs);
    if (m_context.spreadsheets)
        m_context.spreadsheets->prepare();
}

void frmOrd::Form_Activate()
{
    Disp_Set();
    Load_Months();
}

void frmOrd::connectControls()
{
    ui::on(m_ui->cmbType, &ui::ComboBox::clicked, this, &frmOrd::cmbType_Click);
    ui::on(m_ui->cmbMonth, &ui::ComboBox::clicked, this, &frmOrd::cmbMonth_Click);
    ui::on(m_ui->txtOrdNo, &ui::TextBox::enterPressed, this, &frmOrd::Get_Data);
    ui::on(m_ui->cmdSup, &QPushButton::clicked, this, &frmOrd::cmdSup_Click);
    ui::on(m_ui->cmdView, &QPushButton::clicked, this, &frmOrd::cmdView_Click);
    ui::on(m_ui->CmdSave, &QPushButton::clicked, this, &frmOrd::CmdSave_Click);
    ui::on(m_ui->cmdXls, &QPushButton::clicked, this, &frmOrd::cmdXls_Click);
    ui::on(m_ui->cmdImp, &QPushButton::clicked, this, &frmOrd::cmdImp_Click);
    ui::on(m_ui->cmdPaper, &QPushButton::clicked, this, &frmOrd::cmdPaper_Click);
    ui::on(m_ui->cmdExit, &QPushButton::clicked, this, &frmOrd::cmdExit_Click);
    ui::on(m_ui->Timer1, &QTimer::timeout, this, &frmOrd::Timer1_Timer);
    // Popups (the calendars) keep their keys.
    for (QWidget *control : findChildren<QWidget *>()) {
        if (control->window() == window())
            control->installEventFilter(this);
    }
}

void frmOrd::Calling()
{
    Session &session = m_context.session;
    if (!orders::UserTasks(session, orders::kOrderTask)) {
        dialogs().notice(ui::typed(tr("You donot have the Permission to ")) + session.DeniedAction);
        m_context.shell.endProgram();
        return;
    }
    Clear_Fields();
    showResult({});
    m_removed.reset();
    m_ui->dtpOrdDate->setDay(session.WorkDate.midnight());
    m_lines.clear();
    m_ui->cmdImp->hide();
    Design();
    m_supplierCode = 0;
    m_lines.setRows(2);
    m_lines.setCurrent(1, orders::kColPartNo);
    fgList_EnterCell();
    enterMode();
    Load_Print_Order();
}

/// What the modes differ in: mode word, heading, and whether the number is assigned or typed.
void frmOrd::enterMode()
{
    const std::uint8_t mode = m_context.session.FormMode;
    using Mood = ui::HeadingMood;
    ui::setHeadingMood(m_ui->lblName, mode == kNew      ? Mood::Usual
                                      : mode == kModify ? Mood::Changing
                                                        : Mood::Looking);
    if (mode == kNew) {
        m_mode = "NEW";
        Max_OrdNo();
        m_ui->lblName->setText(tr("New Spares Order Form"));
        m_ui->txtOrdNo->setEnabled(false);
        m_ui->dtpOrdDate->setFocus();
        m_ui->cmdXls->setEnabled(false);
        m_ui->cmdImp->show();
        return;
    }
    m_mode = mode == kModify ? "MOD" : "DEL";
    m_ui->lblName->setText(mode == kModify ? tr("Modify Spares Order Form") : tr("Delete Spares Order Form"));
    m_ui->txtOrdNo->setEnabled(true);
    m_ui->txtOrdNo->clear();
    m_ui->txtOrdNo->setFocus();
    m_ui->cmdXls->setEnabled(true);
}

void frmOrd::Identity(std::int16_t Ked)
{
    std::uint8_t &mode = m_context.session.FormMode;
    switch (Ked) {
    case kKeyNew:
        mode = kNew;
        break;
    case kKeyModify:
        mode = kModify;
        break;
    case kKeyDelete:
        mode = kDelete;
        break;
    default:
        return;
    }
    Calling();
}

/// Proposes the next order number; nothing reserves it, and a new order asks again when it is saved.
void frmOrd::Max_OrdNo()
{
    m_nextNumber = orders::Max_OrdNo(m_context.connections.conYear);
    m_ui->txtOrdNo->setText(QString::number(m_nextNumber));
}

void frmOrd::Clear_Fields()
{
    for (QLineEdit *box : {m_ui->txtSName, m_ui->txtPlace, m_ui->txtItem, m_ui->txtPC, m_ui->txtQty})
        box->clear();
    Load_Types();
}

void frmOrd::Load_Types()
{
    using orders::OrderType;
    m_ui->cmbType->clear();
    const std::pair<QString, OrderType> entries[] = {
        {tr("ALL"), OrderType::All},
        {tr("SPARES"), OrderType::Spares},
        {tr("ACCESSORIES"), OrderType::Accessories},
        {tr("CONSUMABLES"), OrderType::Consumables},
    };
    for (const auto &[text, type] : entries)
        m_ui->cmbType->addEntry(text, static_cast<std::int32_t>(type));
    Set_Combo(m_ui->cmbType, static_cast<std::int32_t>(OrderType::All));
}

void frmOrd::Load_Months()
{
    m_ui->cmbMonth->clear();
    for (int months = 1; months <= kMonths; ++months)
        m_ui->cmbMonth->addEntry(tr("%1 M").arg(months), months);
    Set_Combo(m_ui->cmbMonth, 1);
}

void frmOrd::Load_Print_Order()
{
    m_ui->cmbOrder->clear();
    for (const output::PrintOrderEntry &entry : output::kPrintOrders)
        m_ui->cmbOrder->addEntry(tr(entry.text), static_cast<std::int32_t>(entry.order));
}

void frmOrd::cmbType_Click()
{
    if (const auto type = m_ui->cmbType->selectedData())
        m_orderType = static_cast<std::uint8_t>(*type);
}

void frmOrd::cmbMonth_Click()
{
    if (const auto months = m_ui->cmbMonth->selectedData())
        m_ui->dtpAvgFrom->setDay(m_ui->dtpOrdDate->day().addMonths(-*months));
}

void frmOrd::cmdSup_Click()
{
    Session &session = m_context.session;
    session.SearchKind = kSupplierSearch;
    session.SearchFilter.clear();
    session.FoundLedgCode = 0;
    frm_Srh_Names search(m_context, this);
    search.Calling();
    search.exec();

    // Without a choice the boxes keep what they had, but a save will ask for a supplier.
    m_supplierCode = 0;
    if (session.FoundLedgCode <= 0)
        return;
    m_supplierCode = session.FoundLedgCode;
    const auto ledger = [&](const char *field) {
        return ui::shown(
            Get_Field(m_context.connections.conYear, "Mast_Ledgers", "LedgCode", m_supplierCode, field));
    };
    m_ui->txtSName->setText(ledger("LedgName"));
    m_ui->txtPlace->setText(ledger("Town"));
    window()->setAttribute(Qt::WA_KeyboardFocusChange);
    m_ui->cmbType->setFocus(Qt::TabFocusReason); // Name and place are filled: the work goes on behind them.
}

void frmOrd::cmdExit_Click()
{
    // What goes wrong with the data sources is told; it must not keep the user in the program.
    ui::guarded(this, [this] { D_Dsn(); });
    m_context.shell.endProgram();
}

/// Fits the form into the main window. Once it is its child it follows that window's size by itself; the
/// layouts keep the parts within `Pic` in their places.
void frmOrd::Disp_Set()
{
    const Session &session = m_context.session;
    if (!parentWidget() && session.MdiWidth > 0 && session.MdiHeight > 0)
        resize(session.MdiWidth, session.MdiHeight);
    layout()->activate();
}

/// Closes the year and the main database and removes the data sources of every year and of the main database.
void frmOrd::D_Dsn()
{
    data::Connections &connections = m_context.connections;
    const std::string folder = m_context.session.ServerPath + "\\Databas\\";
    connections.conYear.close();
    // Left by the exit button and then unloaded: the data sources are gone already.
    if (!connections.conMain.isOpen())
        return;
    data::Recordset years("Select * from Years", connections.conMain);
    for (; !years.eof(); years.moveNext()) {
        const std::string code = Null_Str(years.field("DBMst"));
        data::Remove_Dsn("VELK_OTH_" + code, folder + code + ".mdb");
    }
    years.close();
    connections.conMain.close();
    data::Remove_Dsn("VELK_OTH_MAIN", folder + "Main.mdb");
}

void frmOrd::showResult(const QString &line)
{
    m_ui->lblResult->setText(line);
    // What does not fit into the line can be read there; a part code from a sheet must not pass for markup.
    m_ui->lblResult->setToolTip(line.isEmpty() ? line
                                               : QStringLiteral("<span>%1</span>").arg(line.toHtmlEscaped()));
}

void frmOrd::pauseFor(Currency seconds)
{
    constexpr double kSecondsPerDay = 86'400;
    m_pauseEnd = Date::fromSerial(m_context.clock.now().serial() + seconds.toDouble() / kSecondsPerDay);
    const auto done = qScopeGuard([this] { m_pauseEnd.reset(); });
    Wait_Secs(m_context.clock, seconds);
}

void frmOrd::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Coming back from another program is no activation: the month would fall back to 1.
    if (!event->spontaneous())
        ui::guarded(this, [this] { Form_Activate(); });
}

void frmOrd::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_ui->placeWhy(size());
}

void frmOrd::closeEvent(QCloseEvent *event)
{
    if (m_busy) {
        showResult(tr("Please wait: the window can be closed when this work is done."));
        event->ignore();
        // A pause that crosses midnight never ends; the user must not be held in one that ought to be over.
        if (m_pauseEnd && m_context.clock.now() > *m_pauseEnd)
            cmdExit_Click();
        return;
    }
    m_ui->Timer1->stop();
    ui::guarded(this, [this] { D_Dsn(); });
    if (m_context.spreadsheets)
        m_context.spreadsheets->end();
    QWidget::closeEvent(event);
}

bool frmOrd::eventFilter(QObject *watched, QEvent *event)
{
    bool taken = false;
    if (!m_context.shell.ended()) {
        ui::guarded(this, [&] {
            taken = event->type() == QEvent::KeyPress; // A key whose handler fails is used up all the same.
            taken = filtered(watched, event);
        });
    }
    return taken || QWidget::eventFilter(watched, event);
}

bool frmOrd::filtered(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress)
        return formKey(watched, *static_cast<QKeyEvent *>(event));
    if (event->type() == QEvent::FocusIn && watched == m_ui->fgList) {
        // From the keyboard the user comes to edit; the pointer says itself what it wants.
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
            reason == Qt::ShortcutFocusReason) {
            m_gridFocus.start();
        }
    }
    return false;
}

/// Keys that mean the same in many controls. True when the control shall not see the key.
bool frmOrd::formKey(QObject *watched, const QKeyEvent &key)
{
    if (const std::int16_t code = modeKey(key); code != 0 && key.modifiers() == Qt::NoModifier) {
        Identity(code);
        return true;
    }
    if (watched == m_ui->txtItem)
        return txtItem_KeyDown(key);
    if (watched == m_ui->fgList)
        return gridKey(key);
    const bool inWhy = m_ui->fmWhy->isAncestorOf(qobject_cast<QWidget *>(watched));
    if (!isEnter(key) || watched == m_ui->txtOrdNo || inWhy)
        return false;
    if (auto *button = qobject_cast<QPushButton *>(watched)) {
        button->click();
    } else {
        window()->setAttribute(Qt::WA_KeyboardFocusChange); // Shows the focus, as after Tab.
        focusNextChild();
    }
    return true;
}
