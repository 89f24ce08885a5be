#include "forms/frmOrd/frmOrd_ui.h"

#include "common/ui/create.h"
#include "common/ui/style.h"
#include "forms/frmOrd/frmOrd_why.h"
#include "forms/frmOrd/frmOrd_words.h"
#include "orders/order.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <algorithm>

namespace {

/// Widths of fields in characters of their own font.
constexpr int kNumberCharacters = 10;
constexpr int kTotalCharacters = 16;
constexpr int kWidestField = 34;
constexpr int kProgressCharacters = 24;
constexpr int kBandMargin = 10;
constexpr int kFieldGap = 8;
constexpr int kGroupGap = 36;
constexpr int kFieldRows = 3;
/// Of the height when the panel lies below the lines.
constexpr int kLinesShare = 4;
constexpr int kWhyShare = 5;
/// A form of fewer lines of text is low.
constexpr int kLowForm = 40;

/// Columns of the field band: the order at the left, what the proposal starts from at the right.
enum FieldColumn {
    kOrderLabel,
    kOrderField,
    kDateLabel,
    kDateField,
    kGap,
    kProposalLabel,
    kProposalField,
    kFromLabel,
    kFromField,
};

using ui::create;

ui::TextBox *createBox(const char *name, QWidget *parent, ui::TextBox::Keys keys)
{
    auto *box = create<ui::TextBox>(name, parent);
    box->setKeys(keys);
    return box;
}

QPushButton *createButton(const char *name, QWidget *parent, const QString &caption)
{
    auto *button = create<QPushButton>(name, parent, caption);
    button->setAutoDefault(false);
    return button;
}

int fontWidth(const QWidget *control)
{
    return control->fontMetrics().horizontalAdvance(QLatin1Char('0'));
}

void setCharacters(QWidget *control, int characters)
{
    control->setMinimumWidth(fontWidth(control) * characters);
}

QFrame *createLine(QWidget *parent)
{
    auto *line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setForegroundRole(QPalette::Mid);
    line->setFrameShadow(QFrame::Plain);
    return line;
}

QLabel *createLabel(const QString &text, QWidget *field)
{
    auto *label = new QLabel(text, field->parentWidget());
    label->setBuddy(field);
    return label;
}

struct Description
{
    QWidget *control;
    QString name;
    QString tip;
};

} // namespace

frmOrdUi::frmOrdUi(QWidget *form, TextGrid &lines)
    : Pic(create<QFrame>("Pic", form))
    , outerShape(create<QFrame>("outerShape", Pic))
    , innerShape(create<QFrame>("innerShape", Pic))
    , lblName(create<QLabel>("lblName", Pic, tr("Spares Order Form")))
{
    for (QFrame *&separator : separators)
        separator = createLine(Pic);
    outerShape->setFrameShape(QFrame::NoFrame);
    innerShape->setFrameShape(QFrame::NoFrame);
    ui::makeHeading(lblName);
    createFields();
    createGrid(lines);
    createActions();
    Timer1 = new QTimer(form);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    describe();
}

void frmOrdUi::createFields()
{
    using Keys = ui::TextBox::Keys;
    txtOrdNo = createBox("txtOrdNo", Pic, Keys::Digits);
    setCharacters(txtOrdNo, kNumberCharacters);
    dtpOrdDate = create<ui::DateBox>("dtpOrdDate", Pic);
    txtSName = createBox("txtSName", Pic, Keys::UpperCase);
    cmdSup = createButton("cmdSup", Pic, tr("&Choose..."));
    txtPlace = createBox("txtPlace", Pic, Keys::UpperCase);
    cmbType = create<ui::ComboBox>("cmbType", Pic);
    cmbMonth = create<ui::ComboBox>("cmbMonth", Pic);
    dtpAvgFrom = create<ui::DateBox>("dtpAvgFrom", Pic);
    txtMQ = createBox("txtMQ", Pic, Keys::Digits);
    setCharacters(txtMQ, kNumberCharacters);
    cmdView = createButton("cmdView", Pic, tr("Fill &Average Stock"));
    txtQty = createBox("txtQty", Pic, Keys::Digits);
    txtPC = createBox("txtPC", Pic, Keys::Digits);
    txtQty->hide();
    txtPC->hide();
}

