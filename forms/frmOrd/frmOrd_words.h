// What the order form says about itself: its keys, its columns, what its errors mean.
#pragma once

#include "common/ui/key_card.h"

#include <QStringList>

namespace words {

/// The key card of the order form.
[[nodiscard]] QList<ui::KeyLine> orderKeys();
/// What each column of the lines holds and where it comes from, by column.
[[nodiscard]] QStringList columnTips();

} // namespace words
