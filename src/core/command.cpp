#include "core/command.h"

#include "core/appcontext.h"
#include "platform/db.h"

#include <cstdio>

#include <QLineEdit>
#include <QStackedWidget>
#include <QTabWidget>
#include <QWidget>

namespace tolmar {

CheckFailed::CheckFailed(QString message, QString focus, QString title, Icon icon)
    : std::runtime_error(message.toStdString()), m_message(std::move(message)),
      m_focus(std::move(focus)), m_title(std::move(title)), m_icon(icon)
{
}

FatalCondition::FatalCondition(QString message, int exitCode, QString title, Icon icon)
    : std::runtime_error(message.toStdString()), m_message(std::move(message)),
      m_title(std::move(title)), m_icon(icon), m_exitCode(exitCode)
{
}

QString describeError(const std::exception& e)
{
    if (const auto* d = dynamic_cast<const db::DbError*>(&e))
        return d->description();
    if (const auto* c = dynamic_cast<const CheckFailed*>(&e))
        return c->message();
    return QString::fromLocal8Bit(e.what());
}

void focusControl(QWidget* screen, const QString& name)
{
    if (!screen || name.isEmpty())
        return;
    auto* w = screen->findChild<QWidget*>(name);
    if (!w)
        return;
    // Bring forward the tab pages that hold the control, outermost first.
    for (QWidget* p = w->parentWidget(); p && p != screen; p = p->parentWidget()) {
        if (auto* stack = qobject_cast<QStackedWidget*>(p->parentWidget())) {
            if (auto* tabs = qobject_cast<QTabWidget*>(stack->parentWidget()))
                tabs->setCurrentWidget(p);
            else
                stack->setCurrentWidget(p);
        }
    }
    w->setFocus(Qt::OtherFocusReason);
    if (auto* edit = qobject_cast<QLineEdit*>(w))
        edit->selectAll();
}

void reportFatal(Prompter& prompter, const QString& message, const QString& title, Icon icon)
{
    if (prompter.isInteractive())
        prompter.inform(message, title, icon);
    const QString line = title.isEmpty() ? message : title + QStringLiteral(": ") + message;
    std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
}

void refuseDuplicate(const CheckFailed& refusal, const std::function<void()>& write)
{
    try {
        write();
    } catch (const db::DbError& e) {
        if (e.isUniqueViolation())
            throw refusal;
        throw;
    }
}

bool runCommand(QWidget* screen, AppContext& ctx, const std::function<void()>& command)
{
    Prompter& prompter = ctx.prompter();
    const QString title = screen ? screen->windowTitle() : QString();
    try {
        command();
        return true;
    } catch (const CheckFailed& c) {
        prompter.inform(c.message(), c.title().isEmpty() ? title : c.title(), c.icon());
        focusControl(screen, c.focus());
    } catch (const FatalCondition& f) {
        reportFatal(prompter, f.message(), f.title(), f.icon());
        ctx.endProcess(f.exitCode());
    } catch (const std::exception& e) {
        prompter.inform(describeError(e), title, Icon::Critical);
    }
    return false;
}

}  // namespace tolmar
