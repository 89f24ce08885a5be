// Key cards: F1 shows the keys of the window one is in.
//
// A window says which keys it knows; the card of the nearest such window around the focus comes up. A message
// box has a card of its own without saying anything.
#pragma once

#include <QList>
#include <QString>

class QApplication;
class QWidget;

namespace ui {

struct KeyLine
{
    QString keys;    ///< "Ctrl+Delete", "F2, F3, F4"; "" makes `meaning` a heading within the card
    QString meaning; ///< what they do, in a storekeeper's words
};

/// Gives a window its key card.
void setKeyCard(QWidget *window, const QString &title, const QList<KeyLine> &lines);
/// The keys of a window, without its children's or parents'; empty when it has no card.
[[nodiscard]] QList<KeyLine> keyCard(const QWidget *window);

/// From now on F1 shows key cards, in every window of the application.
void enableKeyCards(QApplication &application);
/// Shows the card for a place in a window, as F1 does. Without a card around it nothing happens.
void showKeyCard(QWidget *place);

} // namespace ui
