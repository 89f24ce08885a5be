// The tour's way through the spreadsheet program: an order goes out, another comes in.
#include "app/tour/boxes.h"
#include "app/tour/job.h"
#include "common/errors.h"
#include "common/ui/date_box.h"
#include "common/ui/grid_view.h"
#include "common/ui/text.h"
#include "common/ui/text_box.h"
#include "output/libreoffice/libreoffice.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QTemporaryDir>

namespace tour {

namespace {

constexpr int kConvertMs = 180'000;

bool hasSpreadsheets()
{
    return attempt([] { output::LibreOffice({}).requireInstalled(); });
}

/// A picture of a workbook's first page, as it would be printed; nothing where a tool for it is missing.
void pictureSheet(const QString &workbook, const QString &picture)
{
    const QTemporaryDir work;
    const auto run = [](const QString &program, const QStringList &arguments) {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished(kConvertMs);
    };
    run(QStringLiteral("soffice"),
        {QStringLiteral("--headless"), QStringLiteral("-env:UserInstallation=file://") + work.path(),
         QStringLiteral("--convert-to"), QStringLiteral("pdf"), QStringLiteral("--outdir"), work.path(),
         workbook});
    run(QStringLiteral("pdftoppm"),
        {QStringLiteral("-png"), QStringLiteral("-r"), QStringLiteral("80"), QStringLiteral("-singlefile"),
         work.filePath(QFileInfo(workbook).completeBaseName() + QStringLiteral(".pdf")),
         picture.chopped(QStringLiteral(".png").size())});
}

} // namespace

/// Waits for a notice and closes it.
void Job::closeNotice(const QString &text)
{
    add(
        QStringLiteral("   The program says \"%1\".").arg(text),
        [this, text] {
            auto *box = m_stage.window<QMessageBox>("notice");
            return box && box->text() == text && m_stage.activate(box);
        },
        [this] { m_stage.press(Qt::Key_Return); });
}

void Job::exportAndImport()
{
    if (!hasSpreadsheets()) {
        on("frmOrd", QStringLiteral("11. LibreOffice Calc is not installed: no spreadsheets today."), [] {});
        return;
    }
    exportOrder();
    importOrder();
}

void Job::exportOrder()
{
    on("frmOrd", QStringLiteral("11. I call the order up once more and press the export button's key."),
       [this] {
           m_stage.press(Qt::Key_F3);
           m_stage.type(m_record.orderNumber);
           m_stage.press(Qt::Key_Return);
       });
    add(
        QString(),
        [this] { return isActive("frmOrd") && order<QLabel>("lblNetTotal")->text() == m_record.netTotal; },
        [this] { m_stage.press(Qt::Key_E, Qt::AltModifier); });
    closeNotice(QStringLiteral("Successfully Exported"));
    on("frmOrd", QStringLiteral("   The order's copy of the template lies in StkOrder."), [this] {
        const QString file = QStringLiteral("%1/StkOrder/ORNo_%2_%3.xls")
                                 .arg(m_serverFolder, m_record.orderNumber,
                                      ui::shown(order<ui::DateBox>("dtpOrdDate")->day().toShortText()));
        m_stage.expect(QFileInfo::exists(file), QStringLiteral("%1 is not there.").arg(file));
        pictureSheet(file, m_stage.pictureFile(QStringLiteral("exported-sheet")));
    });
}

void Job::importOrder()
{
    on("frmOrd", QStringLiteral("12. For the order of a branch I press F2 and the import button's key."),
       [this] {
           m_stage.press(Qt::Key_F2);
           m_stage.press(Qt::Key_I, Qt::AltModifier);
       });
    on("openFile", QStringLiteral("   I type the name of the branch's file."), [this] {
        m_stage.type(m_serverFolder + QStringLiteral("/Received/branch-order.xls"));
        m_stage.picture(m_stage.window("openFile"), QStringLiteral("import-file"));
        m_stage.press(Qt::Key_Return);
    });
    m_steps.push_back(answer(m_stage, QStringLiteral("Do You Want Import Order Form"), Answer::Yes));
    closeNotice(QStringLiteral("Imported"));
    add(
        QStringLiteral("   Its parts stand on the order; the one that nobody knows is named and left out."),
        [this] { return isActive("frmOrd") && hasTotal(); },
        [this] {
            m_stage.expect(linesWithQuantity() > 0, QStringLiteral("No line was imported."));
            pictureOrder(QStringLiteral("imported"));
        });
}

} // namespace tour
