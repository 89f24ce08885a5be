#include "common/ui/text_box.h"

#include "common/format.h"
#include "common/ui/text.h"

#include <QKeyEvent>

#include <utility>

namespace ui {

TextBox::TextBox(QWidget *parent, Keys keys)
    : QLineEdit(parent)
    , m_keys(keys)
{}

void TextBox::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (!m_selectsOnFocus) {
        // The toolkit has selected the text when a key brought the focus.
        deselect();
        return;
    }
    // Coming back from a message box, a popup or another program is not a new focus: the cursor stays. A box
    // that was given the focus while its window was inactive hears of it in the same way, and that one is
    // new.
    if (std::exchange(m_awayWithWindow, false))
        return;
    m_focusedByMouse = event->reason() == Qt::MouseFocusReason;
    Sel_Text(this);
}

void TextBox::focusOutEvent(QFocusEvent *event)
{
    m_awayWithWindow =
        event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    QLineEdit::focusOutEvent(event);
}

void TextBox::mouseReleaseEvent(QMouseEvent *event)
{
    QLineEdit::mouseReleaseEvent(event);
    // The press that brought the focus has put the cursor into the text and so undone the selection.
    if (std::exchange(m_focusedByMouse, false) && !hasSelectedText())
        Sel_Text(this);
}

void TextBox::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        event->accept();
        emit enterPressed();
        return;
    case Qt::Key_Down:
        event->accept();
        emit downPressed();
        return;
    default:
        typeFiltered(event);
    }
}

void TextBox::typeFiltered(QKeyEvent *event)
{
    const QString text = event->text();
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (m_keys == Keys::All || command || text.isEmpty() || !text.front().isPrint()) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    if (m_keys == Keys::Digits) {
        // Key codes beyond ASCII are no digits; cutting them to 16 bits keeps them apart from those.
        auto code = static_cast<std::int16_t>(text.front().unicode());
        Key_Num(code);
        if (code != 0)
            QLineEdit::keyPressEvent(event);
        return;
    }
    QKeyEvent upper(event->type(), event->key(), event->modifiers(), shown(upperText(typed(text))),
                    event->isAutoRepeat(), static_cast<quint16>(event->count()));
    QLineEdit::keyPressEvent(&upper);
}

} // namespace ui

void Sel_Text(QLineEdit *box)
{
    if (!box->text().isEmpty())
        // From the end, so that a text longer than its box shows its beginning.
        box->setSelection(static_cast<int>(box->text().size()), -static_cast<int>(box->text().size()));
}
