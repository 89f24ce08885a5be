#include "common/ui/search_dialog.h"

#include "common/format.h"
#include "common/ui/connect.h"
#include "common/ui/create.h"
#include "common/ui/text.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ui {

namespace {

constexpr int kEnter = 13;
constexpr int kBoxGap = 12;

} // namespace

SearchDialog::SearchDialog(const QString &name, const QString &heading, int columns, Dialogs &dialogs,
                           QWidget *parent)
    : FormDialog(name, dialogs, parent)
    , m_rows(columns)
    , m_Pic(ui::create<QFrame>("Pic", this))
    , m_lblName(ui::create<QLabel>("lblName", this, heading))
    , m_fgList(new GridView(m_rows, GridView::Selection::Rows, this))
    , m_fmSave(ui::create<QFrame>("fmSave", this))
    , m_cmdOk(addButton(QStringLiteral("cmdOk"), tr("&Ok")))
    , m_cmdExit(addButton(QStringLiteral("cmdExit"), tr("E&xit")))
{
    m_fgList->setObjectName(QStringLiteral("fgList"));
    m_cmdOk->setToolTip(tr("Takes the highlighted row"));
    m_cmdExit->setToolTip(tr("Closes without a choice (Escape)"));
    setCancelButton(m_cmdExit);
    on(m_fgList, &GridView::keyPressed, this, &SearchDialog::fgList_KeyPress);
    on(m_fgList, &GridView::cellDoubleClicked, this, &SearchDialog::cmdOk_Click);
    on(m_cmdOk, &QPushButton::clicked, this, &SearchDialog::cmdOk_Click);
    on(m_cmdExit, &QPushButton::clicked, this, &SearchDialog::cmdExit_Click);
}

SearchDialog::~SearchDialog()
{
    // Before the rows it shows.
    delete m_fgList;
}

void SearchDialog::cmdExit_Click()
{
    reject();
}

void SearchDialog::fgList_KeyPress(int character)
{
    if (character == kEnter)
        cmdOk_Click();
}

TextBox *SearchDialog::addSearchBox(const char *name, const QString &label, const QString &tip)
{
    auto *box = ui::create<TextBox>(name, this);
    box->setKeys(TextBox::Keys::UpperCase);
    box->setToolTip(tip);
    box->setAccessibleName(QString(label).remove(QLatin1Char('&')));
    on(box, &TextBox::enterPressed, this, &SearchDialog::cmdOk_Click);
    auto *text = new QLabel(label, this);
    text->setBuddy(box);
    m_searchBoxes.append(std::pair(text, box));
    return box;
}

void SearchDialog::layOut(QLayout *list)
{
    QVBoxLayout *body = layOutUnder(m_lblName, m_Pic);
    auto *search = new QHBoxLayout;
    for (const auto &[label, box] : m_searchBoxes) {
        if (search->count() > 0)
            search->addSpacing(kBoxGap);
        search->addWidget(label);
        search->addWidget(box, 1);
    }
    body->addLayout(search);
    body->addLayout(list, 1);
    layOutButtons(new QHBoxLayout(m_fmSave), {m_cmdOk, m_cmdExit});
    body->addWidget(m_fmSave);
}

void SearchDialog::fitInto(QSize mainWindow, double widthShare, double heightShare, QSize least)
{
    const QSize share(static_cast<int>(mainWindow.width() * widthShare),
                      static_cast<int>(mainWindow.height() * heightShare));
    resize(share.expandedTo(least));
}

void SearchDialog::showMatch(int column, const QString &wanted, qsizetype length,
                             QAbstractItemView::ScrollHint hint)
{
    const QString upper = shown(upperText(typed(wanted)));
    for (int row = 1; row < m_rows.rows(); ++row) {
        const QString cell = shown(upperText(trimmed(m_rows.text(row, column))));
        if (cell.left(length) == upper) {
            m_rows.setCurrent(row, column);
            m_fgList->scrollToRow(row, hint);
            return;
        }
    }
}

} // namespace ui
