#include "common/ui/form_dialog.h"

#include "common/ui/connect.h"
#include "common/ui/style.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

namespace ui {

namespace {

constexpr QMargins kBodyMargins(14, 12, 14, 14);
constexpr int kBodySpacing = 10;

} // namespace

FormDialog::FormDialog(const QString &name, Dialogs &dialogs, QWidget *parent)
    : QDialog(parent)
    , m_dialogs(dialogs)
{
    setObjectName(name);
}

QPushButton *FormDialog::addButton(const QString &name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QVBoxLayout *FormDialog::layOutUnder(QLabel *heading, QWidget *frame)
{
    makeHeading(heading);
    auto *bands = new QVBoxLayout(frame ? frame : this);
    bands->setContentsMargins(0, 0, 0, 0);
    bands->setSpacing(0);
    bands->addWidget(heading);
    auto *body = new QVBoxLayout;
    body->setContentsMargins(kBodyMargins);
    body->setSpacing(kBodySpacing);
    bands->addLayout(body);
    if (frame) {
        auto *whole = new QVBoxLayout(this);
        whole->setContentsMargins(0, 0, 0, 0);
        whole->addWidget(frame);
    }
    return body;
}

void FormDialog::layOutButtons(QHBoxLayout *row, std::initializer_list<QPushButton *> buttons)
{
    row->setContentsMargins(0, 0, 0, 0);
    row->addStretch();
    for (QPushButton *button : buttons)
        row->addWidget(button);
}

void FormDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        guarded(this, [this] { Form_Activate(); });
}

void FormDialog::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape && m_cancel)
        m_cancel->click();
    else if (auto *button = qobject_cast<QPushButton *>(focusWidget()); enter && button)
        button->click();
    else if (!enter)
        QDialog::keyPressEvent(event);
}

void FormDialog::closeEvent(QCloseEvent *event)
{
    event->ignore();
    if (m_cancel)
        m_cancel->click();
}

} // namespace ui
