// The storekeeper's main job as steps for the stage: log in, choose company and year, prepare an order,
// correct it, save and print it, call it up again, leave.
#pragma once

#include "app/tour/stage.h"

#include <QSize>
#include <QString>

#include <string>
#include <vector>

namespace tour {

/// What the tour entered, saw and must find again.
struct Record
{
    QString supplier;
    QString orderNumber;
    int correctedRow = 1;
    QString correctedQuantity;
    QString netTotal;
    int lines = 0; ///< lines with a quantity above zero when the order was saved
};

/// The job's steps; it must live until they are played.
class Job
{
public:
    Job(Stage &stage, QSize windowSize, const QString &serverFolder);

    [[nodiscard]] std::vector<Step> steps();
    [[nodiscard]] const Record &record() const { return m_record; }

private:
    void add(const QString &words, std::function<bool()> ready, std::function<void()> act);
    /// A step on a form once that is the active window.
    void on(const char *form, const QString &words, std::function<void()> act);
    [[nodiscard]] bool isActive(const char *form) const;
    template <class Control>
    [[nodiscard]] Control *order(const char *name) const
    {
        return m_stage.control<Control>("frmOrd", name);
    }
    [[nodiscard]] QString cell(int row, int column) const;
    [[nodiscard]] int linesWithQuantity() const;
    /// The net total has followed the lines.
    [[nodiscard]] bool hasTotal() const;
    /// The order form in its main window.
    void pictureOrder(const QString &name);

    void logIn();
    void chooseCompany();
    void openOrder();
    void lookAtKeys();
    void chooseSupplier();
    void propose();
    void explain();
    void correct();
    void saveAndPrint();
    void lookForPart();
    void callUpAgain();
    void printReport();
    void exportAndImport();
    void exportOrder();
    void importOrder();
    void closeNotice(const QString &text);
    void leave();

    Stage &m_stage;
    Record m_record;
    QSize m_windowSize;
    QString m_serverFolder;
    std::vector<Step> m_steps;
};

} // namespace tour
