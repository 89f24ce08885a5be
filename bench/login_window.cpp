// The program as app/main.cpp starts it, up to its first window. Argument: the program's folder.

#include "app/application.h"
#include "app/program.h"
#include "bench/first_window.h"
#include "common/ui/qt_clock.h"
#include "common/ui/qt_dialogs.h"
#include "common/ui/qt_shell.h"
#include "common/ui/style.h"

int main(int argumentCount, char **arguments)
{
    ui::QtShell shell;
    ui::QtDialogs dialogs(shell);
    ui::QtClock clock(shell);
    Application application(argumentCount, arguments, dialogs, shell);
    bench::FirstWindow watch;
    application.installEventFilter(&watch);
    ui::applyStyle(application);
    Program program(dialogs, clock, shell, argumentCount > 1 ? arguments[1] : ".");
    program.start();
    return shell.ended() ? 1 : Application::exec();
}
