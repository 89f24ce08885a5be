// Steps that answer message boxes.
#pragma once

#include "app/tour/stage.h"

namespace tour {

enum class Answer { Yes, No };

/// Answers the question whose text begins as given, by its key.
[[nodiscard]] Step answer(Stage &stage, const QString &question, Answer answer,
                          const QString &pictureName = {});

} // namespace tour
