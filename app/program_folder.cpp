#include "app/program_folder.h"

#include <QFileInfo>
#include <QStandardPaths>

std::string programFolder(const std::string &startedAs)
{
    QString file = QString::fromStdString(startedAs);
    if (!file.contains(QLatin1Char('/')))
        file = QStandardPaths::findExecutable(file);
    // absolutePath() follows no links.
    return QFileInfo(file).absolutePath().toStdString();
}
