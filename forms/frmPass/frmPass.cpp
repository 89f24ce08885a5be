#include "forms/frmPass/frmPass.h"

#include "common/format.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/text.h"
#include "data/recordset.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <optional>

namespace {

constexpr std::uint8_t kAllowedFailures = 3;
constexpr int kFieldWidthInCharacters = 36;

/// What the login needs of a row of `Pass`.
struct User
{
    Value uid;
    std::string name;
    std::string password;
};

/// The first row under the typed name; no value when the statement fails. The name goes in as typed: with an
/// apostrophe in it the statement is no longer one, and whatever row a cleverly quoted name fetches is
/// refused by its own name.
std::optional<std::optional<User>> findUser(const data::Connection &conMain, const std::string &name)
{
    using Found = std::optional<std::optional<User>>;
    return attemptOr(Found(), [&]() -> Found {
        data::Recordset user("Select * from Pass Where UName = '" + name + "'", conMain,
                             data::CursorType::Dynamic, data::LockType::Pessimistic);
        std::optional<User> first;
        if (user.hasRows())
            first = User{user.field("Uid"), Null_Str(user.field("UName")), Null_Str(user.field("PWD"))};
        user.close();
        if (first && !equalNoCase(first->name, name))
            first.reset();
        return first;
    });
}

} // namespace

frmPass::frmPass(const forms::Context &context, forms::Navigator &navigator, QWidget *parent)
    : FormDialog(QStringLiteral("frmPass"), context.dialogs, parent)
    , m_context(context)
    , m_navigator(navigator)
    , m_txtUser(new ui::TextBox(this))
    , m_txtPass(new ui::TextBox(this))
    , m_cmdOk(addButton(QStringLiteral("cmdOk"), tr("&Ok")))
    , m_cmdCan(addButton(QStringLiteral("cmdCan"), tr("&Cancel")))
{
    setWindowTitle(tr("Velk Spares Login"));
    m_txtUser->setObjectName(QStringLiteral("txtUser"));
    m_txtPass->setObjectName(QStringLiteral("txtPass"));
    m_txtPass->setEchoMode(QLineEdit::Password);
    layOut();
    setCancelButton(m_cmdCan);
    // Enter in txtUser does nothing; in txtPass it runs OK once, there being no default button that would run
    // it again.
    ui::on(m_txtPass, &ui::TextBox::enterPressed, this, &frmPass::cmdOk_Click);
    ui::on(m_cmdOk, &QPushButton::clicked, this, &frmPass::cmdOk_Click);
    ui::on(m_cmdCan, &QPushButton::clicked, this, &frmPass::cmdCan_Click);
    ui::guarded(this, [this] { Form_Load(); });
}

void frmPass::layOut()
{
    const int width = fontMetrics().averageCharWidth() * kFieldWidthInCharacters;
    m_txtUser->setMinimumWidth(width);
    m_txtUser->setAccessibleName(tr("User name"));
    m_txtUser->setToolTip(tr("Your name as the dealership's user list has it"));
    m_txtPass->setAccessibleName(tr("Password"));
    m_txtPass->setToolTip(tr("Your password; capitals and small letters differ"));
    m_cmdOk->setToolTip(tr("Logs in"));
    m_cmdCan->setToolTip(tr("Ends the program (Escape)"));

    QVBoxLayout *body = layOutUnder(new QLabel(tr("Velk Spares"), this));
    auto *fields = new QFormLayout;
    fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    fields->addRow(tr("User &Name"), m_txtUser);
    fields->addRow(tr("&PassWord"), m_txtPass);
    body->addLayout(fields);
    auto *buttons = new QHBoxLayout;
    layOutButtons(buttons, {m_cmdOk, m_cmdCan});
    body->addLayout(buttons);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    ui::setKeyCard(this, tr("Login"),
                   {{tr("Tab"), tr("from the user name to the password")},
                    {tr("Enter"), tr("in the password: logs in")},
                    {tr("Alt+N, Alt+P"), tr("to the user name, to the password")},
                    {tr("Alt+O"), tr("logs in")},
                    {tr("Escape, Alt+C"), tr("ends the program")}});
}

void frmPass::Form_Load()
{
    data::Environment environment = m_context.environment();
    data::Open_Data(environment, "");
    if (!m_context.shell.ended())
        showRememberedUser();
}

void frmPass::showRememberedUser()
{
    data::Recordset users("Select * from Users ", m_context.connections.conSerPath);
    if (users.hasRows()) {
        data::Recordset user("Select * from Pass Where SaveUser = 1 and Uid = " + toText(users.field("Uid")),
                             m_context.connections.conMain);
        if (user.hasRows())
            m_txtUser->setText(ui::shown(Null_Str(user.field("UName"))));
        user.close();
    }
    users.close();
}

void frmPass::Form_Activate()
{
    const bool named = !m_txtUser->text().trimmed().isEmpty();
    (named ? m_txtPass : m_txtUser)->setFocus();
}

void frmPass::cmdOk_Click()
{
    Session &session = m_context.session;
    session.UserName = ui::typed(m_txtUser->text());
    if (m_txtUser->text().isEmpty()) {
        refuse(tr(" Please Enter User Name"), m_txtUser);
        return;
    }
    if (m_txtPass->text().isEmpty()) {
        refuse(tr(" Please Enter Password"), m_txtPass);
        return;
    }

    const auto found = findUser(m_context.connections.conMain, session.UserName);
    // A failing statement is skipped: no message, no count, nobody logged in.
    if (!found)
        return;
    const std::optional<User> &user = *found;
    if (!user) {
        dialogs().notice(ui::typed(tr("Wrong User Name")));
        Count_Id();
        m_txtUser->setFocus();
        return;
    }
    if (user->password != ui::typed(m_txtPass->text())) {
        dialogs().notice(ui::typed(tr("Wrong Pass Word")));
        Count_Id();
        m_txtPass->setFocus();
        Sel_Text(m_txtPass);
        return;
    }
    // A Uid that does not fit is skipped like every failing statement here; the user then has no company.
    attempt([&] { session.UserId = narrow<std::int16_t>(toInteger(user->uid)); });
    session.SuperUser = user->name == "sysop" ? "True" : "False";
    hide();
    m_navigator.showStart();
}

void frmPass::refuse(const QString &message, ui::TextBox *box)
{
    dialogs().notice(ui::typed(message));
    box->setFocus();
}

void frmPass::cmdCan_Click()
{
    m_context.session.SuperUser = "False";
    m_context.shell.endProgram();
}

void frmPass::Count_Id()
{
    m_failures = narrow<std::uint8_t>(m_failures + 1);
    if (m_failures == kAllowedFailures)
        m_context.shell.endProgram();
}
