#include "app/tour/stage.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <stdexcept>

namespace tour {

namespace {

constexpr int kLookEveryMs = 20;
constexpr int kPatienceMs = 120'000;

/// A step could not be played.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

/// What stands on the screen, for the complaint about a window that did not come.
QString onScreen()
{
    QStringList windows;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (!window->isVisible())
            continue;
        auto *box = qobject_cast<QMessageBox *>(window);
        windows << (box ? QStringLiteral("the box \"%1\"").arg(box->text()) : window->objectName());
    }
    return windows.isEmpty() ? QStringLiteral("nothing") : windows.join(QStringLiteral(", "));
}

} // namespace

Stage::Stage(const QString &pictureFolder)
    : m_pictureFolder(pictureFolder)
{
    QDir().mkpath(pictureFolder);
}

void Stage::play(std::vector<Step> steps)
{
    m_steps = std::move(steps);
    turn();
}

void Stage::turn()
{
    QTimer::singleShot(kLookEveryMs, this, &Stage::playNext);
}

void Stage::playNext()
{
    if (m_failure)
        return;
    if (finished()) {
        // The last step has told the program to end; that it then does so is part of the tour.
        m_waitedMs += kLookEveryMs;
        if (m_waitedMs < kPatienceMs)
            turn();
        else
            fail(QStringLiteral("The program does not end. On the screen: %1.").arg(onScreen()));
        return;
    }
    const Step &step = m_steps[m_next];
    try {
        if (!step.ready()) {
            m_waitedMs += kLookEveryMs;
            expect(m_waitedMs < kPatienceMs,
                   QStringLiteral("Waited in vain to do this: %1 On the screen: %2.")
                       .arg(step.words, onScreen()));
            turn();
            return;
        }
        m_waitedMs = 0;
        ++m_next;
        if (!step.words.isEmpty())
            say(step.words);
        // Armed before the act: the act may stay behind a modal window until a later step has closed it.
        turn();
        step.act();
    } catch (const Failure &failure) {
        fail(QString::fromUtf8(failure.what()));
    }
}

void Stage::fail(const QString &complaint)
{
    m_failure = complaint;
    say(QStringLiteral("FAILED: ") + complaint);
    if (QWidget *window = QApplication::activeWindow())
        picture(window, QStringLiteral("failed"));
    QCoreApplication::exit(1);
}

void Stage::expect(bool held, const QString &complaint) const
{
    if (!held)
        throw Failure(complaint.toStdString());
}

QWidget *Stage::visibleWidget(const char *name)
{
    QWidget *found = nullptr;
    for (QWidget *widget : QApplication::allWidgets()) {
        if (widget->objectName() == QLatin1String(name) && widget->isVisible())
            found = widget;
    }
    return found;
}

QWidget *Stage::childOf(const char *windowName, const char *name)
{
    QWidget *window = visibleWidget(windowName);
    return window ? window->findChild<QWidget *>(QLatin1String(name)) : nullptr;
}

QWidget *Stage::focus()
{
    if (QWidget *widget = QApplication::focusWidget())
        return widget;
    QWidget *window =
        QApplication::activeModalWidget() ? QApplication::activeModalWidget() : QApplication::activeWindow();
    return window && window->focusWidget() ? window->focusWidget() : window;
}

bool Stage::activate(QWidget *window) const
{
    if (window->isActiveWindow())
        return true;
    window->activateWindow();
    return false;
}

void Stage::press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QWidget *widget = focus();
    expect(widget, QStringLiteral("No window has the keyboard."));
    QTest::keyClick(widget, key, modifiers);
}

void Stage::type(const QString &text) const
{
    for (const QChar character : text) {
        QWidget *widget = focus();
        expect(widget, QStringLiteral("No window has the keyboard."));
        QTest::keyClick(widget, character.toLatin1());
    }
}

QString Stage::pictureFile(const QString &name)
{
    return QStringLiteral("%1/%2-%3.png")
        .arg(m_pictureFolder)
        .arg(++m_pictures, 2, 10, QLatin1Char('0'))
        .arg(name);
}

void Stage::picture(QWidget *window, const QString &name)
{
    const QString file = pictureFile(name);
    if (window->grab().save(file))
        say(QStringLiteral("      picture %1").arg(file));
    else
        say(QStringLiteral("      the picture %1 could not be saved").arg(file));
}

} // namespace tour
