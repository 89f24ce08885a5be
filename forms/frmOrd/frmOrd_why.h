// WhyPanel: beside or below the order lines, why the current line's quantity came out as it did, and why a
// part that is typed in was not proposed.
//
// It shows what it is given and reads nothing itself. Closed when the form opens; nothing is remembered.
#pragma once

#include "common/text_grid.h"
#include "common/ui/grid_view.h"
#include "common/ui/text_box.h"
#include "orders/explanation.h"

#include <QFrame>

#include <vector>

class QGridLayout;
class QLabel;
class QLayout;

class WhyPanel : public QFrame
{
    Q_OBJECT

public:
    explicit WhyPanel(QWidget *parent);
    ~WhyPanel() override;

    /// Beside the lines the steps stand in one list; below them, where the panel is wide and low, in two
    /// next to each other.
    enum class Place { Beside, Below };
    void setPlace(Place place);
    /// What the panel needs beside the lines, in pixels.
    [[nodiscard]] int leastWidth() const;
    /// How much of `spare` pixels the panel takes beside the lines; 0 when that is too little for it.
    [[nodiscard]] int widthBeside(int spare) const;

    /// The steps of a part's quantity under what the part came to. Without steps the words stand alone.
    void showSteps(const QString &words, std::vector<orders::ExplanationLine> steps);
    /// The part number that is asked for; "" when the steps of a line are shown.
    void setPart(const QString &partCode);

signals:
    /// A part number was typed and Enter pressed.
    void partAsked(const QString &partCode);
    /// Escape was pressed in the panel.
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void fillFigures();

    std::vector<orders::ExplanationLine> m_steps;
    int m_groups = 1; ///< lists next to each other
    TextGrid m_figures{3};
    QLabel *m_words;
    ui::GridView *m_view;
    ui::TextBox *m_part;
    QGridLayout *m_column;
    QLayout *m_partRow;
};
