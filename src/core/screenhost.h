#pragma once
// Opens screens by name. Screens register a factory under their name and never include
// each other's headers; a name that nobody registered opens nothing.

#include <QHash>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QMdiArea>
#include <QVariantMap>

#include <functional>

class QWidget;


namespace tolmar {

class AppContext;

class ScreenHost {
public:
    using Factory = std::function<QWidget*(AppContext&, const QVariantMap& args)>;

    explicit ScreenHost(AppContext& ctx) : m_ctx(ctx) {}

    // Called once per screen, at static initialisation, through TOLMAR_REGISTER_SCREEN.
    static void registerFactory(const QString& name, Factory factory);
    static bool isRegistered(const QString& name);
    // Every registered name, sorted: what the menu can open.
    static QStringList registeredNames();

    // Child windows open inside the frame when one is set, at its top-left and no larger
    // than its visible area; dialogs centre over the frame's window. Without a frame they
    // open as top-level windows.
    void setFrame(QMdiArea* area) { m_area = area; }
    QMdiArea* frame() const { return m_area; }

    // Shows the screen (bringing an open one forward); nullptr when the name is unknown.
    QWidget* open(const QString& name, const QVariantMap& args = {});
    // Shows a screen that the caller built itself (a report with its rows) the way open()
    // shows one: inside the frame, closed and deleted with its window.
    QWidget* show(QWidget* screen);
    // Runs the screen as a modal dialog and returns when it closes. False if unknown.
    bool openModal(const QString& name, const QVariantMap& args = {});
    // The open instance of a screen, if any.
    QWidget* find(const QString& name) const;
    // The active child window of the frame (the screen the user works in), if any.
    QWidget* activeScreen() const;
    // Moves a small dialog over the middle of the main window, where the desk's eyes
    // already are (over the screen's work area when there is no frame). Called as it shows.
    void centreOverFrame(QWidget* dialog) const;

private:
    QWidget* create(const QString& name, const QVariantMap& args);
    void place(QWidget* w);
    void adopt(QWidget* dialog);
    AppContext& m_ctx;
    QPointer<QMdiArea> m_area;
    QHash<QString, QPointer<QWidget>> m_open;
};

}  // namespace tolmar

#define TOLMAR_REGISTER_SCREEN(Class)                                                   \
    namespace {                                                                          \
    const bool registered_##Class = [] {                                                 \
        ::tolmar::ScreenHost::registerFactory(                                           \
            QStringLiteral(#Class),                                                      \
            [](::tolmar::AppContext& ctx, const QVariantMap& args) -> QWidget* {         \
                return new Class(ctx, args);                                             \
            });                                                                          \
        return true;                                                                     \
    }();                                                                                 \
    }