void frmOrdUi::createGrid(TextGrid &lines)
{
    fgList = new ui::GridView(lines, ui::GridView::Selection::Cells, innerShape);
    fgList->setObjectName(QStringLiteral("fgList"));
    fgList->setStretchColumns({orders::kColPartName});
    fgList->setHeadingTips(words::columnTips());
    fgList->setWidestText(orders::kColRate, QStringLiteral("9999999.00"));
    fgList->setWidestText(orders::kColAmount, QStringLiteral("9999999.00"));
    txtItem = createBox("txtItem", fgList->viewport(), ui::TextBox::Keys::All);
    txtItem->hide();
    fmWhy = create<WhyPanel>("fmWhy", innerShape);
    fmWhy->hide();
}

void frmOrdUi::createActions()
{
    cmbOrder = create<ui::ComboBox>("cmbOrder", Pic);
    cmbOrder->setPlaceholderText(tr("As stored"));
    lblP = create<QLabel>("lblP", Pic, tr("Print &order"));
    lblP->setBuddy(cmbOrder);
    chkRat = create<QCheckBox>("chkRat", Pic, tr("Print &rates and amounts"));
    cmdPaper = createButton("cmdPaper", Pic, tr("Loo&k at Paper"));

    Pb = create<QProgressBar>("Pb", Pic);
    setCharacters(Pb, kProgressCharacters);
    Pb->setTextVisible(false);
    Pb->hide();
    lblResult = create<QLabel>("lblResult", Pic);
    lblResult->setTextFormat(Qt::PlainText);
    // A long result is cut rather than allowed to make the window wider.
    lblResult->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    fmAmt = create<QFrame>("fmAmt", Pic);
    lblNetTotal = create<QLabel>("lblNetTotal", fmAmt, QStringLiteral("0.00"));
    QFont large = lblNetTotal->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    large.setBold(true);
    lblNetTotal->setFont(large);
    lblNetTotal->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setCharacters(lblNetTotal, kTotalCharacters);

    cmdImp = createButton("cmdImp", Pic, tr("&Import..."));
    cmdXls = createButton("cmdXls", Pic, tr("&Export"));
    cmdWhy = createButton("cmdWhy", Pic, tr("Wh&y?"));
    cmdWhy->setCheckable(true);
    // Opened by its key or a click, the panel leaves the focus with the lines that it explains.
    cmdWhy->setFocusPolicy(Qt::TabFocus);
    fmSave = create<QFrame>("fmSave", Pic);
    CmdSave = createButton("CmdSave", fmSave, tr("&Save"));
    cmdExit = createButton("cmdExit", fmSave, tr("E&xit"));
}

void frmOrdUi::describe()
{
    const Description descriptions[] = {
        {txtOrdNo, tr("Order number"), tr("Number of the order; type it and press Enter to load the order")},
        {dtpOrdDate, tr("Order date"), tr("Date of the order; the averaging period ends before it")},
        {txtSName, tr("Supplier name"), tr("Name of the supplier, filled by the supplier list")},
        {cmdSup, tr("Choose supplier"), tr("Opens the list of suppliers")},
        {txtPlace, tr("Supplier town"), tr("Town of the supplier")},
        {cmbType, tr("Order type"), tr("Which kind of items the proposal takes")},
        {cmbMonth, tr("Averaging months"), tr("Months to average over; choosing them sets the from-date")},
        {dtpAvgFrom, tr("Averaging from"), tr("First day of the averaging period")},
        {txtMQ, tr("Months of cover"), tr("How many months of average demand the stock shall cover")},
        {cmdView, tr("Fill average stock"), tr("Replaces the lines by the proposed order")},
        {fgList, tr("Order lines"),
         tr("Lines of the order; a letter in the part name opens the part list, Ctrl+Delete removes a line")},
        {txtItem, tr("Cell of the order line"), {}},
        {cmbOrder, tr("Print order"), tr("Order of the lines on paper")},
        {chkRat, tr("Print rates and amounts"), tr("Prints rates, amounts and the total too")},
        {cmdPaper, tr("Show paper"), tr("Shows the last text print as it comes out of the printer")},
        {Pb, tr("Progress"), tr("How far the running work is")},
        {lblResult, tr("Result"), tr("What the last proposal or exchange came to")},
        {lblNetTotal, tr("Net total"), tr("Sum of all amounts, renewed every second")},
        {cmdImp, tr("Import from spreadsheet"), tr("Reads lines from a spreadsheet")},
        {cmdXls, tr("Export to spreadsheet"), tr("Writes the order to a spreadsheet")},
        {cmdWhy, tr("Why this quantity"),
         tr("Shows beside the lines how the current line's quantity was worked out, and why a part is "
            "missing")},
        {fmWhy, tr("Why this quantity"), {}},
        {CmdSave, tr("Save order"), tr("Saves the order and offers to print it")},
        {cmdExit, tr("Exit"), tr("Leaves the program")},
    };
    for (const Description &description : descriptions) {
        description.control->setAccessibleName(description.name);
        description.control->setToolTip(description.tip);
    }
}

