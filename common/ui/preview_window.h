// PreviewWindow: a window with pages of paper, the keys to move among them and to zoom, and room for the
// commands of the preview that derives from it.
//
// It stands by itself, so that the window it was opened from can be used beside it, and is deleted when it is
// closed. Every command has a key, shown in its hint; Escape closes.
#pragma once

#include "common/seams.h"
#include "common/ui/key_card.h"
#include "common/ui/page_view.h"

#include <QKeySequence>
#include <QMainWindow>

class QAction;
class QComboBox;
class QLabel;
class QSpinBox;
class QToolBar;

namespace ui {

class PreviewWindow : public QMainWindow
{
    Q_OBJECT

public:
    PreviewWindow(const QString &name, Dialogs &dialogs);

    [[nodiscard]] Dialogs &dialogs() const { return m_dialogs; }
    [[nodiscard]] PageView &view() const { return *m_view; }

protected:
    /// Adds a command in front of the page buttons.
    QAction *addCommand(const QString &name, const QString &caption, const QKeySequence &key);
    /// Adds a control of the preview's own in front of the page buttons.
    void addControl(QWidget *control);
    /// Gives the window its key card: its own keys, then those of every preview.
    void setKeys(const QString &title, QList<KeyLine> own);
    /// Shows pages and their count.
    void showPages(Pages pages);
    /// Asks for a name, proposing `fileName` in the user's documents folder; "" when the user leaves the box.
    [[nodiscard]] std::string askPdfName(const QString &fileName);

private:
    void addPageButtons();
    void addZoomButtons();
    QAction *addStep(const QString &name, const QString &caption, const QString &sign,
                     const QKeySequence &key);
    void cmbZoom_Click(int index);
    void stepZoom(int direction);
    void showPage(int page);

    Dialogs &m_dialogs;
    PageView *m_view;
    QToolBar *m_bar;
    QAction *m_ownCommandsEnd = nullptr;
    QAction *m_backward[2] = {}; ///< first, previous
    QAction *m_forward[2] = {};  ///< next, last
    QSpinBox *m_page;
    QLabel *m_pages;
    QComboBox *m_zoom;
};

} // namespace ui
