// One look for all windows.
#pragma once

class QApplication;
class QLabel;

namespace ui {

/// Fusion style, one light palette, visible focus; independent of the desktop's theme.
void applyStyle(QApplication &application);

/// Makes a label the heading band of its window.
void makeHeading(QLabel *label);
/// What the band's colour says about a form that can write: nothing stored is touched (the usual colour), a
/// stored order is about to be changed, a stored order is only looked at.
enum class HeadingMood { Usual, Changing, Looking };
void setHeadingMood(QLabel *label, HeadingMood mood);

} // namespace ui