void frmOrdUi::arrange(QWidget *form)
{
    auto *whole = new QVBoxLayout(form);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(Pic);
    auto *rim = new QVBoxLayout(Pic);
    rim->setContentsMargins(0, 0, 0, 0);
    rim->addWidget(outerShape);

    auto *bands = new QVBoxLayout(outerShape);
    bands->setContentsMargins(0, 0, 0, kBandMargin);
    bands->setSpacing(kFieldGap);
    auto *grid = gridBand();
    auto *actions = actionBand();
    auto *fields = fieldBand();
    auto *heading = new QVBoxLayout;
    heading->setSpacing(0);
    heading->addWidget(lblName);
    heading->addWidget(separators[0]);
    bands->addLayout(heading);
    bands->addLayout(fields);
    bands->addWidget(separators[1]);
    bands->addLayout(grid, 1);
    bands->addWidget(separators[2]);
    bands->addLayout(printBand());
    bands->addWidget(separators[3]);
    bands->addLayout(actions);
    setTabOrder();
}

QLayout *frmOrdUi::fieldBand()
{
    auto *fields = new QGridLayout;
    fields->setContentsMargins(kBandMargin, 0, kBandMargin, 0);
    fields->setHorizontalSpacing(kFieldGap);
    fields->setVerticalSpacing(kFieldGap);
    addFieldLabels(fields);

    fields->addWidget(txtOrdNo, 0, kOrderField);
    fields->addWidget(dtpOrdDate, 0, kDateField);
    auto *supplier = new QHBoxLayout;
    supplier->addWidget(txtSName, 1);
    supplier->addWidget(cmdSup);
    fields->addLayout(supplier, 1, kOrderField, 1, 3);
    fields->addWidget(txtPlace, 2, kOrderField, 1, 3);

    fields->addWidget(cmbType, 0, kProposalField, 1, 3);
    fields->addWidget(cmbMonth, 1, kProposalField);
    fields->addWidget(dtpAvgFrom, 1, kFromField);
    fields->addWidget(txtMQ, 2, kProposalField);
    fields->addWidget(cmdView, 2, kFromLabel, 1, 2);

    // Rows with a button and rows without one are equally high.
    for (int row = 0; row < kFieldRows; ++row)
        fields->setRowMinimumHeight(row, cmdSup->sizeHint().height());
    // On a wide screen the room goes between the two groups and not into fields for a date or a number.
    for (QWidget *field : {static_cast<QWidget *>(txtOrdNo), static_cast<QWidget *>(dtpOrdDate),
                           static_cast<QWidget *>(cmbMonth), static_cast<QWidget *>(dtpAvgFrom),
                           static_cast<QWidget *>(txtMQ)}) {
        field->setMaximumWidth(fontWidth(field) * kWidestField);
    }
    fields->setColumnStretch(kGap, 1);
    fields->setColumnMinimumWidth(kGap, kGroupGap);
    for (const int column : {kOrderField, kDateField})
        fields->setColumnStretch(column, 3);
    for (const int column : {kProposalField, kFromField})
        fields->setColumnStretch(column, 2);
    return fields;
}

void frmOrdUi::addFieldLabels(QGridLayout *fields)
{
    const Qt::Alignment place = Qt::AlignRight | Qt::AlignVCenter;
    fields->addWidget(createLabel(tr("Order &no."), txtOrdNo), 0, kOrderLabel, place);
    fields->addWidget(createLabel(tr("&Date"), dtpOrdDate), 0, kDateLabel, place);
    fields->addWidget(createLabel(tr("S&upplier"), txtSName), 1, kOrderLabel, place);
    fields->addWidget(createLabel(tr("&Place"), txtPlace), 2, kOrderLabel, place);
    fields->addWidget(createLabel(tr("&Type"), cmbType), 0, kProposalLabel, place);
    fields->addWidget(createLabel(tr("Average &months"), cmbMonth), 1, kProposalLabel, place);
    fields->addWidget(createLabel(tr("&from"), dtpAvgFrom), 1, kFromLabel, place);
    fields->addWidget(createLabel(tr("Months of co&ver"), txtMQ), 2, kProposalLabel, place);
}

