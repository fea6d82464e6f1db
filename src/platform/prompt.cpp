#include "platform/prompt.h"

#include <QApplication>
#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMessageBox>

#include <cstdio>

namespace tolmar {

namespace {
QMessageBox::Icon boxIcon(Icon i)
{
    switch (i) {
    case Icon::Information: return QMessageBox::Information;
    case Icon::Warning: return QMessageBox::Warning;
    case Icon::Critical: return QMessageBox::Critical;
    case Icon::Question: return QMessageBox::Question;
    case Icon::None: break;
    }
    return QMessageBox::NoIcon;
}

void toStderr(const QString& title, const QString& text)
{
    const QString line = title.isEmpty() ? text : title + QStringLiteral(": ") + text;
    std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
}
}  // namespace

QtPrompter::QtPrompter(QWidget* parent) : m_parent(parent) {}

bool QtPrompter::isInteractive() const
{
    const QString p = QGuiApplication::platformName();
    return !(p == QLatin1String("offscreen") || p == QLatin1String("minimal"));
}

void QtPrompter::inform(const QString& text, const QString& title, Icon icon)
{
    if (!isInteractive()) {
        toStderr(title, text);
        return;
    }
    QMessageBox box(boxIcon(icon), title.isEmpty() ? QApplication::applicationName() : title,
                    text, QMessageBox::Ok, m_parent);
    box.exec();
}

bool QtPrompter::ask(const QString& text, const QString& title, Icon icon)
{
    if (!isInteractive()) {
        toStderr(title, text + QStringLiteral(" (no display: answered No)"));
        return false;
    }
    QMessageBox box(boxIcon(icon), title.isEmpty() ? QApplication::applicationName() : title,
                    text, QMessageBox::Yes | QMessageBox::No, m_parent);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

std::optional<QString> QtPrompter::input(const QString& prompt, const QString& title,
                                         const QString& defaultText)
{
    if (!isInteractive())
        return std::nullopt;
    bool ok = false;
    const QString s = QInputDialog::getText(m_parent, title, prompt, QLineEdit::Normal,
                                            defaultText, &ok);
    if (!ok)
        return std::nullopt;
    return s;
}

QString QtPrompter::openFile(const QString& title, const QString& filter)
{
    if (!isInteractive())
        return {};
    return QFileDialog::getOpenFileName(m_parent, title, QString(), filter);
}

QString QtPrompter::saveFile(const QString& title, const QString& filter,
                             const QString& suggested)
{
    if (!isInteractive())
        return {};
    return QFileDialog::getSaveFileName(m_parent, title, suggested, filter);
}

void QtPrompter::setBusy(bool on)
{
    if (on) {
        if (m_busyDepth++ == 0 && qobject_cast<QApplication*>(QCoreApplication::instance()))
            QApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (m_busyDepth > 0) {
        if (--m_busyDepth == 0 && qobject_cast<QApplication*>(QCoreApplication::instance()))
            QApplication::restoreOverrideCursor();
    }
}

// ---------------------------------------------------------------------------------------

void ScriptedPrompter::inform(const QString& text, const QString& title, Icon icon)
{
    m_messages.push_back({Message::Inform, text, title, icon});
}

bool ScriptedPrompter::ask(const QString& text, const QString& title, Icon icon)
{
    m_messages.push_back({Message::Ask, text, title, icon});
    if (m_answers.empty())
        throw UnscriptedPrompt("unscripted question: " + text.toStdString());
    const bool a = m_answers.front();
    m_answers.pop_front();
    return a;
}

std::optional<QString> ScriptedPrompter::input(const QString& prompt, const QString& title,
                                               const QString&)
{
    m_messages.push_back({Message::Input, prompt, title, Icon::None});
    if (m_inputs.empty())
        throw UnscriptedPrompt("unscripted input box: " + prompt.toStdString());
    auto a = m_inputs.front();
    m_inputs.pop_front();
    return a;
}

QString ScriptedPrompter::openFile(const QString& title, const QString&)
{
    m_messages.push_back({Message::OpenFile, title, title, Icon::None});
    if (m_files.empty())
        throw UnscriptedPrompt("unscripted file chooser: " + title.toStdString());
    const QString f = m_files.front();
    m_files.pop_front();
    return f;
}

QString ScriptedPrompter::saveFile(const QString& title, const QString&, const QString&)
{
    m_messages.push_back({Message::SaveFile, title, title, Icon::None});
    if (m_files.empty())
        throw UnscriptedPrompt("unscripted save chooser: " + title.toStdString());
    const QString f = m_files.front();
    m_files.pop_front();
    return f;
}

QStringList ScriptedPrompter::informs() const
{
    QStringList out;
    for (const auto& m : m_messages)
        if (m.kind == Message::Inform)
            out << m.text;
    return out;
}

bool ScriptedPrompter::saw(const QString& text) const
{
    for (const auto& m : m_messages)
        if (m.text == text)
            return true;
    return false;
}

}  // namespace tolmar
