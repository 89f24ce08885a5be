// The rights of a user for a task, from the subsidiary database.
#pragma once

#include "app/session.h"

#include <cstdint>

namespace orders {

inline constexpr std::int16_t kOrderTask = 2103;

/// True when the user may do what the form mode says (1 add, 2 modify, 3 delete). A user without a row for
/// the task, an unreadable or missing database and any error count as permitted. A refusal sets
/// `DeniedAction` ("Add", "Modify", "Delete") and puts `FormMode` back to `PreviousMode`.
[[nodiscard]] bool UserTasks(Session &session, const std::int16_t &taskId);

} // namespace orders
