// Tells its parent when the first window of this process is on the screen, and ends the process.
#pragma once

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace bench {

/// Prints "NANOSECONDS KILOBYTES": the steady clock, which all processes share, and the resident memory.
inline void reportAndEnd()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    QFile pages(QStringLiteral("/proc/self/statm"));
    if (!pages.open(QIODevice::ReadOnly))
        ::_exit(1);
    const qlonglong resident = pages.readAll().split(' ').at(1).toLongLong() * ::sysconf(_SC_PAGESIZE) / 1024;
    std::printf("%lld %lld\n",
                static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()),
                static_cast<long long>(resident));
    std::fflush(stdout);
    ::_exit(0);
}

/// Watches for the first painting of a window; install it on the application.
class FirstWindow : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *widget = qobject_cast<QWidget *>(watched);
        // Reported behind the painting, when the picture has gone to the screen.
        if (event->type() == QEvent::Paint && widget && widget->isWindow())
            QTimer::singleShot(0, this, &reportAndEnd);
        return false;
    }
};

} // namespace bench
