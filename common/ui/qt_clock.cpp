#include "common/ui/qt_clock.h"

#include <QDateTime>
#include <QEventLoop>
#include <QTimer>

namespace ui {

Date QtClock::today() const
{
    return now().midnight();
}

Date QtClock::now() const
{
    const QDateTime local = QDateTime::currentDateTime();
    const QDate day = local.date();
    const Date midnight =
        Date::fromYmd(day.year(), static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    constexpr double kMsPerDay = 86'400'000.0;
    return Date::fromSerial(midnight.serial() + local.time().msecsSinceStartOfDay() / kMsPerDay);
}

void QtClock::pause(double seconds)
{
    constexpr double kMsPerSecond = 1000;
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * kMsPerSecond), &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

} // namespace ui
