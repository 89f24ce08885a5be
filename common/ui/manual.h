// The user manual, in a window of the program's own.
#pragma once

#include <QString>

class QWidget;

namespace ui {

/// Folder of the manual's pages: "manual" beside the program file itself, links followed. An installation and
/// a build both put a link there.
[[nodiscard]] QString manualFolder();

/// Shows a page of the manual ("keys.html", also "messages.html#printing"), the contents when none is named.
/// One window serves all calls; it belongs to the window that it is opened from, so that it can be read
/// beside a dialog that waits for an answer. Where no manual is installed it says so.
void openManual(QWidget *from, const QString &page = QStringLiteral("index.html"));

} // namespace ui