QLayout *frmOrdUi::gridBand()
{
    auto *inside = new QVBoxLayout(innerShape);
    inside->setContentsMargins(0, 0, 0, 0);
    inside->setSpacing(kFieldGap / 2);
    inside->addWidget(createLabel(tr("Order &lines"), fgList));
    linesAndWhy = new QBoxLayout(QBoxLayout::LeftToRight);
    linesAndWhy->setSpacing(kBandMargin);
    linesAndWhy->addWidget(fgList);
    linesAndWhy->addWidget(fmWhy);
    inside->addLayout(linesAndWhy, 1);
    auto *band = new QVBoxLayout;
    band->setContentsMargins(kBandMargin, 0, kBandMargin, 0);
    band->addWidget(innerShape);
    return band;
}

void frmOrdUi::placeWhy(QSize form)
{
    const int spare = form.width() - 3 * kBandMargin - fgList->neededWidth();
    // Where the lines are scrolled sideways anyhow and the window is low, each of the two keeps its height:
    // below one another they would show a line or two.
    const bool isLow = form.height() < fmWhy->fontMetrics().height() * kLowForm;
    const int half = std::max(fmWhy->leastWidth(), (form.width() - 3 * kBandMargin) / 2);
    const int beside = spare < 0 && isLow ? half : fmWhy->widthBeside(spare);
    const auto direction = beside > 0 ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
    if (direction != linesAndWhy->direction()) {
        linesAndWhy->setDirection(direction);
        fmWhy->setPlace(beside > 0 ? WhyPanel::Place::Beside : WhyPanel::Place::Below);
    }
    fmWhy->setMinimumWidth(beside);
    fmWhy->setMaximumWidth(beside > 0 ? beside : QWIDGETSIZE_MAX);
    linesAndWhy->setStretchFactor(fgList, beside > 0 ? 1 : kLinesShare);
    linesAndWhy->setStretchFactor(fmWhy, beside > 0 ? 0 : kWhyShare);
}

QLayout *frmOrdUi::printBand()
{
    auto *amount = new QHBoxLayout(fmAmt);
    amount->setContentsMargins(0, 0, 0, 0);
    amount->addWidget(new QLabel(tr("Net total"), fmAmt));
    amount->addWidget(lblNetTotal);

    auto *band = new QHBoxLayout;
    band->setContentsMargins(kBandMargin, 0, kBandMargin, 0);
    band->setSpacing(kFieldGap);
    band->addWidget(lblP);
    band->addWidget(cmbOrder);
    band->addSpacing(kFieldGap);
    band->addWidget(chkRat);
    band->addSpacing(kFieldGap);
    band->addWidget(cmdPaper);
    band->addStretch(1);
    band->addWidget(fmAmt);
    return band;
}

QLayout *frmOrdUi::actionBand()
{
    auto *save = new QHBoxLayout(fmSave);
    save->setContentsMargins(0, 0, 0, 0);
    save->setSpacing(kFieldGap);
    save->addWidget(CmdSave);
    save->addWidget(cmdExit);

    auto *band = new QHBoxLayout;
    band->setContentsMargins(kBandMargin, 0, kBandMargin, 0);
    band->setSpacing(kFieldGap);
    for (QPushButton *button : {cmdWhy, cmdImp, cmdXls})
        band->addWidget(button);
    band->addSpacing(kGroupGap);
    // The two take turns in the same place: the work, then what it came to.
    band->addWidget(Pb, 1);
    band->addWidget(lblResult, 1);
    band->addSpacing(kGroupGap);
    band->addWidget(fmSave);
    return band;
}

/// The order of work: whose order, what to propose, the lines, the paper, save.
void frmOrdUi::setTabOrder()
{
    QWidget *const order[] = {txtOrdNo,   dtpOrdDate, cmdSup,  txtSName, txtPlace, cmbType,  cmbMonth,
                              dtpAvgFrom, txtMQ,      cmdView, fgList,   txtItem,  cmbOrder, chkRat,
                              CmdSave,    cmdExit,    cmdWhy,  cmdImp,   cmdXls,   cmdPaper};
    for (std::size_t next = 1; next < std::size(order); ++next)
        QWidget::setTabOrder(order[next - 1], order[next]);
}
