#include "common/ui/qt_shell.h"

#include "common/ui/text.h"

#include <QApplication>
#include <QProcess>
#include <QWidget>

namespace ui {

void QtShell::start(const std::string &program, const std::vector<std::string> &arguments,
                    const std::string &folder)
{
    QStringList list;
    for (const std::string &argument : arguments)
        list << shown(argument);
    QProcess process;
    process.setProgram(shown(program));
    process.setArguments(list);
    process.setWorkingDirectory(shown(folder));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.startDetached();
}

void QtShell::endProgram()
{
    m_ended = true;
    // Hidden, not closed: a closed form would run its unload handler.
    for (QWidget *window : QApplication::topLevelWidgets())
        window->hide();
    QCoreApplication::exit(0);
}

} // namespace ui
