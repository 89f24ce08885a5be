// FormDialog: what the dialog forms have in common.
//
// Escape presses the form's cancel button. No button is a default button, so Enter does only what a control's
// own handler says. Form_Activate runs whenever the form is shown, not when it gets the focus back from a
// message box, from a form it opened or from another program.
#pragma once

#include "common/seams.h"

#include <QDialog>

#include <initializer_list>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace ui {

class FormDialog : public QDialog
{
    Q_OBJECT

public:
    FormDialog(const QString &name, Dialogs &dialogs, QWidget *parent);

    [[nodiscard]] Dialogs &dialogs() { return m_dialogs; }

protected:
    virtual void Form_Activate() {}

    /// A button that no Enter key presses on its own; it is pressed by Space, its mnemonic, a click, and
    /// Enter while it has the focus.
    QPushButton *addButton(const QString &name, const QString &caption);
    /// Puts the heading band over the form's whole width and gives the layout of what comes below it, with
    /// the margins that all forms have. With a frame both lie in that, and it fills the form.
    QVBoxLayout *layOutUnder(QLabel *heading, QWidget *frame = nullptr);
    /// Puts the buttons at the right end of a row, behind what stands in it already.
    static void layOutButtons(QHBoxLayout *row, std::initializer_list<QPushButton *> buttons);
    void setCancelButton(QPushButton *button) { m_cancel = button; }

    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    /// Closing the window is pressing the cancel button.
    void closeEvent(QCloseEvent *event) override;

private:
    Dialogs &m_dialogs;
    QPushButton *m_cancel = nullptr;
};

} // namespace ui
