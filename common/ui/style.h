// One look for all windows.
#pragma once

class QApplication;
class QLabel;

namespace ui {

/// Fusion style, one light palette, visible focus; independent of the desktop's theme.
void applyStyle(QApplication &application);

/// Makes a label the heading band of its window.
void makeHeading(QLabel *label);

} // namespace ui
