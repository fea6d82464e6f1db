#pragma once
// How a screen runs a command: the logic throws, one handler shows the message.
//
// A check that fails throws CheckFailed with the message, its title and icon and the name
// of the control that gets the focus. Any other failure (a database error, a file that
// cannot be written) reaches the same handler, which shows the error's own description.
// Open transactions roll back on the way out because their guards are destroyed.

#include "platform/prompt.h"

#include <QString>

#include <functional>
#include <stdexcept>

class QWidget;

namespace tolmar {

class AppContext;

class CheckFailed : public std::runtime_error {
public:
    CheckFailed(QString message, QString focus = QString(), QString title = QString(),
                Icon icon = Icon::Information);
    const QString& message() const { return m_message; }
    const QString& focus() const { return m_focus; }
    const QString& title() const { return m_title; }
    Icon icon() const { return m_icon; }

private:
    QString m_message;
    QString m_focus;
    QString m_title;
    Icon m_icon;
};

// A fatal condition: show the message, then the process ends with the given status.
class FatalCondition : public std::runtime_error {
public:
    FatalCondition(QString message, int exitCode, QString title = QString(),
                   Icon icon = Icon::Information);
    const QString& message() const { return m_message; }
    const QString& title() const { return m_title; }
    Icon icon() const { return m_icon; }
    int exitCode() const { return m_exitCode; }

private:
    QString m_message;
    QString m_title;
    Icon m_icon;
    int m_exitCode;
};

// Runs one command of a screen. Returns true when it ran to the end. On CheckFailed the
// message is shown and the named child of `screen` takes the focus; on any other failure
// the error's description is shown. A FatalCondition is shown and ends the process
// through the context.
bool runCommand(QWidget* screen, AppContext& ctx, const std::function<void()>& command);

// Runs a write into a table whose key may already hold what was typed. The database's
// refusal (a unique key, on either backend) becomes `refusal`, a sentence the desk can act
// on, with its control to focus; every other failure passes through unchanged.
void refuseDuplicate(const CheckFailed& refusal, const std::function<void()>& write);

// Shows a message that comes just before the process ends, and writes it to stderr as
// well: a script, or a desk whose display has gone, must still learn why.
void reportFatal(Prompter& prompter, const QString& message, const QString& title, Icon icon);

// The description a user sees for any exception.
QString describeError(const std::exception& e);

// Gives the focus to the child of `screen` with this object name (and its tab page).
void focusControl(QWidget* screen, const QString& name);

}  // namespace tolmar
