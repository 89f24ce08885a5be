#include "common/ui/qt_dialogs.h"

#include "common/ui/error_box.h"
#include "common/ui/preview_window.h"
#include "common/ui/text.h"

#include <QApplication>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QTreeView>

namespace ui {

namespace {

QString titleText(Dialogs::Title title)
{
    return title == Dialogs::Title::Product ? QStringLiteral("Velk Soft") : QStringLiteral("Velk Spares");
}

QMessageBox::Icon boxIcon(Dialogs::Icon icon)
{
    switch (icon) {
    case Dialogs::Icon::Information:
        return QMessageBox::Information;
    case Dialogs::Icon::Question:
        return QMessageBox::Question;
    case Dialogs::Icon::Critical:
        return QMessageBox::Critical;
    case Dialogs::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

/// The window that asks. Between two boxes none is active; then it is the one behind them, and never a
/// preview, which only stands beside.
QWidget *asker()
{
    for (QWidget *window : {QApplication::activeWindow(), QApplication::activeModalWidget()}) {
        if (window)
            return window;
    }
    for (QWidget *window : QApplication::topLevelWidgets()) {
        const bool asks = window->windowType() == Qt::Window || window->windowType() == Qt::Dialog;
        if (asks && window->isVisible() && !qobject_cast<PreviewWindow *>(window))
            return window;
    }
    return nullptr;
}

/// Keeps a box with few words from being tiny. Not by the width of its label: that would be taken for the
/// width of the text, and a long text would be cut instead of wrapped.
void widen(QMessageBox &box)
{
    constexpr int kCharacters = 36;
    if (auto *grid = qobject_cast<QGridLayout *>(box.layout())) {
        const int width = box.fontMetrics().averageCharWidth() * kCharacters;
        grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
}

/// Shows a box and gives the button that ended it.
int show(const char *name, const QString &text, QMessageBox::Icon icon, const QString &title,
         QMessageBox::StandardButtons buttons)
{
    QMessageBox box(icon, title, QString(), buttons, asker());
    // A preview beside the window that asks can still be looked at.
    if (box.parentWidget())
        box.setWindowModality(Qt::WindowModal);
    box.setObjectName(QLatin1String(name));
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    if (buttons & QMessageBox::No) {
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
    }
    widen(box);
    return box.exec();
}

/// "(*.xls)|*.xls" as the file box wants it: "(*.xls)".
QString fileFilter(const std::string &entry)
{
    const QString text = shown(entry);
    const QString caption = text.section(QLatin1Char('|'), 0, 0);
    const QString pattern = text.section(QLatin1Char('|'), 1, 1);
    return caption.contains(QLatin1Char('(')) ? caption : caption + QStringLiteral(" (%1)").arg(pattern);
}

void prepare(QFileDialog &box, const char *name)
{
    box.setObjectName(QLatin1String(name));
    // Not the desktop's own box, which could neither be reached by name nor look the same everywhere.
    box.setOption(QFileDialog::DontUseNativeDialog);
    // Left as they are, dates are cut in the middle and names are short of room.
    constexpr int kDate = 3;
    constexpr QSize kCharacters(120, 32);
    const QFontMetrics metrics = box.fontMetrics();
    if (auto *files = box.findChild<QTreeView *>(QStringLiteral("treeView"))) {
        const QDateTime wide(QDate(2026, 11, 30), QTime(22, 22, 22));
        const QString text = QLocale::system().toString(wide, QLocale::ShortFormat) + QStringLiteral("00");
        files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        files->header()->resizeSection(kDate, files->fontMetrics().horizontalAdvance(text));
    }
    box.resize(metrics.averageCharWidth() * kCharacters.width(), metrics.height() * kCharacters.height());
}

/// The file that the user chooses, or "".
std::string choice(QFileDialog &box)
{
    if (box.exec() != QDialog::Accepted || box.selectedFiles().isEmpty())
        return {};
    return typed(box.selectedFiles().constFirst());
}

} // namespace

void QtDialogs::notice(const std::string &text, Icon icon, Title title)
{
    if (!m_shell.ended())
        show("notice", shown(text), boxIcon(icon), titleText(title), QMessageBox::Ok);
}

bool QtDialogs::question(const std::string &text, Icon icon, Title title)
{
    if (m_shell.ended())
        return false;
    return show("question", shown(text), boxIcon(icon), titleText(title),
                QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

std::string QtDialogs::openFile(const std::vector<std::string> &filters)
{
    if (m_shell.ended())
        return {};
    QFileDialog box(asker(), titleText(Title::Product));
    prepare(box, "openFile");
    box.setFileMode(QFileDialog::ExistingFile);
    QStringList list;
    for (const std::string &entry : filters)
        list << fileFilter(entry);
    box.setNameFilters(list);
    return choice(box);
}

std::string QtDialogs::saveFile(const std::string &suggested, const std::string &filter)
{
    if (m_shell.ended())
        return {};
    const QFileInfo proposal(shown(suggested));
    QFileDialog box(asker(), titleText(Title::Product), proposal.path());
    prepare(box, "saveFile");
    box.setAcceptMode(QFileDialog::AcceptSave);
    box.setNameFilter(fileFilter(filter));
    box.setDefaultSuffix(shown(filter).section(QLatin1String("*."), -1));
    box.selectFile(proposal.fileName());
    return choice(box);
}

void QtDialogs::runTimeError(const AppError &error)
{
    if (m_shell.ended())
        return;
    ErrorBox box(error, titleText(Title::Product), asker());
    widen(box);
    box.exec();
}

} // namespace ui
