#include "app/tour/boxes.h"

#include <QMessageBox>

namespace tour {

Step answer(Stage &stage, const QString &question, Answer answer, const QString &pictureName)
{
    const bool yes = answer == Answer::Yes;
    return {QStringLiteral("   The program asks \"%1\"; I answer %2.")
                .arg(QString(question).replace(QLatin1String("\r\n"), QLatin1String(" / ")),
                     yes ? QStringLiteral("Yes") : QStringLiteral("No")),
            [&stage, question] {
                auto *box = stage.window<QMessageBox>("question");
                return box && box->text() == question && stage.activate(box);
            },
            [&stage, yes, pictureName] {
                if (!pictureName.isEmpty())
                    stage.picture(stage.window("question"), pictureName);
                stage.press(yes ? Qt::Key_Y : Qt::Key_N);
            }};
}

} // namespace tour
