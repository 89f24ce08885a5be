// The program's seams to the world: questions to the user, the clock, other programs.
//
// Each window and each procedure that talks to the user gets these by reference, so that tests answer and
// watch.
#pragma once

#include "common/date.h"
#include "common/errors.h"

#include <string>
#include <vector>

/// Message and file boxes. Texts are UTF-8 and stand exactly as the system has them.
class Dialogs
{
public:
    enum class Icon { None, Information, Question, Critical };
    enum class Title { Product, Application }; ///< "Velk Soft"; the default title "Velk Spares"

    virtual ~Dialogs() = default;
    /// A box with an OK button only.
    virtual void notice(const std::string &text, Icon icon = Icon::None, Title title = Title::Product) = 0;
    /// A box with Yes and No; true for Yes.
    virtual bool question(const std::string &text, Icon icon = Icon::Question,
                          Title title = Title::Product) = 0;
    /// The open-file box. `filters` are entries of the kind "(*.xls)|*.xls"; the first is preselected.
    /// Returns the chosen path, "" when the user leaves the box.
    virtual std::string openFile(const std::vector<std::string> &filters) = 0;
    /// The save-file box; it asks by itself before an existing file is replaced. `suggested` is a full path,
    /// `filter` an entry as above, whose ending a name without one gets. Returns the chosen path or "".
    virtual std::string saveFile(const std::string &suggested, const std::string &filter) = 0;
    /// An error that no procedure handles: number and sentence.
    virtual void runTimeError(const AppError &error) = 0;
};

/// Today and the time of day; tests set them.
class Clock
{
public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual Date today() const = 0; ///< local date, midnight
    [[nodiscard]] virtual Date now() const = 0;   ///< local date and time
    /// Keeps the windows alive for the given time; tests return at once.
    virtual void pause(double seconds) = 0;
    /// The program has ended: nothing is waited for any more.
    [[nodiscard]] virtual bool stopped() const { return false; }
};

/// Other programs and the end of this one.
class Shell
{
public:
    virtual ~Shell() = default;
    /// Starts a program hidden, without waiting. A missing program is not reported.
    virtual void start(const std::string &program, const std::vector<std::string> &arguments,
                       const std::string &folder) = 0;
    /// Ends the program at once: no form gets another event. The caller returns immediately after it.
    virtual void endProgram() = 0;
    [[nodiscard]] virtual bool ended() const = 0;
};
