#include "app/application.h"

#include <QInputEvent>

Application::Application(int &argumentCount, char **arguments, Dialogs &dialogs, const Shell &shell)
    : QApplication(argumentCount, arguments)
    , m_dialogs(dialogs)
    , m_shell(shell)
{
    // Between two windows of the start-up none is open; the program ends where the system says so.
    setQuitOnLastWindowClosed(false);
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    if (m_shell.ended() && (event->isInputEvent() || event->type() == QEvent::Close))
        return true;
    try {
        return QApplication::notify(receiver, event);
    } catch (const AppError &error) {
        m_dialogs.runTimeError(error);
        return true;
    }
}
