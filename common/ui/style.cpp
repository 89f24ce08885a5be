#include "common/ui/style.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QVariant>

#include <cmath>
#include <numbers>

namespace ui {

namespace {

constexpr QRgb kWindow = qRgb(0xF3, 0xF4, 0xF5);
constexpr QRgb kBase = qRgb(0xFF, 0xFF, 0xFF);
constexpr QRgb kStripe = qRgb(0xF4, 0xF8, 0xFA);
constexpr QRgb kText = qRgb(0x1F, 0x23, 0x26);
constexpr QRgb kFaint = qRgb(0x8A, 0x90, 0x95);
/// What cannot be changed but is read all day, such as the number of a new order.
constexpr QRgb kQuiet = qRgb(0x50, 0x57, 0x5C);
constexpr QRgb kButton = qRgb(0xE9, 0xEC, 0xEE);
constexpr QRgb kAccent = qRgb(0x1F, 0x5F, 0x7A);
constexpr QRgb kOnAccent = qRgb(0xFF, 0xFF, 0xFF);
constexpr QRgb kHint = qRgb(0xFF, 0xFB, 0xE6);
constexpr QRgb kWarning = qRgb(0xB2, 0x6A, 0x00);
constexpr QRgb kCritical = qRgb(0xB3, 0x26, 0x1E);

QPalette lightPalette()
{
    QPalette palette{QColor(kButton), QColor(kWindow)};
    palette.setColor(QPalette::Window, kWindow);
    palette.setColor(QPalette::WindowText, kText);
    palette.setColor(QPalette::Base, kBase);
    palette.setColor(QPalette::AlternateBase, kStripe);
    palette.setColor(QPalette::Text, kText);
    palette.setColor(QPalette::Button, kButton);
    palette.setColor(QPalette::ButtonText, kText);
    palette.setColor(QPalette::PlaceholderText, kQuiet);
    palette.setColor(QPalette::Highlight, kAccent);
    palette.setColor(QPalette::HighlightedText, kOnAccent);
    palette.setColor(QPalette::Link, kAccent);
    palette.setColor(QPalette::ToolTipBase, kHint);
    palette.setColor(QPalette::ToolTipText, kText);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, kFaint);
    palette.setColor(QPalette::Disabled, QPalette::Text, kQuiet);
    palette.setColor(QPalette::Disabled, QPalette::Base, kWindow);
    return palette;
}

/// What the palette cannot say: the heading band, and rims that show where the focus is.
const char *const kStyleSheet = R"(
QLabel[heading="true"] { background: #1f5f7a; color: white; padding: 6px 12px; font-weight: 600; font-size: 13pt; }
QLabel[heading="true"][mood="1"] { background: #7a5212; }
QLabel[heading="true"][mood="2"] { background: #5b3f73; }
QPushButton { padding: 4px 14px; min-height: 1.3em; }
QPushButton:focus { border: 2px solid #1f5f7a; border-radius: 3px; background: #dcebf1; padding: 2px 12px; outline: 0; }
QHeaderView::section { background: #dde5e9; color: #1f2326; border: 0; border-right: 1px solid #c3ced4;
    border-bottom: 1px solid #c3ced4; padding: 4px 3px; }
QTableView { gridline-color: #dfe4e7; selection-background-color: #1f5f7a; selection-color: white; }
QTableView:focus { border: 2px solid #1f5f7a; }
QToolTip { padding: 3px; }
QDialogButtonBox { dialogbuttonbox-buttons-have-icons: 0; }
QLineEdit { lineedit-password-character: 42; }
)";

/// A white sign on a disc, as message boxes show it.
QIcon sign(QChar character, QRgb colour)
{
    constexpr int kSize = 96; // Large enough for doubled scaling; the box takes the size it needs.
    QPixmap picture(kSize, kSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(colour));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(picture.rect().adjusted(4, 4, -4, -4));
    QFont font = QApplication::font();
    font.setPixelSize(kSize * 6 / 10);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(QColor(kOnAccent));
    painter.drawText(picture.rect(), Qt::AlignCenter, character);
    return picture;
}

/// Fusion with signs that do not depend on the icons a desktop has or lacks.
class Style : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;

    QIcon standardIcon(StandardPixmap which, const QStyleOption *option, const QWidget *widget) const override
    {
        switch (which) {
        case SP_MessageBoxQuestion:
            return sign(QLatin1Char('?'), kAccent);
        case SP_MessageBoxInformation:
            return sign(QLatin1Char('i'), kAccent);
        case SP_MessageBoxWarning:
            return sign(QLatin1Char('!'), kWarning);
        case SP_MessageBoxCritical:
            return sign(QLatin1Char('!'), kCritical);
        default:
            return QProxyStyle::standardIcon(which, option, widget);
        }
    }
};

/// A nut in the accent colour.
QIcon applicationIcon()
{
    constexpr int kSize = 64;
    constexpr int kCorners = 6;
    QPixmap picture(kSize, kSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(kAccent));
    painter.setPen(Qt::NoPen);
    QPolygonF nut;
    for (int corner = 0; corner < kCorners; ++corner) {
        const double angle = 2 * std::numbers::pi * corner / kCorners;
        nut << QPointF(kSize / 2.0 * (1 + std::cos(angle)), kSize / 2.0 * (1 + std::sin(angle)));
    }
    painter.drawPolygon(nut);
    painter.setBrush(QColor(kOnAccent));
    painter.drawEllipse(QPointF(kSize / 2.0, kSize / 2.0), kSize / 4.5, kSize / 4.5);
    return picture;
}

} // namespace

void applyStyle(QApplication &application)
{
    QApplication::setStyle(new Style(QStringLiteral("Fusion")));
    QApplication::setPalette(lightPalette());
    QApplication::setWindowIcon(applicationIcon());
    application.setStyleSheet(QString::fromUtf8(kStyleSheet));
}

void makeHeading(QLabel *label)
{
    label->setProperty("heading", true);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void setHeadingMood(QLabel *label, HeadingMood mood)
{
    label->setProperty("mood", static_cast<int>(mood));
    // A style sheet looks at properties only when it is asked again.
    label->style()->unpolish(label);
    label->style()->polish(label);
}

} // namespace ui
