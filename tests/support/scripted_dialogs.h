// Boxes that answer from a list and remember what was asked.
#pragma once

#include "common/seams.h"

#include <QQueue>
#include <QStringList>
#include <QTest>

#include <functional>

/// A question without an answer fails the test at once instead of leaving it hanging in front of a modal box
/// that nobody can see.
class ScriptedDialogs : public Dialogs
{
public:
    void notice(const std::string &text, Icon icon = Icon::None, Title title = Title::Product) override
    {
        remember(text, icon, title);
        if (duringNotice)
            duringNotice();
    }

    bool question(const std::string &text, Icon icon = Icon::Question, Title title = Title::Product) override
    {
        remember(text, icon, title);
        if (duringQuestion)
            duringQuestion();
        if (!answers.isEmpty())
            return answers.dequeue();
        QTest::qFail(("unexpected question: " + text).c_str(), __FILE__, __LINE__);
        return false;
    }

    std::string openFile(const std::vector<std::string> &filters) override
    {
        askedFilters = filters;
        return fileToOpen;
    }

    std::string saveFile(const std::string &suggested, const std::string &filter) override
    {
        suggestedFile = suggested;
        askedFilters = {filter};
        return fileToSave;
    }

    void runTimeError(const AppError &error) override
    {
        errors << static_cast<int>(error.number());
        lastConsequence = error.consequence();
        lastDetails.clear();
        for (const AppError::Detail &detail : error.details())
            lastDetails << QString::fromStdString(detail.label + ": " + detail.text);
        remember(error.what(), Icon::Critical, Title::Product);
    }

    /// What was shown since the last call, and forgets it.
    QStringList takeShown() { return std::exchange(shown, {}); }

    QQueue<bool> answers;
    QStringList shown;
    QList<int> errors;
    std::string lastConsequence;          ///< of the last error
    QStringList lastDetails;              ///< of the last error, "label: text"
    std::function<void()> duringNotice;   ///< while a notice is on the screen
    std::function<void()> duringQuestion; ///< while a question is on the screen
    Icon lastIcon = Icon::None;
    Title lastTitle = Title::Product;
    std::string fileToOpen;
    std::string fileToSave;
    std::string suggestedFile;
    std::vector<std::string> askedFilters;

private:
    void remember(const std::string &text, Icon icon, Title title)
    {
        shown << QString::fromStdString(text);
        lastIcon = icon;
        lastTitle = title;
    }
};
