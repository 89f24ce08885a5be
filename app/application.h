// The application object: the last net for errors, and the end of all input once the program has ended.
#pragma once

#include "common/seams.h"

#include <QApplication>

class Application : public QApplication
{
public:
    /// `argumentCount` and `arguments` must outlive the object, as must the seams.
    Application(int &argumentCount, char **arguments, Dialogs &dialogs, const Shell &shell);

    /// An AppError that no handler of a form has taken is shown with its number and sentence, and the program
    /// stays up.
    bool notify(QObject *receiver, QEvent *event) override;

private:
    Dialogs &m_dialogs;
    const Shell &m_shell;
};
