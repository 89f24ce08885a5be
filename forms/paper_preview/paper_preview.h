// PaperPreview: a window with the printer file as a dot-matrix printer would set it.
//
// It reads the bytes of the file, never the order, so what it shows is what is sent. It belongs to no other
// window: while the order form asks whether to send the file, the paper can be looked at. The bytes stay as
// they are whatever is chosen here.
#pragma once

#include "common/ui/preview_window.h"
#include "forms/paper_preview/paper_sheets.h"

#include <string>

class QCheckBox;
class QComboBox;
class QLabel;

class PaperPreview : public ui::PreviewWindow
{
    Q_OBJECT

public:
    /// `file` as the system writes paths.
    PaperPreview(std::string file, Dialogs &dialogs);

    /// Reads the file again. Throws FileError; what was shown before is then gone.
    void readFile();
    /// Reads the file and brings the window up above that of the form, which keeps the keyboard.
    void showBeside(const QWidget &form);
    /// The same, and takes the keyboard.
    void showInFront(const QWidget &form);

private:
    void createControls();
    void showAbove(const QWidget &form);
    void interpret();
    void showSheets();
    void cmdReload_Click();
    void cmdPdf_Click();
    void writePdf(const std::string &path) const;
    [[nodiscard]] QString remarks() const;

    std::string m_file;
    std::string m_bytes;
    PaperSheets m_sheets;
    QComboBox *m_advance;
    QCheckBox *m_bars;
    QLabel *m_remarks;
    QLabel *m_fileLabel;
};
