#include "common/ui/form_dialog.h"

#include "common/ui/connect.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QShowEvent>

namespace ui {

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
