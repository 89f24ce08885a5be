#include "app/tour/job.h"

#include "app/tour/boxes.h"
#include "common/currency.h"
#include "common/ui/combo_box.h"
#include "common/ui/grid_view.h"
#include "common/ui/page_view.h"
#include "common/ui/text_box.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace tour {

namespace {

// Columns of the order grid that the tour looks at.
constexpr int kColPartNo = 1;
constexpr int kColQuantity = 9;
constexpr int kColRate = 10;
constexpr int kColAmount = 11;
constexpr int kSearchLetters = 4;

constexpr const char *kSpares = "SPARES";
constexpr const char *kMonths = "6 M";
constexpr const char *kCover = "2";
constexpr const char *kCorrected = "500";

} // namespace

Job::Job(Stage &stage, QSize windowSize, const QString &serverFolder)
    : m_stage(stage)
    , m_windowSize(windowSize)
    , m_serverFolder(serverFolder)
{}

std::vector<Step> Job::steps()
{
    logIn();
    chooseCompany();
    openOrder();
    lookAtKeys();
    chooseSupplier();
    propose();
    explain();
    correct();
    saveAndPrint();
    lookForPart();
    callUpAgain();
    printReport();
    exportAndImport();
    leave();
    return std::move(m_steps);
}

void Job::add(const QString &words, std::function<bool()> ready, std::function<void()> act)
{
    m_steps.push_back({words, std::move(ready), std::move(act)});
}

void Job::on(const char *form, const QString &words, std::function<void()> act)
{
    add(
        words, [this, form] { return isActive(form); }, std::move(act));
}

bool Job::isActive(const char *form) const
{
    QWidget *window = m_stage.window(form);
    const bool behindDialog = window && QApplication::activeModalWidget() && !window->isModal();
    return window && !behindDialog && m_stage.activate(window->window());
}

QString Job::cell(int row, int column) const
{
    return order<ui::GridView>("fgList")->model()->index(row - 1, column).data().toString();
}

void Job::pictureOrder(const QString &name)
{
    m_stage.picture(m_stage.window("Main"), name);
}

bool Job::hasTotal() const
{
    return Currency::fromText(order<QLabel>("lblNetTotal")->text().toStdString()) > Currency();
}

int Job::linesWithQuantity() const
{
    int lines = 0;
    for (int row = 1; row <= order<ui::GridView>("fgList")->model()->rowCount(); ++row) {
        if (Currency::fromText(cell(row, kColQuantity).toStdString()) > Currency())
            ++lines;
    }
    return lines;
}

void Job::logIn()
{
    on("frmPass", QStringLiteral("1. The login form comes up. I log in as ravi."), [this] {
        m_stage.picture(m_stage.window("frmPass"), QStringLiteral("login"));
        m_stage.control<ui::TextBox>("frmPass", "txtUser")->setFocus();
        m_stage.press(Qt::Key_A, Qt::ControlModifier);
        m_stage.type(QStringLiteral("ravi"));
        m_stage.press(Qt::Key_Tab);
        m_stage.type(QStringLiteral("stock"));
        m_stage.press(Qt::Key_Return);
    });
}

void Job::chooseCompany()
{
    on("frmStart",
       QStringLiteral("2. The companies I may open are listed. The arrow keys choose the first one."),
       [this] {
           auto *list = m_stage.control<ui::GridView>("frmStart", "fgList");
           m_stage.expect(list->hasFocus(), QStringLiteral("The company list does not have the keyboard."));
           m_stage.press(Qt::Key_Down);
           m_stage.press(Qt::Key_Up);
       });
    on("frmStart",
       QStringLiteral("   Its years are listed, the latest is selected. I press the Ok button's key."),
       [this] {
           const auto *years = m_stage.control<ui::ComboBox>("frmStart", "cmbYear");
           m_stage.expect(years->currentIndex() >= 0, QStringLiteral("No financial year is selected."));
           m_stage.picture(m_stage.window("frmStart"), QStringLiteral("company"));
           m_stage.press(Qt::Key_O, Qt::AltModifier);
       });
}

