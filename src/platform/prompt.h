#pragma once
// The seam for everything that asks a person something: message boxes, questions, input
// boxes, file choosers, the hourglass.

#include <QString>
#include <QStringList>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

namespace tolmar {

enum class Icon { None, Information, Warning, Critical, Question };

class Prompter {
public:
    virtual ~Prompter() = default;
    virtual void inform(const QString& text, const QString& title = QString(),
                        Icon icon = Icon::Information) = 0;
    // Yes/No; true for Yes.
    virtual bool ask(const QString& text, const QString& title = QString(),
                     Icon icon = Icon::Question) = 0;
    // nullopt when the person cancels.
    virtual std::optional<QString> input(const QString& prompt, const QString& title = QString(),
                                         const QString& defaultText = QString()) = 0;
    // An empty string when nothing was chosen.
    virtual QString openFile(const QString& title, const QString& filter) = 0;
    virtual QString saveFile(const QString& title, const QString& filter,
                             const QString& suggested = QString()) = 0;
    // False when nobody can answer (no display): the caller then reports on stderr too.
    virtual bool isInteractive() const { return true; }

    // The hourglass for the lifetime of the returned object.
    class BusyGuard {
    public:
        explicit BusyGuard(Prompter* p) : m_p(p)
        {
            if (m_p)
                m_p->setBusy(true);
        }
        ~BusyGuard()
        {
            if (m_p)
                m_p->setBusy(false);
        }
        BusyGuard(const BusyGuard&) = delete;
        BusyGuard& operator=(const BusyGuard&) = delete;

    private:
        Prompter* m_p;
    };
    BusyGuard busy() { return BusyGuard(this); }

protected:
    virtual void setBusy(bool on) = 0;
};

// Message boxes over a parent window. With no display (offscreen or minimal platform)
// nobody can answer: messages go to stderr and questions take their safe answer, No.
class QtPrompter : public Prompter {
public:
    explicit QtPrompter(QWidget* parent = nullptr);
    void setParent(QWidget* parent) { m_parent = parent; }
    void inform(const QString& text, const QString& title, Icon icon) override;
    bool ask(const QString& text, const QString& title, Icon icon) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString openFile(const QString& title, const QString& filter) override;
    QString saveFile(const QString& title, const QString& filter,
                     const QString& suggested) override;
    bool isInteractive() const override;

protected:
    void setBusy(bool on) override;

private:
    QWidget* m_parent;
    int m_busyDepth = 0;
};

// Stands in for the person at the desk in tests: records every message and answers from
// queues. An unexpected question or input fails loudly rather than guessing.
class ScriptedPrompter : public Prompter {
public:
    struct Message {
        enum Kind { Inform, Ask, Input, OpenFile, SaveFile } kind;
        QString text;
        QString title;
        Icon icon;
    };

    void inform(const QString& text, const QString& title, Icon icon) override;
    bool ask(const QString& text, const QString& title, Icon icon) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString openFile(const QString& title, const QString& filter) override;
    QString saveFile(const QString& title, const QString& filter,
                     const QString& suggested) override;

    void answerYes(int times = 1) { for (int i = 0; i < times; ++i) m_answers.push_back(true); }
    void answerNo(int times = 1) { for (int i = 0; i < times; ++i) m_answers.push_back(false); }
    void answerInput(std::optional<QString> text) { m_inputs.push_back(std::move(text)); }
    void answerFile(const QString& path) { m_files.push_back(path); }

    const std::vector<Message>& messages() const { return m_messages; }
    // Texts of informs only, in order.
    QStringList informs() const;
    QString lastText() const { return m_messages.empty() ? QString() : m_messages.back().text; }
    const Message* last() const { return m_messages.empty() ? nullptr : &m_messages.back(); }
    bool saw(const QString& text) const;
    void clear() { m_messages.clear(); }
    bool answersLeft() const { return !m_answers.empty() || !m_inputs.empty() || !m_files.empty(); }
    int busyDepth() const { return m_busy; }

protected:
    void setBusy(bool on) override { m_busy += on ? 1 : -1; }

private:
    std::vector<Message> m_messages;
    std::deque<bool> m_answers;
    std::deque<std::optional<QString>> m_inputs;
    std::deque<QString> m_files;
    int m_busy = 0;
};

// Thrown when a ScriptedPrompter is asked something the test did not script.
class UnscriptedPrompt : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

}  // namespace tolmar
