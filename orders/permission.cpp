#include "orders/permission.h"

#include "data/recordset.h"
#include "data/session_connections.h"

namespace orders {

namespace {

struct Right
{
    const char *field;
    const char *word;
};

/// An unknown mode is checked as New.
Right rightOf(std::uint8_t mode)
{
    switch (mode) {
    case 2:
        return {"opt2", "Modify"};
    case 3:
        return {"opt3", "Delete"};
    default:
        return {"opt1", "Add"};
    }
}

/// Only a flag that is really off forbids: null and texts do not.
bool isOff(const Value &flag)
{
    return !isNull(flag) && !std::holds_alternative<std::string>(flag) && toDouble(flag) == 0;
}

} // namespace

bool UserTasks(Session &session, const std::int16_t &taskId)
{
    session.DeniedAction.clear();

    // Kept open: whoever has no row for the task, or no readable database of rights, may do everything.
    data::Connection conSub;
    attempt([&] { data::Open_YearDb(session, conSub, session.DbSub); });
    data::Recordset tasks;
    attempt([&] {
        tasks.open("Select * from UserTasks Where Uid= " + std::to_string(session.UserId) +
                       " And TaskId=" + std::to_string(taskId),
                   conSub, data::CursorType::Dynamic);
    });
    if (!attemptOr(false, [&] { return tasks.hasRows(); }))
        return true;

    const Right right = rightOf(session.FormMode);
    const bool denied = attemptOr(false, [&] { return isOff(tasks.field(right.field)); });
    if (denied) {
        session.DeniedAction = right.word;
        session.FormMode = session.PreviousMode;
    }
    attempt([&] { tasks.close(); });
    return !denied;
}

} // namespace orders
