// Stage: the tour's hands and eyes on the real windows.
//
// A tour is a list of steps. Each waits until the window it needs is there, says in plain words what it does
// and then presses keys like a person; the next step is due already while a key press is still waiting behind
// a modal window, so boxes and dialogs are answered by the steps that follow.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QMessageBox;

namespace tour {

struct Step
{
    QString words;               ///< what happens, in plain words
    std::function<bool()> ready; ///< the windows are as this step needs them
    std::function<void()> act;
};

class Stage : public QObject
{
    Q_OBJECT

public:
    explicit Stage(const QString &pictureFolder);

    /// Plays the steps one after the other. The last one ends the program; a step that cannot be played ends
    /// it too.
    void play(std::vector<Step> steps);
    /// What went wrong; nothing when every step was played.
    [[nodiscard]] const std::optional<QString> &failure() const { return m_failure; }
    [[nodiscard]] bool finished() const { return m_next == m_steps.size(); }

    /// The visible window of that name, the topmost one; null when there is none.
    template <class Window = QWidget>
    [[nodiscard]] Window *window(const char *name) const
    {
        return qobject_cast<Window *>(visibleWidget(name));
    }
    /// A control by the names of its window and its own. Its absence is a failure of the tour.
    template <class Control>
    [[nodiscard]] Control *control(const char *windowName, const char *name) const
    {
        auto *found = qobject_cast<Control *>(childOf(windowName, name));
        expect(found, QStringLiteral("The control %1 of %2 is missing.")
                          .arg(QLatin1String(name), QLatin1String(windowName)));
        return found;
    }

    /// True when the window has the keyboard; where no window manager gives it the keyboard, asks for it.
    [[nodiscard]] bool activate(QWidget *window) const;
    /// Presses a key in whatever has the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    void type(const QString &text) const;
    /// The file for the picture with the next number.
    [[nodiscard]] QString pictureFile(const QString &name);
    /// Saves a picture of a window under the next number.
    void picture(QWidget *window, const QString &name);
    /// Ends the tour as failed unless `held`.
    void expect(bool held, const QString &complaint) const;

private:
    [[nodiscard]] static QWidget *visibleWidget(const char *name);
    [[nodiscard]] static QWidget *childOf(const char *windowName, const char *name);
    [[nodiscard]] static QWidget *focus();
    void turn();
    void playNext();
    void fail(const QString &complaint);

    QString m_pictureFolder;
    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    int m_waitedMs = 0;
    int m_pictures = 0;
    std::optional<QString> m_failure;
};

} // namespace tour
