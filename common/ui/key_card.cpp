#include "common/ui/key_card.h"

#include "common/ui/manual.h"
#include "common/ui/style.h"

#include <QApplication>
#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariant>

#include <optional>

namespace ui {

namespace {

struct Card
{
    QString title;
    QList<KeyLine> lines;
};

constexpr const char *kProperty = "keyCard";
constexpr const char *kCardName = "keyCard";
constexpr int kMargin = 16;
constexpr int kColumnGap = 24;

/// What answers a message box.
Card boxCard()
{
    return {QCoreApplication::translate("KeyCard", "Message"),
            {{QStringLiteral("Y, N"), QCoreApplication::translate("KeyCard", "Yes, No")},
             {QStringLiteral("Enter"), QCoreApplication::translate("KeyCard", "the marked button")},
             {QStringLiteral("Tab"), QCoreApplication::translate("KeyCard", "to the next button")},
             {QStringLiteral("Escape"), QCoreApplication::translate("KeyCard", "No, or close the message")}}};
}

class CardWindow : public QDialog
{
public:
    CardWindow(const Card &card, QWidget *parent);

private:
    [[nodiscard]] QWidget *keyTable(const QList<KeyLine> &lines);
    QPushButton *addButton(QHBoxLayout *row, const char *name, const QString &caption);
};

CardWindow::CardWindow(const Card &card, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QLatin1String(kCardName));
    setWindowTitle(tr("Keys"));
    auto *heading = new QLabel(tr("Keys: %1").arg(card.title), this);
    makeHeading(heading);

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(kMargin, 0, kMargin, kMargin);
    QPushButton *manual = addButton(buttons, "cmdManual", tr("&Manual"));
    manual->setToolTip(tr("Opens the user manual at the page of all keys"));
    buttons->addStretch();
    QPushButton *close = addButton(buttons, "cmdClose", tr("&Close"));
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    connect(manual, &QPushButton::clicked, this, [this] {
        accept();
        openManual(parentWidget(), QStringLiteral("keys.html"));
    });

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(heading);
    column->addWidget(keyTable(card.lines));
    column->addLayout(buttons);
    close->setFocus();
}

QWidget *CardWindow::keyTable(const QList<KeyLine> &lines)
{
    auto *table = new QWidget(this);
    auto *grid = new QGridLayout(table);
    grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    grid->setHorizontalSpacing(kColumnGap);
    QFont bold = font();
    bold.setBold(true);
    const auto addText = [table, grid](const QString &text, int row, int column, int span) {
        auto *label = new QLabel(text, table);
        label->setTextFormat(Qt::PlainText);
        grid->addWidget(label, row, column, 1, span, Qt::AlignTop);
        return label;
    };
    int row = 0;
    for (const KeyLine &line : lines) {
        if (line.keys.isEmpty()) {
            QLabel *heading = addText(line.meaning, row, 0, 2);
            heading->setFont(bold);
            heading->setContentsMargins(0, row > 0 ? kMargin / 2 : 0, 0, 0);
        } else {
            addText(line.keys, row, 0, 1)->setFont(bold);
            addText(line.meaning, row, 1, 1);
        }
        ++row;
    }
    grid->setColumnStretch(1, 1);
    return table;
}

QPushButton *CardWindow::addButton(QHBoxLayout *row, const char *name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(QLatin1String(name));
    row->addWidget(button);
    return button;
}

/// The card of the nearest window around a place that has one.
std::optional<Card> cardAround(const QWidget *place)
{
    for (const QWidget *widget = place; widget; widget = widget->parentWidget()) {
        if (qobject_cast<const QMessageBox *>(widget))
            return boxCard();
        if (widget->objectName() == QLatin1String(kCardName))
            return std::nullopt; // A card needs none.
        if (const QVariant card = widget->property(kProperty); card.isValid())
            return card.value<Card>();
    }
    return std::nullopt;
}

class KeyFilter : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier)
            return false;
        showKeyCard(static_cast<QWidget *>(watched));
        return true;
    }
};

} // namespace

void setKeyCard(QWidget *window, const QString &title, const QList<KeyLine> &lines)
{
    window->setProperty(kProperty, QVariant::fromValue(Card{title, lines}));
}

QList<KeyLine> keyCard(const QWidget *window)
{
    return window->property(kProperty).value<Card>().lines;
}

void enableKeyCards(QApplication &application)
{
    application.installEventFilter(new KeyFilter(&application));
}

void showKeyCard(QWidget *place)
{
    if (const auto card = cardAround(place))
        CardWindow(*card, place->window()).exec();
}

} // namespace ui
