#include "common/ui/date_box.h"

#include <QCalendarWidget>
#include <QFocusEvent>
#include <QLineEdit>
#include <QWheelEvent>

namespace ui {

DateBox::DateBox(QWidget *parent)
    : QDateEdit(parent)
{
    const QLocale english(QLocale::English, QLocale::UnitedKingdom);
    setLocale(english);
    setCalendarPopup(true);
    calendarWidget()->setLocale(english);
    setDisplayFormat(QStringLiteral("dd/MMM/yyyy"));
    setFocusPolicy(Qt::StrongFocus);
    setMinimumDate(QDate(1900, 1, 1));
}

void DateBox::setDay(Date day)
{
    const auto ymd = day.ymd();
    setDate(QDate(int(ymd.year()), int(unsigned(ymd.month())), int(unsigned(ymd.day()))));
}

Date DateBox::day() const
{
    const QDate shown = date();
    return Date::fromYmd(shown.year(), static_cast<unsigned>(shown.month()),
                         static_cast<unsigned>(shown.day()));
}

void DateBox::focusInEvent(QFocusEvent *event)
{
    QDateEdit::focusInEvent(event);
    // Given the focus while its window was inactive, the toolkit selects no section and digits would be lost.
    if (event->reason() == Qt::ActiveWindowFocusReason && !lineEdit()->hasSelectedText())
        setSelectedSection(currentSection());
}

void DateBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QDateEdit::wheelEvent(event);
    else
        event->ignore();
}

} // namespace ui
