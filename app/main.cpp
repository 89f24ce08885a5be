#include "app/application.h"
#include "app/program.h"
#include "app/program_folder.h"
#include "common/ui/key_card.h"
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
    ui::applyStyle(application);
    ui::enableKeyCards(application);
    Program program(dialogs, clock, shell, programFolder(arguments[0]));
    program.start();
    return shell.ended() ? 0 : Application::exec();
}
