// The printer file as paper: what its window shows, its keys, and the PDF.
#include "forms/paper_preview/paper_preview.h"

#include "tests/output/visible_stream.h"
#include "tests/support/scripted_dialogs.h"

#include <QAction>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QPicture>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A preview of a file in a folder of its own.
struct Desk
{
    explicit Desk(const QByteArray &visible)
    {
        preview->setAttribute(Qt::WA_DeleteOnClose, false);
        write(visible);
    }

    void write(const QByteArray &visible) const
    {
        writeFile(folder.filePath(u"dinn.txt"_s), streamOf(visible));
    }
    void show() const
    {
        preview->showInFront(form);
        QVERIFY(QTest::qWaitForWindowActive(preview.get()));
    }
    [[nodiscard]] QString remarks() const { return preview->findChild<QLabel *>(u"lblRemarks"_s)->text(); }
    void command(const QString &name) const { preview->findChild<QAction *>(name)->trigger(); }
    [[nodiscard]] std::string path(const char *name) const
    {
        return folder.filePath(QLatin1String(name)).toStdString();
    }

    QTemporaryDir folder;
    QWidget form;
    ScriptedDialogs dialogs;
    std::unique_ptr<PaperPreview> preview = std::make_unique<PaperPreview>(path("DINN.TXT"), dialogs);
};

/// The rows of a sheet, from `top` on, that bear ink.
int inkedRows(const PaperSheets &sheets, int page, int top, int height)
{
    QImage sheet(sheets.size(PaperStock::TornOff).toSize(), QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    sheets.paint(painter, page, PaperStock::TornOff, false);
    painter.end();
    int rows = 0;
    for (int y = top; y < top + height; ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(sheet.constScanLine(y));
        rows += std::any_of(line, line + sheet.width(), [](QRgb dot) { return qGray(dot) < 128; });
    }
    return rows;
}

} // namespace

class PaperPreviewTest : public QObject
{
    Q_OBJECT

private slots:
    void keysTurnPagesZoomAndClose()
    {
        const Desk desk("A<0C>B<0C>C");
        desk.show();
        QCOMPARE(desk.preview->view().pageCount(), 3);
        QVERIFY(desk.preview->view().hasFocus());
        QTest::keyClick(desk.preview.get(), Qt::Key_PageDown, Qt::ControlModifier);
        QCOMPARE(desk.preview->view().currentPage(), 1);
        QTest::keyClick(desk.preview.get(), Qt::Key_Plus, Qt::ControlModifier);
        QCOMPARE(desk.preview->view().zoom(), 1.25);
        QVERIFY(!ui::keyCard(desk.preview.get()).isEmpty());
        QTest::keyClick(desk.preview.get(), Qt::Key_Escape);
        QVERIFY(!desk.preview->isVisible());
    }

    void theSwitchSetsTheLinesAnew()
    {
        const Desk desk(golden("no_rates") + "<07><07>");
        desk.show();
        QCOMPARE(desk.remarks(), u"Codes that were passed over: BEL (2)."_s);
        const QImage straight = desk.preview->view().grab().toImage();
        QTest::keyClick(desk.preview.get(), Qt::Key_A, Qt::AltModifier);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        QCOMPARE(desk.remarks(),
                 u"Lines that ran over the right edge: 2. Codes that were passed over: BEL (2)."_s);
        QVERIFY(desk.preview->view().grab().toImage() != straight);
    }

    void theFileIsReadAgain()
    {
        Desk desk("A");
        desk.show();
        desk.write("A<0C>B");
        desk.command(u"cmdReload"_s);
        QCOMPARE(desk.preview->view().pageCount(), 2);
        desk.write("<1B>P<18>");
        desk.command(u"cmdReload"_s);
        QCOMPARE(desk.remarks(), u"The file prints nothing."_s);
        QFile::remove(desk.folder.filePath(u"dinn.txt"_s));
        desk.command(u"cmdReload"_s);
        QCOMPARE(desk.dialogs.errors, QList<int>{static_cast<int>(ErrorNumber::FileNotFound)});
        QCOMPARE(desk.preview->view().pageCount(), 0);
    }

    void printOverThePerforationIsOnBothSheets()
    {
        // 4300 of the 4320 of a page: the letters end some way down the next one.
        const QByteArray down = "<1B>C<00><0C>A<0D>" + QByteArray("<1B>J<D7>").repeated(10);
        const PaperSheets sheets(output::escp::interpret(streamOf(down + "MM<0A>").toStdString(),
                                                         output::escp::PaperAdvance::ReturnsCarriage));
        QCOMPARE(sheets.count(), 2);
        const int above = inkedRows(sheets, 0, 4300, 20);
        const int below = inkedRows(sheets, 1, 0, 40);
        QVERIFY(above > 5 && below > 5);
        QVERIFY(above + below > 25 && above + below < 36); // the height of a capital
        // The rest of the first sheet is not drawn outside the second.
        QPicture drawn;
        QPainter painter(&drawn);
        sheets.paint(painter, 1, PaperStock::TornOff, false);
        painter.end();
        QVERIFY2(drawn.boundingRect().top() > -100, qPrintable(QString::number(drawn.boundingRect().top())));
    }

    void pdfHoldsTheTornOffSheets()
    {
        Desk desk(golden("rates") + "second page");
        desk.show();
        desk.dialogs.fileToSave = desk.path("no folder/paper.pdf");
        desk.command(u"cmdPdf"_s);
        QCOMPARE(desk.dialogs.errors, QList<int>{static_cast<int>(ErrorNumber::PathAccess)});
        desk.dialogs.fileToSave = desk.path("paper.pdf");
        desk.command(u"cmdPdf"_s);
        QVERIFY(QString::fromStdString(desk.dialogs.suggestedFile).endsWith(u"/Order paper.pdf"_s));

        if (QStandardPaths::findExecutable(u"pdftotext"_s).isEmpty())
            QSKIP("poppler-utils is not installed: 3 comparisons left out");
        const QString pdf = QString::fromStdString(desk.dialogs.fileToSave);
        const QString info = outputOf(u"pdfinfo"_s, {pdf}).simplified();
        QVERIFY2(info.contains(u"Pages: 2 "_s) && info.contains(u"Page size: 612 x 864 pts"_s),
                 qPrintable(info));
        const QString text = outputOf(u"pdftotext"_s, {u"-layout"_s, pdf, u"-"_s});
        QVERIFY2(text.contains(u"CLUTCH PLATE                1200 999999.99 1199999988.00\n"_s),
                 qPrintable(text));
        QVERIFY2(text.contains(u"\fsecond page"_s), qPrintable(text));
    }
};

QTEST_MAIN(PaperPreviewTest)
#include "paper_preview_test.moc"
