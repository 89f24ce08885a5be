#include "common/ui/error_box.h"

#include "common/ui/text.h"

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QPushButton>

namespace ui {

namespace {

QString detailLines(const AppError &error)
{
    QStringList lines;
    for (const AppError::Detail &detail : error.details()) {
        if (!detail.text.empty())
            lines << shown(detail.label + ": " + detail.text);
    }
    lines << QStringLiteral("Error number: %1").arg(static_cast<int>(error.number()));
    lines << QStringLiteral("Time: %1")
                 .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

ErrorBox::ErrorBox(const AppError &error, const QString &title, QWidget *parent)
    : QMessageBox(Critical, title, QString(), Ok, parent)
{
    setObjectName(QStringLiteral("runTimeError"));
    setTextFormat(Qt::PlainText);
    setText(QStringLiteral("Run-time error '%1':\n\n%2")
                .arg(static_cast<int>(error.number()))
                .arg(QString::fromUtf8(error.what())));
    setInformativeText(
        error.consequence().empty()
            ? tr("No order was changed by this. Put the cause right and try again; the form stays open.")
            : shown(error.consequence()));
    setDetailedText(detailLines(error));
    giveDetailsAKey();
    setDefaultButton(Ok);
    setEscapeButton(Ok);
    // A button of a message box closes it; this one only copies.
    QPushButton *copyButton = addButton(tr("&Copy"), ActionRole);
    copyButton->setObjectName(QStringLiteral("cmdCopy"));
    copyButton->setToolTip(tr("Copies the whole message, to paste it into a mail to your support"));
    if (auto *row = findChild<QDialogButtonBox *>())
        copyButton->disconnect(row);
    connect(copyButton, &QAbstractButton::clicked, this, &ErrorBox::copy);
}

/// The toolkit's button for the details has no key, and gets another caption at each press.
void ErrorBox::giveDetailsAKey()
{
    for (QAbstractButton *button : buttons()) {
        if (buttonRole(button) != ActionRole)
            continue;
        const auto mark = [button] {
            button->setText(button->text().replace(QLatin1String("Details"), QLatin1String("&Details")));
        };
        mark();
        // Behind the box's own answer to the press, which sets the caption.
        connect(button, &QAbstractButton::clicked, this, mark, Qt::QueuedConnection);
    }
}

QString ErrorBox::wholeText() const
{
    return QStringList{text(), informativeText(), detailedText()}.join(QStringLiteral("\n\n"));
}

void ErrorBox::copy() const
{
    QApplication::clipboard()->setText(wholeText());
}

} // namespace ui
