// TextBox: a one-line text field that selects its text when it gets the focus and filters what is typed.
#pragma once

#include <QLineEdit>

namespace ui {

class TextBox : public QLineEdit
{
    Q_OBJECT

public:
    enum class Keys {
        All,
        Digits,   ///< Key_Num: digits and "-" only
        UpperCase ///< typed letters become capitals
    };

    explicit TextBox(QWidget *parent = nullptr, Keys keys = Keys::All);

    void setKeys(Keys keys) { m_keys = keys; }
    /// A box that does not select its text keeps the cursor where it is; selecting is the usual way.
    void setSelectsOnFocus(bool selects) { m_selectsOnFocus = selects; }

signals:
    /// Enter was pressed, on either key; it goes no further, so no button of the form reacts to it.
    void enterPressed();
    /// The down arrow was pressed.
    void downPressed();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void typeFiltered(QKeyEvent *event);

    Keys m_keys;
    bool m_selectsOnFocus = true;
    bool m_focusedByMouse = false;
    bool m_awayWithWindow = false; ///< lost the focus together with its window, or to a popup
};

} // namespace ui

/// Selects the whole text of a box; an empty box is left alone.
void Sel_Text(QLineEdit *box);