void Job::openOrder()
{
    on("Main", QString(), [this] {
        m_stage.window("Main")->showNormal();
        m_stage.window("Main")->resize(m_windowSize);
    });
    on("frmOrd", QStringLiteral("3. The main window opens with a new order."), [this] {
        m_record.orderNumber = order<ui::TextBox>("txtOrdNo")->text();
        m_stage.expect(!m_record.orderNumber.isEmpty(), QStringLiteral("The new order has no number."));
        pictureOrder(QStringLiteral("new-order"));
    });
}

void Job::lookAtKeys()
{
    on("frmOrd", QStringLiteral("   F1 shows the keys of the form."), [this] { m_stage.press(Qt::Key_F1); });
    on("keyCard", QString(), [this] {
        m_stage.picture(m_stage.window("keyCard"), QStringLiteral("keys"));
        m_stage.press(Qt::Key_Escape);
    });
}

void Job::chooseSupplier()
{
    on("frmOrd", QStringLiteral("4. I press the supplier button's key."),
       [this] { m_stage.press(Qt::Key_C, Qt::AltModifier); });
    on("frm_Srh_Names",
       QStringLiteral("   The supplier search lists all suppliers. I type the beginning of a name."), [this] {
           const auto *list = m_stage.control<ui::GridView>("frm_Srh_Names", "fgList")->model();
           m_stage.expect(list->rowCount() > 2, QStringLiteral("The supplier search lists nobody."));
           m_record.supplier = list->index(list->rowCount() / 2, 0).data().toString();
           m_stage.picture(m_stage.window("frm_Srh_Names"), QStringLiteral("all-suppliers"));
           m_stage.type(QStringLiteral("'"));
       });
    on("runTimeError", QStringLiteral("   I hit a quote first. The error box says that nothing was changed."),
       [this] { m_stage.press(Qt::Key_D, Qt::AltModifier); });
    add(
        QString(),
        [this] {
            const auto buttons = m_stage.window("runTimeError")->findChildren<QPushButton *>();
            return std::any_of(buttons.begin(), buttons.end(), [](const QPushButton *button) {
                return button->text().contains(QLatin1String("Hide &Details"));
            });
        },
        [this] {
            m_stage.picture(m_stage.window("runTimeError"), QStringLiteral("error"));
            m_stage.press(Qt::Key_Escape);
        });
    on("frm_Srh_Names", QString(), [this] {
        m_stage.press(Qt::Key_Backspace);
        m_stage.type(m_record.supplier.left(kSearchLetters).toLower());
    });
    on("frm_Srh_Names",
       QStringLiteral("   The list has narrowed. I press Enter on the highlighted supplier."), [this] {
           const auto *list = m_stage.control<ui::GridView>("frm_Srh_Names", "fgList");
           m_record.supplier = list->currentIndex().siblingAtColumn(0).data().toString();
           m_stage.picture(m_stage.window("frm_Srh_Names"), QStringLiteral("supplier-search"));
           m_stage.press(Qt::Key_Return);
       });
    on("frmOrd", QString(), [this] {
        m_stage.expect(order<ui::TextBox>("txtSName")->text() == m_record.supplier &&
                           !m_record.supplier.isEmpty(),
                       QStringLiteral("The chosen supplier is not on the order."));
    });
}

void Job::propose()
{
    on("frmOrd", QStringLiteral("5. I choose the type SPARES, an average over 6 months and a cover of 2."),
       [this] {
           m_stage.press(Qt::Key_T, Qt::AltModifier);
           m_stage.press(Qt::Key_S);
           m_stage.press(Qt::Key_M, Qt::AltModifier);
           m_stage.press(Qt::Key_6);
           m_stage.press(Qt::Key_V, Qt::AltModifier);
           m_stage.type(QLatin1String(kCover));
           m_stage.expect(order<ui::ComboBox>("cmbType")->currentText() == QLatin1String(kSpares),
                          QStringLiteral("The type is not SPARES."));
           m_stage.expect(order<ui::ComboBox>("cmbMonth")->currentText() == QLatin1String(kMonths),
                          QStringLiteral("The months are not 6."));
           m_stage.expect(order<ui::TextBox>("txtMQ")->text() == QLatin1String(kCover),
                          QStringLiteral("The cover is not 2."));
       });
    on("frmOrd", QStringLiteral("   I press the fill button's key."),
       [this] { m_stage.press(Qt::Key_A, Qt::AltModifier); });
    m_steps.push_back(
        answer(m_stage, QStringLiteral("Fill Average Stock"), Answer::Yes, QStringLiteral("fill-question")));
    add(
        QStringLiteral("   The grid shows the proposed order."),
        [this] {
            // The net total follows within a second.
            return isActive("frmOrd") && order<ui::GridView>("fgList")->model()->rowCount() > 1 &&
                   !cell(1, kColPartNo).isEmpty() && hasTotal();
        },
        [this] { pictureOrder(QStringLiteral("proposal")); });
}

