// velk-tour: performs a storekeeper's whole order through the real windows and leaves a picture of each.
#include "app/application.h"
#include "app/program.h"
#include "app/tour/job.h"
#include "common/ui/key_card.h"
#include "common/ui/qt_clock.h"
#include "common/ui/qt_dialogs.h"
#include "common/ui/qt_shell.h"
#include "common/ui/style.h"
#include "data/paths.h"
#include "data/recordset.h"

#include <QFileInfo>

#include <cstdio>

namespace {

constexpr QSize kUsualSize(1280, 800);

/// "1920x1080" as a size; an empty one when the text is none.
QSize sizeFrom(const QString &text)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    return sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize();
}

/// What is wrong with what the job left behind, read afresh after the program has ended; "" when all is well.
std::string complaint(const Session &session, const tour::Record &record)
{
    const QString printed = QString::fromStdString(data::localPath(session.ServerPath + "\\dinn.txt"));
    if (QFileInfo(printed).size() <= 0)
        return printed.toStdString() + " was not written.";

    data::Connection year;
    data::Open_YearDb(session, year, session.DbMst);
    const std::string number = record.orderNumber.toStdString();
    data::Recordset header("Select * from Stock_Ord where StkOrdNo = " + number, year);
    if (!header.hasRows() || toText(header.field("SupName")) != record.supplier.toStdString())
        return "Order " + number + " does not stand in the year database with its supplier.";
    header.close();

    data::Recordset lines("Select * from Stock_OrdSub where StkOrdNo = " + number + " Order by SlNo ", year);
    int count = 0;
    bool corrected = false;
    for (; !lines.eof(); lines.moveNext()) {
        ++count;
        if (toInteger(lines.field("Slno")) == record.correctedRow) {
            corrected = toDouble(lines.field("Qty")) == record.correctedQuantity.toDouble();
        }
    }
    lines.close();
    if (count != record.lines)
        return "The year database holds " + std::to_string(count) + " lines of the order, not " +
               std::to_string(record.lines) + ".";
    return corrected ? std::string() : "The corrected quantity does not stand in the year database.";
}

int check(const Session &session, const tour::Record &record)
{
    std::string wrong;
    try {
        wrong = complaint(session, record);
    } catch (const AppError &error) {
        wrong = error.what();
    }
    if (!wrong.empty()) {
        std::printf("FAILED: %s\n", wrong.c_str());
        return 1;
    }
    std::printf("Done: order %s for %s with %d lines, net total %s, stands in the year database; dinn.txt is "
                "written.\n",
                qPrintable(record.orderNumber), qPrintable(record.supplier), record.lines,
                qPrintable(record.netTotal));
    return 0;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    ui::QtShell shell;
    ui::QtDialogs dialogs(shell);
    ui::QtClock clock(shell);
    Application application(argumentCount, arguments, dialogs, shell);
    const QStringList given = Application::arguments();
    const QSize windowSize = given.size() > 3 ? sizeFrom(given[3]) : kUsualSize;
    if (given.size() < 3 || given.size() > 4 || windowSize.isEmpty()) {
        std::fprintf(stderr, "usage: velk-tour PROGRAM-FOLDER PICTURE-FOLDER [WIDTHxHEIGHT]\n");
        return 2;
    }
    ui::applyStyle(application);
    ui::enableKeyCards(application);
    tour::Stage stage(given[2]);
    tour::Record record;
    Session session;
    {
        Program program(dialogs, clock, shell, QFileInfo(given[1]).absoluteFilePath().toStdString());
        program.start();
        // The folder that the start has read from SerPath.mdb; an installed program's lies anywhere.
        tour::Job job(stage, windowSize,
                      QString::fromStdString(data::localPath(program.session().ServerPath)));
        stage.play(job.steps());
        if (!shell.ended())
            Application::exec();
        session = program.session();
        record = job.record();
    }
    if (stage.failure() || !stage.finished()) {
        std::printf("The tour did not reach its end.\n");
        return 1;
    }
    return check(session, record);
}
