#include "common/ui/waiting.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

namespace {

constexpr double kPauseSeconds = 0.05;
constexpr qint64 kPaintEveryMs = 30;

/// Seconds since midnight.
Currency timer(const Clock &clock)
{
    constexpr double kSecondsPerDay = 86'400;
    const Date now = clock.now();
    return Currency::fromDouble((now.serial() - now.midnight().serial()) * kSecondsPerDay);
}

} // namespace

void Wait_Secs(Clock &clock, Currency seconds)
{
    // Kept: the timer restarts at midnight, so a wait that crosses it ends only with the
    // program.
    const Currency until = timer(clock) + seconds;
    while (timer(clock) < until && !clock.stopped())
        clock.pause(kPauseSeconds);
}

namespace ui {

void keepPainting()
{
    static QElapsedTimer sinceLast;
    if (sinceLast.isValid() && sinceLast.elapsed() < kPaintEveryMs)
        return;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    sinceLast.start();
}

} // namespace ui