void Job::explain()
{
    on("frmOrd", QStringLiteral("   I go to the first line and ask by Alt+Y why its quantity was proposed."),
       [this] {
           m_stage.press(Qt::Key_L, Qt::AltModifier);
           m_stage.press(Qt::Key_Home, Qt::ControlModifier);
           m_stage.press(Qt::Key_Y, Qt::AltModifier);
       });
    add(
        QStringLiteral("   The panel beside the lines shows every step; I close it again."),
        [this] {
            const auto *words = m_stage.window<QLabel>("lblWhy");
            return isActive("frmOrd") && words && words->text().startsWith(cell(1, kColPartNo));
        },
        [this] {
            pictureOrder(QStringLiteral("why"));
            m_stage.press(Qt::Key_Y, Qt::AltModifier);
        });
    add(
        QString(), [this] { return isActive("frmOrd") && !m_stage.window("fmWhy"); }, [] {});
}

void Job::correct()
{
    on("frmOrd", QStringLiteral("6. I go to the first line's quantity and correct it to 500."), [this] {
        auto *list = order<ui::GridView>("fgList");
        m_stage.press(Qt::Key_L, Qt::AltModifier);
        m_stage.expect(list->hasFocus() || list->isAncestorOf(QApplication::focusWidget()),
                       QStringLiteral("The order lines do not have the keyboard."));
        // From the first line's part number over the part name to the quantity.
        m_stage.press(Qt::Key_Home, Qt::ControlModifier);
        m_stage.press(Qt::Key_Right);
        m_stage.press(Qt::Key_Right);
        m_record.correctedRow = list->currentIndex().row() + 1;
        m_stage.expect(list->currentIndex().column() == kColQuantity,
                       QStringLiteral("The cell is not a quantity."));
        m_record.correctedQuantity = QLatin1String(kCorrected);
        m_stage.type(m_record.correctedQuantity);
    });
    add(
        QStringLiteral("   The line's amount and the net total follow."),
        [this] {
            const auto of = [this](int column) {
                return Currency::fromText(cell(m_record.correctedRow, column).toStdString());
            };
            Currency total;
            for (int row = 1; row <= order<ui::GridView>("fgList")->model()->rowCount(); ++row) {
                if (!cell(row, kColPartNo).isEmpty())
                    total += Currency::fromText(cell(row, kColAmount).toStdString());
            }
            m_record.netTotal = order<QLabel>("lblNetTotal")->text();
            return of(kColQuantity) == Currency::fromUnits(500) &&
                   of(kColAmount) == of(kColQuantity) * of(kColRate) &&
                   Currency::fromText(m_record.netTotal.toStdString()) == total;
        },
        [this] {
            m_record.lines = linesWithQuantity();
            pictureOrder(QStringLiteral("corrected"));
        });
}

void Job::saveAndPrint()
{
    on("frmOrd", QStringLiteral("7. I press the save button's key."),
       [this] { m_stage.press(Qt::Key_S, Qt::AltModifier); });
    m_steps.push_back(
        answer(m_stage, QStringLiteral("Do You Want Print"), Answer::Yes, QStringLiteral("print-question")));
    m_steps.push_back(
        answer(m_stage, QStringLiteral("Click - Yes For Dos Printing \r\nClick - No For Windows Printing"),
               Answer::Yes, QStringLiteral("text-question")));
    add(
        QStringLiteral("   The print file is shown as paper, beside the question whether to send it."),
        [this] { return m_stage.window("paperPreview") && m_stage.window("question"); },
        [this] { m_stage.picture(m_stage.window("paperPreview"), QStringLiteral("paper")); });
    m_steps.push_back(
        answer(m_stage, QStringLiteral("Do You Want Print "), Answer::No, QStringLiteral("send-question")));
    add(
        QStringLiteral("   The order is saved and printed; the form is ready for the next one."),
        [this] {
            return isActive("frmOrd") && order<ui::TextBox>("txtOrdNo")->text() != m_record.orderNumber;
        },
        [this] {
            m_stage.expect(order<ui::TextBox>("txtOrdNo")->text().toInt() == m_record.orderNumber.toInt() + 1,
                           QStringLiteral("The next order number is not the saved one plus one."));
            pictureOrder(QStringLiteral("saved"));
        });
}

void Job::lookForPart()
{
    on("frmOrd",
       QStringLiteral("8. A letter typed into the part name opens the part search with that letter."),
       [this] {
           m_stage.press(Qt::Key_L, Qt::AltModifier);
           m_stage.press(Qt::Key_Right);
           m_stage.press(Qt::Key_B);
       });
    on("frm_Srh_Spares",
       QStringLiteral("   The parts are listed with their stock, and the vehicles of the highlighted one."),
       [this] {
           const auto *list = m_stage.control<ui::GridView>("frm_Srh_Spares", "fgList")->model();
           m_stage.expect(list->rowCount() > 0, QStringLiteral("The part search lists nothing."));
           m_stage.press(Qt::Key_Down);
           m_stage.picture(m_stage.window("frm_Srh_Spares"), QStringLiteral("part-search"));
           m_stage.press(Qt::Key_Escape);
       });
}

void Job::callUpAgain()
{
    on("frmOrd",
       QStringLiteral("9. F3 switches to Modify mode; I type the number of the saved order and press Enter."),
       [this] {
           m_stage.press(Qt::Key_F3);
           m_stage.type(m_record.orderNumber);
           m_stage.press(Qt::Key_Return);
       });
    add(
        QStringLiteral("   The saved order is back, with its supplier and lines."),
        [this] { return isActive("frmOrd") && order<QLabel>("lblNetTotal")->text() == m_record.netTotal; },
        [this] {
            m_stage.expect(linesWithQuantity() == m_record.lines,
                           QStringLiteral("The loaded order does not have the lines that were saved."));
            m_stage.expect(order<ui::TextBox>("txtSName")->text() == m_record.supplier,
                           QStringLiteral("The loaded order has another supplier."));
            pictureOrder(QStringLiteral("modify"));
        });
}

void Job::printReport()
{
    on("frmOrd",
       QStringLiteral("10. I tick the rates and save again, to print the order as a report this time."),
       [this] { m_stage.press(Qt::Key_R, Qt::AltModifier); });
    add(
        QString(), [this] { return isActive("frmOrd") && order<QCheckBox>("chkRat")->isChecked(); },
        [this] { m_stage.press(Qt::Key_S, Qt::AltModifier); });
    m_steps.push_back(answer(m_stage, QStringLiteral("Do You Want Print"), Answer::Yes));
    m_steps.push_back(
        answer(m_stage, QStringLiteral("Click - Yes For Dos Printing \r\nClick - No For Windows Printing"),
               Answer::No));
    on("reportPreview", QString(), [this] {
        m_stage.window("reportPreview")->showNormal();
        m_stage.window("reportPreview")->resize(m_windowSize);
    });
    on("reportPreview", QStringLiteral("   It is shown as it will be printed. I look at it and close it."),
       [this] {
           m_stage.expect(m_stage.control<ui::PageView>("reportPreview", "pages")->pageCount() > 0,
                          QStringLiteral("The report has no page."));
           m_stage.picture(m_stage.window("reportPreview"), QStringLiteral("report"));
           m_stage.press(Qt::Key_Escape);
       });
}

void Job::leave()
{
    on("frmOrd", QStringLiteral("13. I leave the program by the exit button's key."),
       [this] { m_stage.press(Qt::Key_X, Qt::AltModifier); });
}

} // namespace tour
